#include "binary/encoding_guess.h"

#include "binary/encoding_names.h"
#include "core/wide_text.h"

#include <uchardet/uchardet.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace Corvane {
namespace {

// The detector weighs frequencies of letters: more text than this changes nothing.
constexpr std::size_t textLimit = std::size_t{1} << 20;
constexpr std::ptrdiff_t fewestCharacters = 20;

constexpr bool isForeign(std::uint8_t byte) noexcept {
    return byte >= 0x80;
}

std::optional<std::uint32_t> detect(std::string_view text) {
    const std::unique_ptr<uchardet, decltype(&uchardet_delete)> detector(uchardet_new(), &uchardet_delete);
    if (!detector || uchardet_handle_data(detector.get(), text.data(), text.size()) != 0)
        return std::nullopt;
    uchardet_data_end(detector.get());
    const auto encoding = findEncoding(uchardet_get_charset(detector.get()));
    constexpr std::array<std::uint32_t, 4> russian = {1251, 20866, 866, 28595};
    if (!encoding || std::ranges::find(russian, encoding->codePage) == russian.end())
        return std::nullopt;
    return encoding->codePage;
}

enum class Kind { other, capital, small, wrong };

// The kind of a character in text that may be Russian.
Kind kindOf(wchar_t character) noexcept {
    if (character < 0x80)
        return Kind::other;
    if ((character >= L'А' && character <= L'Я') || character == L'Ё')
        return Kind::capital;
    if ((character >= L'а' && character <= L'я') || character == L'ё')
        return Kind::small;
    constexpr std::wstring_view signs = L"«»—–…№„“”’\u00A0";
    return signs.find(character) == std::wstring_view::npos ? Kind::wrong : Kind::other;
}

bool isRussian(std::wstring_view text) noexcept {
    bool name = false;
    Kind before = Kind::other;
    Kind last = Kind::other;
    for (const wchar_t character : text) {
        const Kind kind = kindOf(character);
        const bool rises = last == Kind::small && kind == Kind::capital;
        const bool falls = last == Kind::capital && kind == Kind::small;
        if (kind == Kind::wrong || rises || (falls && before == Kind::capital))
            return false;
        name |= falls;
        before = last;
        last = kind;
    }
    return name;
}

}  // namespace

std::optional<std::uint32_t> guessCodePage(std::span<const std::uint8_t> text) {
    const auto sample = text.first(std::min(text.size(), textLimit));
    if (std::ranges::count_if(sample, isForeign) < fewestCharacters)
        return std::nullopt;
    const auto first = std::ranges::find_if(sample, isForeign);
    const std::string_view letters(reinterpret_cast<const char*>(&*first),
                                   static_cast<std::size_t>(sample.end() - first));
    const auto codePage = detect(letters);
    return codePage && isRussian(multiToWide(*codePage, letters)) ? codePage : std::nullopt;
}

}  // namespace Corvane
