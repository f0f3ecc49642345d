#include "app/win32/FormWindow.h"

#include <commctrl.h>
#include <windowsx.h>

#include <cstring>
#include <string>

#include "app/Texts.h"
#include "blocking/Texts.h"
#include "controls/win32/PlatformMessageLoop.h"
#include "resource.h"
#include "runtime/Edge.h"
#include "runtime/ProgramVersion.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

constexpr char kFormClass[] = "Kestrelguard";
constexpr char kPageClass[] = "KestrelguardPage";

/// The size of the form's inside at 96 dpi.
constexpr int kFormWidth = 788;
constexpr int kFormHeight = 452;

/// Where the three pages lie in the form.
constexpr RECT kPageArea = {284, 36, 776, 392};

/// Where a control lives.
enum Place { kOnForm = -1, kPage1, kPage2, kPage3 };

constexpr ControlId PageId(int page) {
    return static_cast<ControlId>(static_cast<int>(kKG_F0) + page);
}

struct ControlRow {
    ControlId id;
    Place place;
    const char* windowClass;
    const wchar_t* text;
    DWORD style;
    int x, y, width, height;
    bool bold = false;
};

constexpr DWORD kLabel = SS_LEFT | SS_NOPREFIX;
constexpr DWORD kRule = SS_ETCHEDHORZ;
constexpr DWORD kPicture = SS_ICON | SS_REALSIZEIMAGE;
constexpr DWORD kOption = BS_AUTORADIOBUTTON;
constexpr DWORD kBox = BS_AUTOCHECKBOX | WS_TABSTOP;
constexpr DWORD kButton = BS_PUSHBUTTON | WS_TABSTOP;
constexpr DWORD kEdit = ES_AUTOHSCROLL | WS_TABSTOP;

