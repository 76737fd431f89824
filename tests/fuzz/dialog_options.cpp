// Options of file dialogs from arbitrary text: every outcome is one that the declarations name, and no filter
// leads the system, which reads pairs of strings up to an empty one, beyond its end.
#include "gui/dialog_options.h"
#include "core/utf8.h"
#include "fuzz.h"
#include "gui/chosen_files.h"

#include <algorithm>

using namespace Corvane;
using namespace Corvane::Gui;

namespace {

constexpr std::uint32_t noPairs = 201;
constexpr std::uint32_t badOptions = 202;

// Strings in pairs, each ended: the system finds the empty one in the place of a pair behind the last.
void requirePairs(const std::wstring& filter) {
    require(std::ranges::count(filter, L'\0') % 2 == 0 && (filter.empty() || filter.back() == L'\0'));
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
    requirePairs(options.filter);

    std::wstring filter;
    if (!errorOf([&] { filter = Gui::detail::unescapeFilter(text); }))
        require(filter.size() == text.size());
    requirePairs(filter);
    require(joinStrings(filter).size() <= filter.size());
    require(fromUtf8(toUtf8(text)) == text);
}
