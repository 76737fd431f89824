#include "gui/text_with_site.h"

#include <algorithm>
#include <vector>

namespace Corvane::Gui {
namespace {

constexpr wchar_t ellipsis = L'\x2026';
constexpr wchar_t leftToRightMark = L'\x200E';
// More than a host name may have (RFC 1035, 3.1), each character with a mark beside it.
constexpr std::size_t longestHost = 600;

// Where the system cannot measure text: what a control of the question's size shows with room to spare.
constexpr LONG guessedLineLength = 45;
constexpr LONG guessedLines = 5;

// What a control can show, measured with its font.
class ControlFace {
public:
    explicit ControlFace(HWND control) : control_(control), dc_(::GetDC(control)) {
        font_ = ::SelectObject(dc_, reinterpret_cast<HGDIOBJ>(::SendMessageW(control, WM_GETFONT, 0, 0)));
        ::GetClientRect(control, &area_);
        SIZE size{};
        measures_ = ::GetTextExtentPoint32W(dc_, &ellipsis, 1, &size) && size.cx > 0;
    }
    ~ControlFace() {
        ::SelectObject(dc_, font_);
        ::ReleaseDC(control_, dc_);
    }
    ControlFace(const ControlFace&) = delete;
    ControlFace& operator=(const ControlFace&) = delete;

    // How many characters of the text have room on a line after `indent`.
    std::size_t roomFor(std::wstring_view text, LONG indent) const {
        int count = 0;
        SIZE size{};
        if (!measures_)
            return std::min(text.size(), static_cast<std::size_t>(guessedLineLength - indent));
        ::GetTextExtentExPointW(dc_, text.data(), static_cast<int>(text.size()), area_.right - indent, &count,
                                nullptr, &size);
        return static_cast<std::size_t>(count);
    }

    LONG widthOf(std::wstring_view text) const {
        SIZE size{};
        if (!measures_)
            return std::min(static_cast<LONG>(text.size()), guessedLineLength);
        ::GetTextExtentPoint32W(dc_, text.data(), static_cast<int>(text.size()), &size);
        return size.cx;
    }

    // Whether all of the text is seen, broken as the control breaks it.
    bool shows(std::wstring_view text) const {
        if (!measures_)
            return guessedLinesOf(text) <= guessedLines;
        RECT needed{0, 0, area_.right, 0};
        ::DrawTextW(dc_, text.data(), static_cast<int>(text.size()), &needed,
                    DT_CALCRECT | DT_WORDBREAK | DT_EXPANDTABS);
        return needed.right <= area_.right && needed.bottom <= area_.bottom;
    }

private:
    static LONG guessedLinesOf(std::wstring_view text) noexcept {
        LONG lines = 0;
        for (std::size_t end = 0; end != std::wstring_view::npos; text.remove_prefix(end + 1)) {
            end = text.find(L'\n');
            const auto length = static_cast<LONG>(std::min(end, text.size()));
            lines += std::max<LONG>(1, (length + guessedLineLength - 1) / guessedLineLength);
            if (end == std::wstring_view::npos)
                break;
        }
        return lines;
    }

    bool measures_ = false;
    HWND control_;
    HDC dc_;
    HGDIOBJ font_ = nullptr;
    RECT area_{};
};

bool runsRightToLeft(std::wstring_view text) {
    std::vector<WORD> directions(text.size());
    ::GetStringTypeW(CT_CTYPE2, text.data(), static_cast<int>(text.size()), directions.data());
    return std::find(directions.begin(), directions.end(), C2_RIGHTTOLEFT) != directions.end();
}

// Letters that run from right to left draw the labels beside them into their direction, so that a label from
// the middle may be seen at the end. Marks around the dots keep each label in its place.
std::wstring inOrder(std::wstring_view host) {
    if (!runsRightToLeft(host))
        return std::wstring(host);
    std::wstring marked;
    for (const wchar_t c : host) {
        if (c == L'.')
            marked += leftToRightMark;
        marked += c;
        if (c == L'.')
            marked += leftToRightMark;
    }
    return marked + leftToRightMark;
}

// `host` in lines of which none is too wide, the first one beside what is `indent` wide.
std::wstring inLines(const ControlFace& face, std::wstring_view host, LONG indent) {
    std::wstring lines;
    if (face.roomFor(host, 0) == host.size())
        return std::wstring(host);  // the control itself begins a new line for it
    for (;;) {
        std::size_t count = face.roomFor(host, indent);
        if (count >= host.size())
            return lines.append(host);
        if (const std::size_t dot = host.substr(0, count).rfind(L'.'); dot != std::wstring_view::npos)
            count = dot + 1;
        else if (indent == 0)
            count = std::max<std::size_t>(count, 1);
        else
            count = 0;
        lines.append(host.substr(0, count)).append(1, L'\n');
        host.remove_prefix(count);
        indent = 0;
    }
}

}  // namespace

std::wstring textWithSite(HWND control, std::wstring_view text, std::wstring_view host) {
    const std::size_t place = text.find(L'%');
    if (place == std::wstring_view::npos)
        return std::wstring(text);
    const std::wstring_view before = text.substr(0, place);
    const std::wstring_view after = text.substr(place + 1);
    const ControlFace face(control);

    const std::wstring whole = inOrder(host.substr(host.size() - std::min(host.size(), longestHost)));
    for (std::size_t cut = whole.size() < host.size() ? 1 : 0;; ++cut) {
        std::wstring shown = whole.substr(std::min(cut, whole.size()));
        if (cut != 0)
            shown.insert(0, 1, ellipsis);
        std::wstring filled =
            std::wstring(before) + inLines(face, shown, face.widthOf(before)) + std::wstring(after);
        // Where the font is too large for the control, one line of the name comes first.
        if (face.shows(filled) || face.roomFor(shown, 0) == shown.size())
            return filled;
    }
}

}  // namespace Corvane::Gui
