// The recorded classes as a DLL: the request that they give is the list of what they were asked.
#include "../own_module.h"
#include "recorder.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace Corvane::Platform {
namespace {

std::mutex mutex;
std::wstring notes;

void note(const std::wstring& line) {
    const std::lock_guard lock(mutex);
    notes += line + L"\n";
}

std::wstring takeNotes() {
    const std::lock_guard lock(mutex);
    return std::exchange(notes, {});
}

const Recorder recorder{note, [](const std::wstring&) { return S_OK; }, takeNotes};

LSTATUS registerClass(const CLSID& clsid, const std::wstring& path) {
    wchar_t text[40];
    ::StringFromGUID2(clsid, text, 40);
    const std::wstring key = L"Software\\Classes\\CLSID\\" + std::wstring(text) + L"\\InprocServer32";
    const auto set = [&](const wchar_t* name, const std::wstring& value) {
        return ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, value.c_str(),
                                 static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    };
    const LSTATUS status = set(nullptr, path);
    return status != ERROR_SUCCESS ? status : set(L"ThreadingModel", L"Both");
}

}  // namespace
}  // namespace Corvane::Platform

using namespace Corvane::Platform;

extern "C" HRESULT WINAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    const auto* found = std::ranges::find(recordedClasses, clsid, &RecordedClass::clsid);
    if (found == std::end(recordedClasses))
        return CLASS_E_CLASSNOTAVAILABLE;
    IClassFactory* factory = makeRecordingFactory(*found, recorder);
    const HRESULT hr = factory->QueryInterface(iid, object);
    factory->Release();
    return hr;
}

extern "C" HRESULT WINAPI DllRegisterServer() {
    for (const RecordedClass& recorded : recordedClasses) {
        if (const LSTATUS status = registerClass(recorded.clsid, ownPath()))
            return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    }
    return S_OK;
}
