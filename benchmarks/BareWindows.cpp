#include "BareWindows.h"

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "WindowList.h"
#include "resource.h"

namespace kestrelguard::bench {
namespace {

constexpr UINT kIconMessage = WM_APP + 1;

NOTIFYICONDATAA IconRecord(HWND owner, HICON icon) {
    NOTIFYICONDATAA record = {};
    record.cbSize = NOTIFYICONDATAA_V1_SIZE;
    record.hWnd = owner;
    record.uID = 1;
    record.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    record.uCallbackMessage = kIconMessage;
    record.hIcon = icon;
    lstrcpyA(record.szTip, "The bare form");
    return record;
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
        case WM_SIZE:
            if (wParam == SIZE_MINIMIZED) {
                NOTIFYICONDATAA record =
                    IconRecord(window, reinterpret_cast<HICON>(GetClassLongA(window, GCL_HICON)));
                ShowWindow(window, SW_HIDE);
                Shell_NotifyIconA(NIM_ADD, &record);
            }
            return 0;
        case WM_DESTROY: {
            NOTIFYICONDATAA record = IconRecord(window, nullptr);
            Shell_NotifyIconA(NIM_DELETE, &record);
            PostQuitMessage(0);
            return 0;
        }
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

void RegisterOwnClass(const char* name, WNDPROC procedure) {
    WNDCLASSA type = {};
    type.lpfnWndProc = procedure;
    type.hInstance = GetModuleHandleA(nullptr);
    type.hIcon = LoadIconA(type.hInstance, MAKEINTRESOURCEA(IDI_KESTRELGUARD));
    type.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));  // the arrow
    type.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    type.lpszClassName = name;
    RegisterClassA(&type);
}

std::string Contents(const char* path) {
    std::string text;
    const HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    char buffer[4096];
    for (DWORD got = 0; ReadFile(file, buffer, sizeof buffer, &got, nullptr) && got > 0;) {
        text.append(buffer, got);
    }
    CloseHandle(file);
    return text;
}

/// All windows of the list; the first is the form.
HWND MakeWindows(const std::vector<ListedWindow>& list) {
    const HFONT font =
        CreateFontA(-11, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                    CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, FF_SWISS | VARIABLE_PITCH, "Arial");
    std::vector<HWND> windows;
    for (const ListedWindow& listed : list) {
        const bool form = windows.empty();
        if (form || listed.ownClass) {
            RegisterOwnClass(listed.windowClass.c_str(), form ? Procedure : DefWindowProcA);
        }
        windows.push_back(CreateWindowExA(
            listed.extendedStyle, listed.windowClass.c_str(), listed.text.c_str(),
            form ? listed.style & ~(WS_VISIBLE | WS_MINIMIZE) : listed.style, listed.x, listed.y,
            listed.width, listed.height, form ? nullptr : windows[listed.parent],
            reinterpret_cast<HMENU>(static_cast<INT_PTR>(listed.id)), GetModuleHandleA(nullptr), nullptr));
        SendMessageA(windows.back(), WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    }
    return windows.empty() ? nullptr : windows.front();
}

}  // namespace

int RunBareWindows(std::string file, bool (*onceMade)()) {
    std::erase(file, '"');
    InitCommonControls();
    const HWND form = MakeWindows(ParseWindowList(Contents(file.c_str())));
    if (form == nullptr || !onceMade()) {
        return 1;
    }
    ShowWindow(form, SW_SHOWMINNOACTIVE);
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);
    }
    return 0;
}

}  // namespace kestrelguard::bench