/// Every control in the order of its creation, which is the tab order and the order of reading. Positions are
/// pixels at 96 dpi.
constexpr ControlRow kControls[] = {
    {kWinInstImg, kOnForm, "Static", L"", kPicture, 12, 12, 16, 16},
    {kBrowseLBL, kOnForm, "Static", texts::kBrowseLBL, kLabel, 30, 13, 244, 16, true},
    {kTvBrowsers, kOnForm, WC_TREEVIEWA, L"",
     WS_TABSTOP | WS_BORDER | TVS_HASLINES | TVS_LINESATROOT | TVS_HASBUTTONS | TVS_SHOWSELALWAYS, 12, 34,
     262, 338},
    {kHintLBL, kOnForm, "Static", texts::kHint, kLabel, 12, 376, 262, 16},
    // The strip alone: the pages below it are windows of their own, so that Tab goes from the strip into the
    // page.
    {kKGTabs, kOnForm, WC_TABCONTROLA, L"", WS_TABSTOP, 284, 12, 492, 24},

    {kPopPIC, kPage1, "Static", L"", kPicture, 14, 14, 32, 32},
    {kPreLBL, kPage1, "Static", texts::kPreLBL, kLabel, 58, 22, 400, 18, true},
    {kPTO0, kPage1, "Button", texts::kPTO0, kOption | WS_GROUP | WS_TABSTOP, 58, 46, 400, 20},
    {kPTO1, kPage1, "Button", texts::kPTO1, kOption, 58, 70, 400, 20},
    {kPTO2, kPage1, "Button", texts::kPTO2, kOption, 58, 94, 400, 20},
    {kLine, kPage1, "Static", L"", kRule | WS_GROUP, 14, 130, 452, 2},
    {kImage1, kPage1, "Static", L"", kPicture, 14, 146, 32, 32},
    {kStartOPT, kPage1, "Static", texts::kStartOPT, kLabel, 58, 154, 400, 18, true},
    {kCOpenM, kPage1, "Button", texts::kCOpenM, kBox, 58, 178, 400, 20},
    {kLine, kPage1, "Static", L"", kRule, 14, 214, 452, 2},
    {kStopToday, kPage1, "Static", texts::kStopToday, kLabel, 58, 234, 220, 18},
    {kPopsToday, kPage1, "Static", texts::kZero, kLabel, 282, 234, 150, 18, true},
    {kPOPTotal, kPage1, "Static", texts::kPOPTotal, kLabel, 58, 260, 220, 18},
    {kPopStopsT, kPage1, "Static", texts::kZero, kLabel, 282, 260, 150, 18, true},

    {kKG_C0, kPage2, "Button", blocking_texts::kBlockSitesCaption, kBox | BS_MULTILINE, 14, 12, 454, 20},
    {kSiteTXT, kPage2, "Edit", L"", kEdit, 32, 40, 334, 22},
    {kAddSite, kPage2, "Button", blocking_texts::kAddSiteCaption, kButton, 376, 38, 92, 26},
    {kSiteLST, kPage2, "ListBox", L"",
     LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | LBS_HASSTRINGS | WS_VSCROLL | WS_HSCROLL | WS_TABSTOP, 32, 70, 334,
     144},
    {kRemoveSite, kPage2, "Button", blocking_texts::kRemoveSiteCaption, kButton, 376, 70, 92, 26},
    {kSsGearImg, kPage2, "Static", L"", kPicture, 406, 178, 32, 32},
    {kLine, kPage2, "Static", L"", kRule, 14, 230, 452, 2},
    {kKG_C1, kPage2, "Button", blocking_texts::kBlockTitlesCaption, kBox | BS_MULTILINE | BS_TOP, 14, 244,
     454, 38},
    {kTitleBan, kPage2, "Edit", blocking_texts::kTitleBanDefault, kEdit, 32, 288, 434, 22},

    {kImage2, kPage3, "Static", L"", kPicture, 14, 16, 32, 32},
    {kClearIEC, kPage3, "Button", texts::kClearIEC, kButton, 58, 18, 240, 28},
    {kKG_C2, kPage3, "Button", texts::kCheck1, kBox, 310, 24, 15, 16},
    {kShowIEC, kPage3, "Button", texts::kShowIEC, kButton, 340, 18, 128, 28},
    {kIE_Hist, kPage3, "Static", L"", kPicture, 14, 62, 32, 32},
    {kClearIEH, kPage3, "Button", texts::kClearIEH, kButton, 58, 64, 240, 28},
    {kKG_C3, kPage3, "Button", texts::kCheck1, kBox, 310, 70, 15, 16},
    {kIE_WbFold, kPage3, "Static", L"", kPicture, 14, 108, 32, 32},
    {kClearIECookies, kPage3, "Button", texts::kClearIECookies, kButton, 58, 110, 240, 28},
    {kKG_C4, kPage3, "Button", texts::kCheck1, kBox, 310, 116, 15, 16},
    {kShowIECookies, kPage3, "Button", texts::kShowIECookies, kButton, 340, 110, 128, 28},
    {kLine, kPage3, "Static", L"", kRule, 14, 158, 452, 2},
    {kKG_C5, kPage3, "Button", texts::kKG_C5, kBox, 58, 178, 166, 20},
    {kWash_F, kPage3, "Edit", texts::kWash_F, kEdit, 228, 177, 60, 22},
    {kWash_CMB, kPage3, "ComboBox", L"", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, 296, 176, 110, 120},

    {kQuestB, kOnForm, "Button", texts::kQuestion, kButton, 12, 410, 30, 28},
    {kOKcmd, kOnForm, "Button", texts::kOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 512, 410, 82, 28},
    {kCancelcmd, kOnForm, "Button", texts::kCancel, kButton, 603, 410, 82, 28},
    {kApplyCmd, kOnForm, "Button", texts::kApply, kButton, 694, 410, 82, 28},
};

constexpr const wchar_t* kTabs[FormWindow::kPages] = {texts::kTab1, texts::kTab2, texts::kTab3};

constexpr const wchar_t* kWashUnits[] = {texts::kMinutes, texts::kHours, texts::kDays};

struct MenuRow {
    int id;  // 0: a separator
    const wchar_t* caption;
};

constexpr MenuRow kTrayMenuRows[] = {
    {kMnuHelp, texts::kMnuHelp},
    {0, nullptr},
    {kMnuPOP, texts::kMnuPOP},
    {kMnuIEC, texts::kMnuIEC},
    {kMnuIECook, texts::kMnuIECook},
    {kMnuShow, texts::kMnuShow},
    {0, nullptr},
    {kMnuExit, texts::kMnuExit},
};

constexpr MenuRow kBrowserMenuRows[] = {{kMnuSB, texts::kMnuSB}, {kMnuCB, texts::kMnuCB}};

struct PictureRow {
    ControlId id;
    int resource;
    int size;  // pixels at 96 dpi
};

constexpr PictureRow kPictureRows[] = {
    {kWinInstImg, IDI_WINDOWS, 16},  {kPopPIC, IDI_POPUP, 32}, {kImage1, IDI_STARTUP, 32},
    {kSsGearImg, IDI_GEAR, 32},      {kImage2, IDI_BROOM, 32}, {kIE_Hist, IDI_HISTORY, 32},
    {kIE_WbFold, IDI_WEBFOLDER, 32},
};

