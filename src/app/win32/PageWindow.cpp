#include "app/win32/PageWindow.h"

#include "runtime/win32/SystemLibrary.h"

namespace kestrelguard {

namespace {

constexpr UINT kThemeChanged = 0x031A;  // WM_THEMECHANGED

/// Whether visual styles are on: the inside of a tab control is white then.
bool ThemesActive() {
    const Library theme = LoadSystemLibrary("uxtheme.dll");
    if (!theme) {
        return false;
    }
    using IsActive = BOOL(WINAPI*)();
    const auto isThemeActive =
        reinterpret_cast<IsActive>(reinterpret_cast<void*>(GetProcAddress(theme.Get(), "IsThemeActive")));
    const auto isAppThemed =
        reinterpret_cast<IsActive>(reinterpret_cast<void*>(GetProcAddress(theme.Get(), "IsAppThemed")));
    return isThemeActive != nullptr && isAppThemed != nullptr && isThemeActive() && isAppThemed();
}

}  // namespace

void PageWindow::CreateAt(const RECT& place, HWND form, int id) {
    TakeColours();
    Create({.name = "KestrelguardPage", .background = m_background}, {.style = WS_CHILD | WS_CLIPSIBLINGS,
                                                                      .extendedStyle = WS_EX_CONTROLPARENT,
                                                                      .x = place.left,
                                                                      .y = place.top,
                                                                      .width = place.right - place.left,
                                                                      .height = place.bottom - place.top,
                                                                      .parent = form,
                                                                      .id = id});
}

std::optional<LRESULT> PageWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
        case WM_NOTIFY:
            return SendMessageA(GetParent(Handle()), message, wParam, lParam);
        case WM_ERASEBKGND:
            PaintBackground(reinterpret_cast<HDC>(wParam));
            return TRUE;
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN: {
            const auto context = reinterpret_cast<HDC>(wParam);
            SetBkMode(context, TRANSPARENT);
            SetTextColor(context, m_text);
            return reinterpret_cast<LRESULT>(m_background);
        }
        case WM_SYSCOLORCHANGE:
        case kThemeChanged:
            TakeColours();
            InvalidateRect(Handle(), nullptr, TRUE);
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

void PageWindow::TakeColours() {
    const bool themed = ThemesActive();
    m_background = GetSysColorBrush(themed ? COLOR_WINDOW : COLOR_BTNFACE);
    m_text = GetSysColor(themed ? COLOR_WINDOWTEXT : COLOR_BTNTEXT);
}

void PageWindow::PaintBackground(HDC context) const {
    RECT area = {};
    GetClientRect(Handle(), &area);
    FillRect(context, &area, GetSysColorBrush(COLOR_BTNSHADOW));
    // A line at every side but the upper one, where the tab strip draws it.
    area = {area.left + 1, area.top, area.right - 1, area.bottom - 1};
    FillRect(context, &area, m_background);
}

}  // namespace kestrelguard
