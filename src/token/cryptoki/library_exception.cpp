#include "token/cryptoki/library_exception.h"

#include "core/errors.h"
#include "core/system_exception.h"

namespace cryptoki {
namespace {

// The text says it all.
constexpr Corvane::ErrorDescriptor loading{0, "LoadLibrary", nullptr};

// The system's text without its number.
std::wstring systemMessage(std::uint32_t error) {
    const std::wstring text = Corvane::systemText(error);
    return text.empty() ? text : text.substr(text.find(L':') + 1);
}

std::wstring textFor(std::uint32_t error, const wchar_t* call, const std::wstring& details) {
    std::wstring text = L"[" + Corvane::hexNumber(error) + L"]" + call + L" " + systemMessage(error);
    if (!details.empty())
        text += L" (" + details + L")";
    return text;
}

}  // namespace

LibraryException::LibraryException(std::uint32_t error, const wchar_t* call, const std::wstring& details)
    : Exception(loading), error_(error), text_(textFor(error, call, details)) {}

}  // namespace cryptoki
