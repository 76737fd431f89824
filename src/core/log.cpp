#include "core/log.h"

#include <algorithm>
#include <array>
#include <locale>
#include <utility>

namespace Corvane::detail {
namespace {

// A text from outside must not end the line and begin one of its own.
std::wstring oneLine(std::wstring_view text) {
    std::wstring line(text);
    const auto isControl = [](wchar_t c) { return c < L' '; };
    std::ranges::replace_if(line, isControl, L' ');
    return line;
}

}  // namespace

std::wstring formatLogLine(const LogStamp& stamp, std::uint32_t level, std::wstring_view context,
                           std::wstring_view text) {
    constexpr std::array<const wchar_t*, 6> names = {L"", L"ERROR", L"WARN", L"INFO", L"DEBUG", L""};
    const auto two = [](unsigned value) { return (value < 10 ? L"0" : L"") + std::to_wstring(value); };
    std::wstring line = std::to_wstring(stamp.year) + L'-' + two(stamp.month) + L'-' + two(stamp.day) + L'T' +
                        two(stamp.hour) + L':' + two(stamp.minute) + L':' + two(stamp.second) + L'.' +
                        std::to_wstring(stamp.milliseconds) + L" | " + std::to_wstring(stamp.thread) +
                        L" | " + names[level < names.size() ? level : names.size() - 1] + L" | ";
    line += context;
    if (!text.empty())
        line += L" | " + oneLine(text);
    return line;
}

LogMessage::LogMessage(std::uint32_t level, std::wstring_view context, ILogger& logger)
    : level_(level), context_(context), logger_(logger) {
    text_.imbue(std::locale::classic());
}

LogMessage::~LogMessage() {
    try {
        logger_.write(formatLogLine(currentLogStamp(), level_, context_, std::move(text_).str()) + L"\r\n");
    } catch (...) {
        // A line that cannot be written is lost; the work it tells of goes on.
    }
}

}  // namespace Corvane::detail
