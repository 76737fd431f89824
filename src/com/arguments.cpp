#include "com/arguments.h"

namespace Corvane::Com {

ComPtr<Implementation> implementationOf(IUnknown* object)
{
    if (!object)
        throw SilentFailure{E_POINTER};
    void* answer = nullptr;
    if (const HRESULT hr = object->QueryInterface(GUID_NULL, &answer); FAILED(hr))
        throw SilentFailure{hr};
    if (!answer)
        throw SilentFailure{E_NOINTERFACE};
    // An object of the script host, or of another copy of the component, may answer anything.
    if (!Module::owns(answer)) {
        static_cast<IUnknown*>(answer)->Release();
        throw SilentFailure{E_NOINTERFACE};
    }
    return ComPtr<Implementation>::adopt(static_cast<Implementation*>(answer));
}

} // namespace Corvane::Com
