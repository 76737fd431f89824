#include "core/exception.h"

#include "core/utf8.h"

#include <string_view>

namespace Corvane {
namespace {

std::wstring widen(std::string_view text) {
    std::wstring wide;
    wide.reserve(text.size());
    for (const char c : text)
        wide.push_back(static_cast<unsigned char>(c));
    return wide;
}

}  // namespace

Exception::Exception(const ErrorDescriptor& descriptor)
    : std::runtime_error(descriptor.name), message_(descriptor.message), code_(descriptor.code) {}

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
    return std::runtime_error::what();
}

const wchar_t* Exception::message() const noexcept {
    return message_;
}

void Exception::getMessage(std::wstring& text) const {
    text.clear();
    if (code_ != 0)
        text = L"[" + std::to_wstring(code_) + L"] ";
    text += message_ ? std::wstring(message_) : widen(what());
}

void CustomException::getMessage(std::wstring& text) const {
    Exception::getMessage(text);
    const std::wstring more = details();
    if (more.empty())
        return;
    if (!text.empty())
        text += L' ';
    text += L"(" + more + L")";
}

std::wstring JsonException::details() const {
    return fromUtf8(detail_);
}

std::wstring fullMessage(const Exception& exception) {
    std::wstring text;
    exception.getMessage(text);
    return text;
}

}  // namespace Corvane
