// What a script asks of a file dialog: the options, a text of JSON.
#pragma once

#include <string>
#include <string_view>

namespace Corvane::Gui {

enum class DialogKind {
    openFile = 0,
    openFiles = 1,
    saveFile = 2,
    selectFolder = 3,
};

struct DialogOptions {
    std::wstring title;       // the caption; the prompt of the folder browser
    std::wstring filter;      // pairs of description and pattern, each ended by a NUL; empty: no filter
    std::wstring initialDir;  // where the dialog opens; empty: where the system thinks fit
    int filterIndex = 0;      // the pair selected at first, counted from 1; 0: the system's default
};

// The defaults of the kind, with what `text` says in their place. An empty text changes nothing, and
// members of other names than "title", "filter", "initialDir" and "filterIndex" are ignored. Throws
// JsonException E_COMMON_DLG_OPTIONS with the parser's message when the text is not JSON, no object, or holds
// one of those members as what cannot be converted to its type; and what unescapeFilter() throws. Needs no
// system.
DialogOptions parseJsonOptions(DialogKind kind, std::wstring_view text);

namespace detail {

// A filter as scripts write it, "Text|*.txt|All files|*.*|", in the form of the Windows API: a NUL for each
// '|'. The string's own end is the second of the two NULs with which that form ends. An empty text stays
// empty. Throws Exception E_COMMON_DLG_FILTER when the parts are not pairs, each of them ended by '|', and
// when the text holds NULs of its own: the system would read such a list beyond its end.
std::wstring unescapeFilter(std::wstring text);

}  // namespace detail
}  // namespace Corvane::Gui
