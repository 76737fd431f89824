// Failures on one of many files or entries say which it was.
#pragma once

#include "core/errors.h"
#include "core/exception.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace Corvane::Compression {

// Another exception with a name behind its details.
class NamedException : public CustomException {
public:
    NamedException(const Exception& cause, std::wstring_view name)
        : CustomException(ErrorDescriptor{cause.code(), cause.what(), cause.message()}),
          details_(detailsOf(cause) + shown(name)) {}

    std::wstring details() const override { return details_; }

private:
    static std::wstring detailsOf(const Exception& cause) {
        const auto* custom = dynamic_cast<const CustomException*>(&cause);
        const std::wstring details = custom ? custom->details() : std::wstring();
        return details.empty() ? details : details + L": ";
    }

    // Names in archives have any characters, up to 65535 of them.
    static std::wstring shown(std::wstring_view name) {
        constexpr std::size_t most = 1000;
        std::wstring text(name.substr(0, most));
        const auto isControl = [](wchar_t c) { return c < L' '; };
        std::ranges::replace_if(text, isControl, L'?');
        return name.size() > most ? text + L"…" : text;
    }

    std::wstring details_;
};

// What `work` returns. What it throws says `name`, but for the wish that it should stop and for failures of
// the code `unrelated`.
template <class Work>
decltype(auto) naming(std::wstring_view name, Work&& work, std::uint32_t unrelated = E_CANCELED.code) {
    try {
        return std::forward<Work>(work)();
    } catch (const Exception& cause) {
        if (cause.code() == E_CANCELED.code || cause.code() == unrelated)
            throw;
        throw NamedException(cause, name);
    }
}

}  // namespace Corvane::Compression