struct TipRow {
    ControlId id;
    const wchar_t* text;
};

constexpr TipRow kTipRows[] = {{kSiteTXT, blocking_texts::kSiteTxtHint},
                               {kKG_C2, texts::kCheck1Tip},
                               {kKG_C3, texts::kCheck1Tip},
                               {kKG_C4, texts::kCheck1Tip}};

HINSTANCE Instance() {
    return GetModuleHandleA(nullptr);
}

void RegisterWindowClass(const char* name, WNDPROC procedure, HBRUSH background, HICON icon) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = Instance();
    windowClass.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));  // the arrow
    windowClass.hbrBackground = background;
    windowClass.hIcon = icon;
    windowClass.lpszClassName = name;
    RegisterClassA(&windowClass);  // fails the second time, which is as good
}

/// Whether visual styles are on: the inside of a tab control is white then.
bool ThemesActive() {
    const Library theme(LoadLibraryA("uxtheme.dll"));
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

int ScreenDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

HFONT ArialFont(int dpi, int weight) {
    return CreateFontA(-MulDiv(9, dpi, 72), 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                       OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, FF_SWISS | VARIABLE_PITCH,
                       "Arial");
}

template <std::size_t Count>
HMENU CreateMenuFrom(const MenuRow (&rows)[Count]) {
    const HMENU menu = CreatePopupMenu();
    for (const MenuRow& row : rows) {
        if (row.id == 0) {
            AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
        } else {
            AppendMenuA(menu, MF_STRING, static_cast<UINT_PTR>(row.id), ToAnsi(row.caption).c_str());
        }
    }
    return menu;
}

FormWindow* FormOf(HWND window) {
    return reinterpret_cast<FormWindow*>(GetWindowLongA(window, GWL_USERDATA));
}

}  // namespace

FormWindow::FormWindow(FormMessages& messages) : m_messages(messages), m_dpi(ScreenDpi()) {
    m_icon = LoadIconA(Instance(), MAKEINTRESOURCEA(IDI_KESTRELGUARD));
    m_pageBrush = GetSysColorBrush(ThemesActive() ? COLOR_WINDOW : COLOR_BTNFACE);
    RegisterWindowClass(kFormClass, FormProcedure, GetSysColorBrush(COLOR_BTNFACE), m_icon);
    RegisterWindowClass(kPageClass, PageProcedure, m_pageBrush, nullptr);
    CreateFonts();

    constexpr DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    RECT outer = {0, 0, Scaled(kFormWidth), Scaled(kFormHeight)};
    AdjustWindowRectEx(&outer, style, FALSE, WS_EX_CONTROLPARENT);
    const int width = outer.right - outer.left;
    const int height = outer.bottom - outer.top;
    RECT work = {};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    const std::wstring caption = texts::kFormCaption + VersionText();
    m_form = CreateWindowExA(WS_EX_CONTROLPARENT, kFormClass, ToAnsi(caption).c_str(), style,
                             work.left + (work.right - work.left - width) / 2,
                             work.top + (work.bottom - work.top - height) / 2, width, height, nullptr,
                             nullptr, Instance(), this);
    if (m_form == nullptr) {
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    CreateControls();
    LoadPictures();
    FillTabs();
    FillLists();
    CreateMenus();
    DialogWindows::Add(m_form);
}

FormWindow::~FormWindow() {
    Destroy();
}

void FormWindow::Destroy() {
    if (m_form != nullptr) {
        DestroyWindow(m_form);
    }
}

void FormWindow::CreateFonts() {
    m_font.Reset(ArialFont(m_dpi, FW_NORMAL));
    m_boldFont.Reset(ArialFont(m_dpi, FW_BOLD));
}

void FormWindow::CreateControls() {
    const auto create = [this](const ControlRow& row, HWND parent) {
        const DWORD border =
            lstrcmpA(row.windowClass, "Edit") == 0 || lstrcmpA(row.windowClass, "ListBox") == 0
                ? WS_EX_CLIENTEDGE
                : 0;
        const HWND control = CreateWindowExA(
            border, row.windowClass, ToAnsi(row.text).c_str(), row.style | WS_CHILD | WS_VISIBLE,
            Scaled(row.x), Scaled(row.y), Scaled(row.width), Scaled(row.height), parent,
            reinterpret_cast<HMENU>(static_cast<INT_PTR>(row.id)), Instance(), nullptr);
        if (control == nullptr) {
            throw RunTimeError(RunTimeError::kOutOfMemory);
        }
        SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>((row.bold ? m_boldFont : m_font).Get()),
                     FALSE);
        m_controls[static_cast<std::size_t>(row.id)] = control;
    };
    for (const ControlRow& row : kControls) {
        if (row.place != kOnForm) {
            HWND& page = m_controls[static_cast<std::size_t>(PageId(row.place))];
            if (page == nullptr) {
                page = CreateWindowExA(
                    WS_EX_CONTROLPARENT, kPageClass, "", WS_CHILD | WS_CLIPSIBLINGS, Scaled(kPageArea.left),
                    Scaled(kPageArea.top), Scaled(kPageArea.right - kPageArea.left),
                    Scaled(kPageArea.bottom - kPageArea.top), m_form,
                    reinterpret_cast<HMENU>(static_cast<INT_PTR>(PageId(row.place))), Instance(), this);
                if (page == nullptr) {
                    throw RunTimeError(RunTimeError::kOutOfMemory);
                }
            }
            create(row, page);
        } else {
            create(row, m_form);
        }
    }
    const HWND tree = Control(kTvBrowsers);
    SetWindowLongA(tree, GWL_USERDATA, static_cast<LONG>(reinterpret_cast<LONG_PTR>(this)));
    m_treeProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongA(tree, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(TreeProcedure))));
    m_tips.Create(m_form);
    for (const TipRow& row : kTipRows) {
        m_tips.Set(Control(row.id), row.text);
    }
}

