#include "core/exception_text.h"

#include "core/exception.h"
#include "core/wide_text.h"

#include <windows.h>

namespace Corvane {

std::wstring textOf(const std::exception& exception) {
    const auto* own = dynamic_cast<const Exception*>(&exception);
    return own ? fullMessage(*own) : multiToWide(CP_THREAD_ACP, exception.what());
}

std::wstring textOf(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& exception) {
        return textOf(exception);
    } catch (...) {
        return E_ACTIVEX.message;
    }
}

}  // namespace Corvane
