#include "com/async.h"

#include "com/binary_object.h"
#include "com/module.h"
#include "core/check.h"

#include <memory>
#include <tuple>

namespace Corvane::Com {
namespace detail {
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
        Corvane::detail::failWin32(E_ACTIVEX, L"TrySubmitThreadpoolCallback", error);
    std::ignore = data.release();
}

}  // namespace detail

HRESULT toVariant(std::uint32_t number, VARIANT* out) {
    V_UI4(out) = number;
    V_VT(out) = VT_UI4;
    makeScriptNumber(*out);
    return S_OK;
}

HRESULT toVariant(const SharedBytes& bytes, VARIANT* out) {
    V_DISPATCH(out) = static_cast<IBinaryObject*>(makeObject<CBinaryObject>(bytes).detach());
    V_VT(out) = VT_DISPATCH;
    return S_OK;
}

HRESULT toVariant(Bytes bytes, VARIANT* out) {
    return toVariant(std::make_shared<Bytes>(std::move(bytes)), out);
}

}  // namespace Corvane::Com
