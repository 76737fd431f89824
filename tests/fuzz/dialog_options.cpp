// Options of file dialogs from arbitrary text: every outcome is one that the declarations name, and no filter
// leads the system, which reads pairs of strings up to an empty one, beyond its end.
#include "gui/dialog_options.h"
#include "core/utf8.h"
#include "fuzz.h"
#include "gui/chosen_files.h"

using namespace Corvane;
using namespace Corvane::Gui;

namespace {

constexpr std::uint32_t noPairs = 201;
constexpr std::uint32_t badOptions = 202;

void requireReadable(const std::wstring& filter) {
    const std::wstring_view all(filter.data(), filter.size() + 1);
    std::size_t at = 0;
    const auto isEmptyString = [&] {
        const std::size_t end = all.find(L'\0', at);
        require(end != std::wstring_view::npos);
        return std::exchange(at, end + 1) == end;
    };
    while (!isEmptyString())
        isEmptyString();
}

}  // namespace

void fuzz(Input input) {
    if (input.empty())
        return;
    const auto kind = static_cast<DialogKind>(input[0] % 4);
    const std::wstring text = fromUtf8({reinterpret_cast<const char*>(input.data()) + 1, input.size() - 1});
    DialogOptions options;
    const auto error = errorOf([&] { options = parseJsonOptions(kind, text); });
    require(!error || *error == noPairs || *error == badOptions);
    requireReadable(options.filter);

    std::wstring filter;
    if (!errorOf([&] { filter = Gui::detail::unescapeFilter(text); }))
        require(filter.size() == text.size());
    requireReadable(filter);
    require(joinStrings(filter).size() <= filter.size());
    require(fromUtf8(toUtf8(text)) == text);
}
