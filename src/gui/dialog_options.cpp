#include "gui/dialog_options.h"

#include "core/exception.h"
#include "core/json.h"
#include "core/log.h"
#include "core/utf8.h"

#include <algorithm>
#include <utility>

namespace Corvane::Gui {
namespace {

constexpr wchar_t function[] = L"Corvane::Gui::parseJsonOptions";

const wchar_t* defaultTitle(DialogKind kind) noexcept {
    switch (kind) {
        case DialogKind::openFile:
            return L"Выберите файл";
        case DialogKind::openFiles:
            return L"Выберите файлы";
        case DialogKind::saveFile:
            return L"Сохранить файл как";
        case DialogKind::selectFolder:
            break;
    }
    return L"Выберите папку";
}

DialogOptions defaults(DialogKind kind) {
    DialogOptions options;
    options.title = defaultTitle(kind);
    if (kind != DialogKind::selectFolder)
        options.filter = detail::unescapeFilter(L"Все файлы|*.*|Текстовые файлы|*.TXT|");
    return options;
}

// Calls `read` with the member's value if there is one.
template <class Read>
void readMember(const Json::Value& object, const char* name, Read read) {
    if (object.isMember(name))
        read(object[name]);
}

void readMembers(const Json::Value& object, DialogOptions& options) {
    const auto textOf = [](const Json::Value& value) { return fromUtf8(value.asString()); };
    readMember(object, "title", [&](const auto& value) { options.title = textOf(value); });
    readMember(object, "filter",
               [&](const auto& value) { options.filter = detail::unescapeFilter(textOf(value)); });
    readMember(object, "initialDir", [&](const auto& value) { options.initialDir = textOf(value); });
    readMember(object, "filterIndex", [&](const auto& value) { options.filterIndex = value.asInt(); });
}

}  // namespace

DialogOptions parseJsonOptions(DialogKind kind, std::wstring_view text) {
    writeLog(LogLevel::debug, function, L"[in] options: ", text);
    DialogOptions options = defaults(kind);
    if (text.empty())
        return options;
    try {
        readMembers(readJson(text, E_COMMON_DLG_OPTIONS), options);
    } catch (const JsonException& exception) {
        writeLog(LogLevel::error, function, exception.details());
        throw;
    } catch (const Json::Exception& exception) {
        writeLog(LogLevel::error, function, exception.what());
        // The library refuses to look into what is no object, and to convert what has no such meaning.
        throw JsonException(E_COMMON_DLG_OPTIONS, exception.what());
    }
    return options;
}

std::wstring detail::unescapeFilter(std::wstring text) {
    if (text.empty())
        return text;
    const auto bars = std::ranges::count(text, L'|');
    if (bars % 2 != 0 || text.back() != L'|' || text.find(L'\0') != std::wstring::npos)
        throw Exception(E_COMMON_DLG_FILTER);
    std::ranges::replace(text, L'|', L'\0');
    return text;
}

}  // namespace Corvane::Gui
