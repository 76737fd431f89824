#include "com/runtime/frame.h"

#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"
#include "core/exception_text.h"
#include "core/handles.h"
#include "core/log.h"
#include "core/system_exception.h"

#include <new>
#include <string>

namespace Corvane::Com {
namespace {

// FACILITY_ITF, error numbers from 512 on, as COM leaves them to components.
constexpr HRESULT hresultOf(std::uint32_t code) noexcept {
    return static_cast<HRESULT>(0x80040000u | (code + 0x200u));
}

struct Failure {
    HRESULT hr;
    std::wstring description;
};

Failure describe(const ComException& exception) {
    return {exception.hr(), exception.message() ? exception.message() : L""};
}

Failure describe(const Exception& exception) {
    return {hresultOf(exception.code()), fullMessage(exception)};
}

Failure describe(const std::exception& exception) {
    return {hresultOf(E_ACTIVEX.code), textOf(exception)};
}

// The rungs of the ladder, most derived first. Throws when the description itself cannot be built.
Failure describeCurrentException() {
    try {
        throw;
    } catch (const ComException& exception) {
        return describe(exception);
    } catch (const Exception& exception) {
        return describe(exception);
    } catch (const std::exception& exception) {
        return describe(exception);
    }
}

HRESULT reportUnknown(const CLSID& clsid, const wchar_t* method) noexcept {
    try {
        writeLog(LogLevel::error, method, E_ACTIVEX.message);
    } catch (...) {
        // The failure is reported all the same.
    }
    return reportError(clsid, E_ACTIVEX.message, hresultOf(E_ACTIVEX.code));
}

}  // namespace

HRESULT reportError(const CLSID& clsid, const wchar_t* description, HRESULT hr) noexcept {
    ComPtr<ICreateErrorInfo> creator;
    if (SUCCEEDED(::CreateErrorInfo(creator.put()))) {
        creator->SetGUID(GUID_NULL);
        CoTaskMemory<OLECHAR> progId;
        if (SUCCEEDED(::ProgIDFromCLSID(clsid, progId.put())))
            creator->SetSource(progId.get());
        // The interface takes a writable pointer and copies the text.
        creator->SetDescription(const_cast<LPOLESTR>(description));
        if (const auto info = creator.query<IErrorInfo>())
            ::SetErrorInfo(0, info.get());
    }
    return hr == S_OK ? DISP_E_EXCEPTION : hr;
}

HRESULT reportError(const CLSID& clsid, const ErrorDescriptor& descriptor) noexcept {
    return reportError(clsid, descriptor.message, hresultOf(descriptor.code));
}

HRESULT reportCurrentException(const CLSID& clsid, const wchar_t* method) noexcept {
    try {
        throw;
    } catch (const SilentFailure& failure) {
        return failure.hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        try {
            const Failure failure = describeCurrentException();
            writeLog(LogLevel::error, method, failure.description);
            return reportError(clsid, failure.description.c_str(), failure.hr);
        } catch (...) {
            return reportUnknown(clsid, method);
        }
    }
}

}  // namespace Corvane::Com
