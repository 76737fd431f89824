// How a module fails to load.
#pragma once

#include "core/exception.h"

#include <cstdint>
#include <string>

namespace cryptoki {

// The text is "[0x7e]LoadLibrary " and the system's message for the number; it has no number of ours before
// it.
class LibraryException : public Corvane::Exception {
public:
    // `call`: "LoadLibrary" or "GetProcAddress"; `details`, where there are any, follow in parentheses.
    LibraryException(std::uint32_t error, const wchar_t* call, const std::wstring& details = {});

    void getMessage(std::wstring& text) const override { text = text_; }
    std::uint32_t error() const noexcept { return error_; }

private:
    std::uint32_t error_;
    std::wstring text_;
};

}  // namespace cryptoki