void FormWindow::LoadPictures() {
    for (const PictureRow& row : kPictureRows) {
        const int size = Scaled(row.size);
        kestrelguard::Icon picture(static_cast<HICON>(
            LoadImageA(Instance(), MAKEINTRESOURCEA(row.resource), IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
        SendMessageA(Control(row.id), STM_SETICON, reinterpret_cast<WPARAM>(picture.Get()), 0);
        m_pictures.push_back(std::move(picture));
    }
}

ImageList FormWindow::LoadTreeImages() const {
    const int size = Scaled(16);
    ImageList images(ImageList_Create(size, size, ILC_COLOR32 | ILC_MASK, 3, 0));
    for (const int resource : {IDI_TREE_DETAIL, IDI_TREE_ROOT, IDI_TREE_BROWSER}) {
        const kestrelguard::Icon picture(static_cast<HICON>(
            LoadImageA(Instance(), MAKEINTRESOURCEA(resource), IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
        ImageList_AddIcon(images.Get(), picture.Get());
    }
    return images;
}

void FormWindow::FillTabs() {
    for (int index = 0; index < kPages; ++index) {
        std::string caption = ToAnsi(kTabs[index]);
        TCITEMA item = {};
        item.mask = TCIF_TEXT;
        item.pszText = caption.data();
        SendMessageA(Control(kKGTabs), TCM_INSERTITEMA, static_cast<WPARAM>(index),
                     reinterpret_cast<LPARAM>(&item));
    }
    // The tabs fill the strip at any size of the screen's dots; the line below them is where the page begins.
    constexpr int kAroundTabs = 5;
    RECT strip = {};
    GetClientRect(Control(kKGTabs), &strip);
    SendMessageA(Control(kKGTabs), TCM_SETITEMSIZE, 0, MAKELPARAM(0, strip.bottom - kAroundTabs));
    ShowPage(0, true);
}

void FormWindow::FillLists() {
    for (const wchar_t* unit : kWashUnits) {
        SendMessageA(Control(kWash_CMB), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(ToAnsi(unit).c_str()));
    }
    SendMessageA(Control(kWash_CMB), CB_SETCURSEL, 0, 0);
    SendMessageA(Control(kPTO0), BM_SETCHECK, BST_CHECKED, 0);
}

void FormWindow::CreateMenus() {
    m_trayMenu.Reset(CreateMenuFrom(kTrayMenuRows));
    CheckMenuItem(m_trayMenu.Get(), kMnuPOP, MF_BYCOMMAND | MF_CHECKED);
    m_browserMenu.Reset(CreateMenuFrom(kBrowserMenuRows));
    SetMenuDefaultItem(m_browserMenu.Get(), kMnuSB, FALSE);
}

void FormWindow::ShowPage(int page, bool show) {
    ShowWindow(Control(PageId(page)), show ? SW_SHOW : SW_HIDE);
}

int FormWindow::SelectedTab() const {
    return static_cast<int>(SendMessageA(Control(kKGTabs), TCM_GETCURSEL, 0, 0));
}

LRESULT CALLBACK FormWindow::FormProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        auto* form = static_cast<FormWindow*>(create->lpCreateParams);
        form->m_form = window;
        SetWindowLongA(window, GWL_USERDATA, static_cast<LONG>(reinterpret_cast<LONG_PTR>(form)));
        return DefWindowProcA(window, message, wParam, lParam);
    }
    FormWindow* form = FormOf(window);
    if (form == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    LRESULT result = 0;
    AtEdge([&] { result = form->OnMessage(message, wParam, lParam); },
           [form](const RunTimeError& error) { form->m_messages.OnError(error); });
    if (message == WM_NCDESTROY) {
        DialogWindows::Remove(window);
        SetWindowLongA(window, GWL_USERDATA, 0);
        form->m_form = nullptr;
    }
    return result;
}

LRESULT CALLBACK FormWindow::PageProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    // What the controls of a page tell goes to the form, as if they lay on it.
    switch (message) {
        case WM_COMMAND:
        case WM_NOTIFY:
            return SendMessageA(GetParent(window), message, wParam, lParam);
        case WM_ERASEBKGND: {
            const auto context = reinterpret_cast<HDC>(wParam);
            RECT area = {};
            GetClientRect(window, &area);
            FillRect(context, &area, GetSysColorBrush(COLOR_BTNSHADOW));
            // A line at every side but the upper one, where the tab strip draws it.
            area = {area.left + 1, area.top, area.right - 1, area.bottom - 1};
            FillRect(context, &area, reinterpret_cast<HBRUSH>(GetClassLongA(window, GCL_HBRBACKGROUND)));
            return TRUE;
        }
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN: {
            const auto background = reinterpret_cast<HBRUSH>(GetClassLongA(window, GCL_HBRBACKGROUND));
            const auto context = reinterpret_cast<HDC>(wParam);
            SetBkMode(context, TRANSPARENT);
            SetTextColor(context, GetSysColor(COLOR_BTNTEXT));
            return reinterpret_cast<LRESULT>(background);
        }
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

LRESULT CALLBACK FormWindow::TreeProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    FormWindow* form = FormOf(window);
    const WNDPROC original = form->m_treeProcedure;
    if (message == WM_RBUTTONDOWN) {
        // The control's own handling would wait for the button and mark the node under the pointer.
        POINT point = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        ClientToScreen(window, &point);
        PostMessageA(form->m_form, kTreeMenuMessage, 0, MAKELPARAM(point.x, point.y));
        return 0;
    }
    if (message == WM_CONTEXTMENU) {
        if (lParam == -1) {  // the menu key: at the selected node
            POINT point = {form->Scaled(12), form->Scaled(12)};
            RECT node = {};
            const auto item =
                reinterpret_cast<HTREEITEM>(SendMessageA(window, TVM_GETNEXTITEM, TVGN_CARET, 0));
            if (item != nullptr) {
                std::memcpy(&node, &item, sizeof item);  // how the message wants to be asked
                if (SendMessageA(window, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&node))) {
                    point = {node.left, node.bottom};
                }
            }
            ClientToScreen(window, &point);
            PostMessageA(form->m_form, kTreeMenuMessage, 0, MAKELPARAM(point.x, point.y));
        }
        return 0;
    }
    return CallWindowProcA(original, window, message, wParam, lParam);
}

LRESULT FormWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (const auto result = m_messages.OnMessage(message, wParam, lParam)) {
        return *result;
    }
    if (const auto result = OnLook(message, wParam, lParam)) {
        return *result;
    }
    return DefWindowProcA(m_form, message, wParam, lParam);
}

std::optional<LRESULT> FormWindow::OnLook(UINT message, WPARAM wParam, LPARAM lParam) {
    static_cast<void>(lParam);
    switch (message) {
        case DM_GETDEFID:
            // Enter in the site box adds the site; elsewhere it is OK.
            return MAKELRESULT(GetFocus() == Control(kSiteTXT) ? kAddSite : kOKcmd, DC_HASDEFID);
        case WM_ACTIVATE:
            if (LOWORD(wParam) == WA_INACTIVE) {
                const HWND focus = GetFocus();
                if (focus != nullptr && IsChild(m_form, focus)) {
                    m_lastFocus = focus;
                }
            }
            return std::nullopt;
        case WM_SETFOCUS: {
            HWND target = m_lastFocus;
            if (target == nullptr || !IsWindowVisible(target) || !IsWindowEnabled(target)) {
                target = Control(kKGTabs);
            }
            SetFocus(target);
            return 0;
        }
        default:
            return std::nullopt;
    }
}

}  // namespace kestrelguard
