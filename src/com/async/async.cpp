#include "com/async/async.h"

#include "com/runtime/module.h"
#include "core/check.h"
#include "core/exception_text.h"
#include "core/log.h"

#include <memory>
#include <tuple>

namespace Corvane::Com::detail {
namespace {

VOID CALLBACK runWork(PTP_CALLBACK_INSTANCE instance, PVOID data) {
    const std::unique_ptr<std::function<void()>> work(static_cast<std::function<void()>*>(data));
    // The pool is told that it may need another thread meanwhile.
    ::CallbackMayRunLong(instance);
    (*work)();
}

}  // namespace

void runOnWorker(std::function<void()> work) {
    auto data = std::make_unique<std::function<void()>>(std::move(work));
    TP_CALLBACK_ENVIRON environment;
    ::InitializeThreadpoolEnvironment(&environment);
    // The pool keeps the DLL until the last instruction of the callback has run.
    ::SetThreadpoolCallbackLibrary(&environment, Module::instance());
    const BOOL submitted = ::TrySubmitThreadpoolCallback(runWork, data.get(), &environment);
    const DWORD error = ::GetLastError();
    ::DestroyThreadpoolEnvironment(&environment);
    if (!submitted)
        failWin32(E_ACTIVEX, L"TrySubmitThreadpoolCallback", error);
    std::ignore = data.release();
}

void logFailure(const wchar_t* name, const std::exception_ptr& error) noexcept {
    try {
        try {
            std::rethrow_exception(error);
        } catch (const Exception& exception) {
            if (exception.code() == E_CANCELED.code)
                return writeLog(LogLevel::warning, name, L"operation was canceled");
        } catch (...) {
            // Told like any other.
        }
        writeLog(LogLevel::error, name, textOf(error));
    } catch (...) {
        // The callback is told all the same.
    }
}

void store(VARIANT& out, std::uint32_t number) noexcept {
    V_UI4(&out) = number;
    V_VT(&out) = VT_UI4;
    makeScriptNumber(out);
}

void store(VARIANT& out, LONG number) noexcept {
    V_I4(&out) = number;
    V_VT(&out) = VT_I4;
}

void store(VARIANT& out, const std::wstring& text) {
    V_BSTR(&out) = Bstr(text).detach();
    V_VT(&out) = VT_BSTR;
}

}  // namespace Corvane::Com::detail
