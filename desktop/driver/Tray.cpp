#include "desktop/driver/Tray.h"

#include <commctrl.h>

#include "desktop/driver/Windows.h"

namespace kestrelguard::testing {

namespace {

void MoveTo(POINT point) {
    SetCursorPos(point.x, point.y);
    mouse_event(MOUSEEVENTF_MOVE, 0, 0, 0, 0);
}

void Press(bool right) {
    mouse_event(right ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
    mouse_event(right ? MOUSEEVENTF_RIGHTUP : MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
}

POINT Middle(const RECT& rect) {
    return POINT{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

}  // namespace

std::vector<TrayIcon> TrayIcons() {
    std::vector<TrayIcon> icons;
    const HWND bar = FindWindowW(L"Shell_TrayWnd", nullptr);
    DWORD process = 0;
    GetWindowThreadProcessId(bar, &process);
    // The task bar keeps one tool tip for each icon, whose tool knows text and place.
    for (const HWND window : TopWindows(process)) {
        if (ClassOf(window) != L"tooltips_class32") {
            continue;
        }
        constexpr std::size_t kLength = 256;
        const RemoteBlock block(window, sizeof(TTTOOLINFOW) + kLength * sizeof(wchar_t));
        TTTOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.lpszText = reinterpret_cast<wchar_t*>(block.Address() + static_cast<LPARAM>(sizeof(tool)));
        block.Write(&tool, sizeof(tool));
        if (Ask(window, TTM_ENUMTOOLSW, 0, block.Address()) == 0) {
            continue;
        }
        block.Read(&tool, sizeof(tool));
        RECT place = tool.rect;
        if ((tool.uFlags & TTF_IDISHWND) != 0) {
            // Wine 10: every icon is a window in the task bar, which goes away with its icon.
            place = {};
            if (IsWindowVisible(tool.hwnd)) {
                GetClientRect(tool.hwnd, &place);
            }
        }
        if (IsRectEmpty(&place)) {
            continue;  // Wine 8: the icon is gone, but the task bar never takes its tool tip down
        }
        wchar_t text[kLength] = {};
        block.Read(text, sizeof(text), sizeof(tool));
        text[kLength - 1] = L'\0';
        TrayIcon icon;
        icon.tip = text;
        icon.bar = tool.hwnd;
        icon.place = place;
        MapWindowPoints(tool.hwnd, nullptr, reinterpret_cast<POINT*>(&icon.place), 2);
        icons.push_back(std::move(icon));
    }
    return icons;
}

bool WaitTrayIcons(std::size_t count, DWORD limit) {
    return WaitUntil([count] { return TrayIcons().size() == count; }, limit);
}

void ClickTrayIcon(const TrayIcon& icon, bool right, bool twice) {
    POINT point = Middle(icon.place);
    SetCursorPos(point.x, point.y);
    ScreenToClient(icon.bar, &point);
    if (twice) {
        PostDoubleClick(icon.bar, point);
    } else {
        PostClick(icon.bar, point, right);
    }
}

void PointAtTrayIcon(const TrayIcon& icon) {
    POINT point = Middle(icon.place);
    SetCursorPos(point.x, point.y);
    ScreenToClient(icon.bar, &point);
    PostMessageW(icon.bar, WM_MOUSEMOVE, 0, MAKELPARAM(point.x, point.y));
}

void ClickScreen(POINT point, bool right) {
    MoveTo(point);
    Press(right);
}

}  // namespace kestrelguard::testing
