// A window with one of each control, a notification icon and menus, for the tests of the test toolkit.
// The caption of the label "Last:" neighbour says what happened last.

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <cstring>
#include <string>

namespace {

constexpr UINT kTray = WM_APP + 7;
enum Id {
    kButton = 100,
    kCheck,
    kRadio,
    kEdit,
    kList,
    kCombo,
    kTree,
    kTabs,
    kBox,
    kLastLabel,
    kLast,
    kMenuFirst = 300
};

HWND g_window = nullptr;
HWND g_controls[kLast + 1] = {};
int g_clicks = 0;

HWND Make(const wchar_t* type, const wchar_t* text, DWORD style, int id, RECT place) {
    return g_controls[id] = CreateWindowExW(
               0, type, text, WS_CHILD | WS_VISIBLE | style, place.left, place.top, place.right, place.bottom,
               g_window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

void Last(const std::wstring& text) {
    SetWindowTextW(g_controls[kLast], text.c_str());
}

HTREEITEM Node(HTREEITEM parent, const wchar_t* text) {
    TVINSERTSTRUCTW insert{};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT;
    insert.item.pszText = const_cast<wchar_t*>(text);
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(g_controls[kTree], TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

void Icon(DWORD message, const char* tip) {
    NOTIFYICONDATAA data{};
    data.cbSize = NOTIFYICONDATAA_V1_SIZE;
    data.hWnd = g_window;
    data.uID = 1;
    data.uFlags = NIF_ICON | NIF_MESSAGE | NIF_TIP;
    data.uCallbackMessage = kTray;
    data.hIcon = LoadIconW(nullptr, IDI_INFORMATION);
    std::strncpy(data.szTip, tip, 63);
    Shell_NotifyIconA(message, &data);
}

void PopUp() {
    const HMENU menu = CreatePopupMenu();
    AppendMenuW(menu, MF_STRING, kMenuFirst, L"First");
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING | MF_CHECKED, kMenuFirst + 1, L"Second = 12");
    AppendMenuW(menu, MF_STRING, kMenuFirst + 2, L"Third");
    SetMenuDefaultItem(menu, kMenuFirst + 2, FALSE);
    SetForegroundWindow(g_window);
    POINT point;
    GetCursorPos(&point);
    TrackPopupMenu(menu, 0, point.x, point.y, 0, g_window, nullptr);
    PostMessageW(g_window, WM_NULL, 0, 0);
    DestroyMenu(menu);
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
        case WM_COMMAND:
            if (LOWORD(wParam) == kButton) {
                Last(L"button " + std::to_wstring(++g_clicks));
            } else if (LOWORD(wParam) == kBox) {
                Last(MessageBoxW(window, L"Yes or no?", L"Target asks", MB_YESNO | MB_SYSTEMMODAL) == IDYES
                         ? L"yes"
                         : L"no");
            } else if (LOWORD(wParam) == kEdit && HIWORD(wParam) == EN_CHANGE) {
                Last(L"edit");
            } else if (LOWORD(wParam) == kList && HIWORD(wParam) == LBN_SELCHANGE) {
                Last(L"list");
            } else if (LOWORD(wParam) == kCombo && HIWORD(wParam) == CBN_SELCHANGE) {
                Last(L"combo");
            } else if (LOWORD(wParam) >= kMenuFirst) {
                Last(L"menu " + std::to_wstring(LOWORD(wParam)));
            }
            return 0;
        case WM_NOTIFY: {
            const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
            if (header.idFrom == kTree && header.code == static_cast<UINT>(NM_CLICK)) {
                Last(L"tree click");
            } else if (header.idFrom == kTree && header.code == static_cast<UINT>(NM_DBLCLK)) {
                Last(L"tree double click");
            } else if (header.idFrom == kTree && header.code == static_cast<UINT>(NM_RCLICK)) {
                PopUp();
            } else if (header.idFrom == kTabs && header.code == static_cast<UINT>(TCN_SELCHANGE)) {
                Last(L"tab");
            }
            return 0;
        }
        case kTray:
            if (lParam == WM_RBUTTONUP) {
                PopUp();
            } else if (lParam == WM_LBUTTONUP) {
                Last(L"icon");
            }
            return 0;
        case WM_DESTROY:
            Icon(NIM_DELETE, "");
            PostQuitMessage(7);
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    InitCommonControls();
    WNDCLASSW type{};
    type.lpfnWndProc = Procedure;
    type.hInstance = instance;
    type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    type.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    type.lpszClassName = L"ToolkitTarget";
    RegisterClassW(&type);
    g_window = CreateWindowExW(0, type.lpszClassName, L"Target", WS_OVERLAPPEDWINDOW, 0, 0, 700, 500, nullptr,
                               nullptr, instance, nullptr);
    Make(L"Button", L"Press", BS_PUSHBUTTON, kButton, {10, 10, 80, 24});
    Make(L"Button", L"Tick", BS_AUTOCHECKBOX, kCheck, {10, 40, 80, 24});
    Make(L"Button", L"Choose", BS_AUTORADIOBUTTON, kRadio, {10, 70, 80, 24});
    Make(L"Edit", L"typed", WS_BORDER, kEdit, {10, 100, 120, 24});
    Make(L"ListBox", L"", WS_BORDER | LBS_NOTIFY, kList, {10, 130, 120, 80});
    Make(L"ComboBox", L"", CBS_DROPDOWNLIST, kCombo, {10, 220, 120, 100});
    Make(L"SysTreeView32", L"", TVS_HASLINES | TVS_LINESATROOT | WS_BORDER, kTree, {150, 10, 240, 200});
    Make(L"SysTabControl32", L"", 0, kTabs, {150, 220, 240, 60});
    Make(L"Button", L"Ask", BS_PUSHBUTTON, kBox, {10, 260, 80, 24});
    Make(L"Static", L"Last:", 0, kLastLabel, {10, 300, 80, 20});
    Make(L"Static", L"nothing", 0, kLast, {100, 300, 300, 20});
    SendMessageW(g_controls[kList], LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"casino"));
    SendMessageW(g_controls[kList], LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L""));
    SendMessageW(g_controls[kCombo], CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"Minute/s"));
    SendMessageW(g_controls[kCombo], CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"Hour/s"));
    for (const wchar_t* text : {L"One", L"Two"}) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(text);
        SendMessageW(g_controls[kTabs], TCM_INSERTITEMW, 9, reinterpret_cast<LPARAM>(&item));
    }
    const HTREEITEM root = Node(TVI_ROOT, L"Windows Browsers (1)");
    const HTREEITEM browser = Node(root, L"Browser ");
    Node(browser, L"Title : x");
    SendMessageW(g_controls[kTree], TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(root));
    ShowWindow(g_window, SW_SHOWNORMAL);
    Icon(NIM_ADD, " Target tip");
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}
