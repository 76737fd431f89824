// OperationToken: lets a script follow and cancel a long operation.
#pragma once

#include "com/runtime/object.h"
#include "core/progress.h"

#include <VetrelCorvane2_h.h>

class COperationToken final : public Corvane::Com::Object<COperationToken, OperationToken, IOperationToken> {
public:
    // The progress record, shared with the operation. Any thread.
    const Corvane::SharedProgress& progress() const noexcept { return progress_; }

#include <methods/IOperationToken.h>

private:
    const Corvane::SharedProgress progress_ = std::make_shared<Corvane::Progress>();
};

namespace Corvane::Com {

// The progress record behind an optional token argument; null when the argument was left out, or is
// undefined, null or VBScript's Nothing. Anything but a token of ours ends the method: DISP_E_TYPEMISMATCH,
// or as resolve() does.
SharedProgress progressOf(const VARIANT& token);

}  // namespace Corvane::Com
