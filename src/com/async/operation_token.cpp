#include "com/async/operation_token.h"

#include "com/runtime/arguments.h"

using namespace Corvane;
using namespace Corvane::Com;

HRESULT COperationToken::get_IsCanceled(VARIANT_BOOL* canceled) {
    if (!canceled)
        return E_POINTER;
    *canceled = variantBool(progress_->isCanceled());
    return S_OK;
}

HRESULT COperationToken::SetCanceled() {
    progress_->cancel();
    return S_OK;
}

HRESULT COperationToken::get_Progress(double* fraction) {
    if (!fraction)
        return E_POINTER;
    *fraction = progress_->fraction();
    return S_OK;
}

namespace Corvane::Com {

SharedProgress progressOf(const VARIANT& token) {
    const ComPtr<IUnknown> object = optionalObject(token);
    return object ? resolve<COperationToken>(object.get())->progress() : nullptr;
}

}  // namespace Corvane::Com
