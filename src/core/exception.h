// The component's own exceptions, as far as they need nothing from the system.
//
// Internal code throws these; only the COM frame turns them into HRESULTs and error information.
// The narrow what() text of each is the symbolic name of its error descriptor.
#pragma once

#include "core/errors.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace Corvane {

class Exception : public std::runtime_error {
public:
    // The message that `descriptor` points to must live as long as the process.
    explicit Exception(const ErrorDescriptor& descriptor);
    ~Exception() override;

    const char* what() const noexcept override;

    // The descriptor's message as it stands; null when the descriptor has none.
    virtual const wchar_t* message() const noexcept;

    // Builds the text shown to the user: "[code] message (details)".
    virtual void getMessage(std::wstring& text) const;

    std::uint32_t code() const noexcept { return code_; }

private:
    const wchar_t* message_;
    std::uint32_t code_;
};

// An exception that knows more than its descriptor says.
class CustomException : public Exception {
public:
    using Exception::Exception;

    void getMessage(std::wstring& text) const override;

    // What getMessage() adds in parentheses; nothing is added when it is empty.
    virtual std::wstring details() const = 0;
};

// A JSON text from a script could not be read; `detail` is the parser's own message, or one of ours in UTF-8.
class JsonException : public CustomException {
public:
    JsonException(const ErrorDescriptor& descriptor, std::string detail)
        : CustomException(descriptor), detail_(std::move(detail)) {}

    std::wstring details() const override;

private:
    std::string detail_;
};

// Full user text of any exception of the component.
std::wstring fullMessage(const Exception& exception);

}  // namespace Corvane
