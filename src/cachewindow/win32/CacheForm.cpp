#include "cachewindow/win32/CacheForm.h"

#include <commctrl.h>

#include "cachewindow/Texts.h"
#include "controls/win32/PlatformMessageLoop.h"
#include "runtime/Edge.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

enum CacheForm::Id : int {
    kCancel = 2,  // Esc
    kIECacheLBL = 100,
    kKg_CLST,
    kAllCache,
    kShowCook,
    kRefreshIE,
    kClearIENow,
    kSaveC,
    kRemoveC,
    kIECookiesS,
    kSavecLST,
    kCacheDetail,
    kFndLBL,
    kFndTXT,
    kFndCache,
};

struct CacheForm::ControlRow {
    int id;
    const char* windowClass;
    const wchar_t* text;
    const wchar_t* tip;
    DWORD style;
    TwipsRect CacheLayout::*place;
};

struct CacheForm::Command {
    int id;
    int notification;
    void (*handler)(CacheForm& form);
};

namespace {

constexpr char kClass[] = "KG_Cache";

constexpr DWORD kLabel = SS_LEFT | SS_NOPREFIX;
/// A long file name must not push the last line out.
constexpr DWORD kThreeLines = SS_LEFTNOWORDWRAP | SS_NOPREFIX;
constexpr DWORD kButton = BS_PUSHBUTTON | WS_TABSTOP;
constexpr DWORD kList =
    LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | LBS_HASSTRINGS | WS_VSCROLL | WS_HSCROLL | WS_TABSTOP;

CacheForm* FormOf(HWND window) {
    return reinterpret_cast<CacheForm*>(GetWindowLongA(window, GWL_USERDATA));
}

int ScreenDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

}  // namespace

// In the order of creation: the tab order and the order of reading.
const CacheForm::ControlRow CacheForm::kControls[] = {
    {kIECacheLBL, "Static", cache_texts::kLoading, nullptr, kLabel, &CacheLayout::IECacheLBL},
    {kKg_CLST, "ListBox", L"", nullptr, kList | LBS_WANTKEYBOARDINPUT, &CacheLayout::kg_CLST},
    {kAllCache, "Button", cache_texts::kAllCache, cache_texts::kAllCacheTip, kButton, &CacheLayout::AllCache},
    {kShowCook, "Button", cache_texts::kShowCook, cache_texts::kShowCookTip, kButton, &CacheLayout::ShowCook},
    {kRefreshIE, "Button", cache_texts::kRefreshIE, cache_texts::kRefreshIETip, kButton,
     &CacheLayout::RefreshIE},
    {kClearIENow, "Button", cache_texts::kClearIENow, cache_texts::kClearIENowTip, kButton,
     &CacheLayout::ClearIENow},
    {kSaveC, "Button", cache_texts::kSaveC, cache_texts::kSaveCTip, kButton, &CacheLayout::SaveC},
    {kRemoveC, "Button", cache_texts::kRemoveC, cache_texts::kRemoveCTip, kButton, &CacheLayout::RemoveC},
    {kIECookiesS, "Static", cache_texts::kIECookiesS, nullptr, kLabel, &CacheLayout::IECookiesS},
    {kSavecLST, "ListBox", L"", nullptr, kList, &CacheLayout::savecLST},
    {kCacheDetail, "Static", cache_texts::kCacheDetail, nullptr, kThreeLines, &CacheLayout::CacheDetail},
    {kFndLBL, "Static", cache_texts::kFndLBL, nullptr, kLabel, &CacheLayout::fndLBL},
    {kFndTXT, "Edit", L"", cache_texts::kFndTXTTip, ES_AUTOHSCROLL | WS_TABSTOP, &CacheLayout::fndTXT},
    {kFndCache, "Button", cache_texts::kFind, cache_texts::kFindTip, kButton, &CacheLayout::fndCache},
};

const CacheForm::Command CacheForm::kCommands[] = {
    {kAllCache, BN_CLICKED, [](CacheForm& form) { form.m_browser.AllCache_Click(); }},
    {kShowCook, BN_CLICKED, [](CacheForm& form) { form.m_browser.ShowCook_Click(); }},
    {kRefreshIE, BN_CLICKED, [](CacheForm& form) { form.m_browser.RefreshIE_Click(); }},
    {kClearIENow, BN_CLICKED, [](CacheForm& form) { form.m_browser.ClearIENow_Click(); }},
    {kKg_CLST, LBN_SELCHANGE, [](CacheForm& form) { form.m_browser.kg_CLST_Click(); }},
    {kKg_CLST, LBN_DBLCLK, [](CacheForm& form) { form.m_browser.kg_CLST_DblClick(); }},
    {kFndTXT, EN_CHANGE, [](CacheForm& form) { form.m_browser.fndTXT_Change(); }},
    {kFndCache, BN_CLICKED, [](CacheForm& form) { form.m_browser.fndCache_Click(); }},
    {kSaveC, BN_CLICKED, [](CacheForm& form) { form.m_savedEditor.SaveC_Click(); }},
    {kRemoveC, BN_CLICKED, [](CacheForm& form) { form.m_savedEditor.RemoveC_Click(); }},
    {kSavecLST, LBN_SELCHANGE, [](CacheForm& form) { form.m_savedEditor.savecLST_Click(); }},
    {kCancel, BN_CLICKED, [](CacheForm& form) { PostMessageA(form.m_window, WM_CLOSE, 0, 0); }},
};

std::shared_ptr<CacheForm> CacheForm::Create(const Parts& parts) {
    auto form = std::make_shared<CacheForm>(parts);
    form->CreateWindows();
    return form;
}

CacheForm::CacheForm(const Parts& parts)
    : m_parts(parts),
      m_dpi(ScreenDpi()),
      m_browser({m_entries, m_entries, m_findText, m_findButton, m_findTip, m_countLabel, m_detailsLabel,
                 parts.listing, parts.cache, m_boxes, parts.messages, parts.ShowCookiesOnly}),
      m_savedEditor({m_entries, m_entries, m_saved, m_saved, m_savedTip, parts.savedCookies}) {}

CacheForm::~CacheForm() {
    if (m_window != nullptr) {
        SetWindowLongA(m_window, GWL_USERDATA, 0);
        DialogWindows::Remove(m_window);
        DestroyWindow(m_window);
    }
}

void CacheForm::CreateWindows() {
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = Procedure;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));  // the arrow
    windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    windowClass.hIcon = m_parts.icon;
    windowClass.lpszClassName = kClass;
    RegisterClassA(&windowClass);  // fails the second time, which is as good

    m_window =
        CreateWindowExA(WS_EX_CONTROLPARENT, kClass, m_parts.caption, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                        CW_USEDEFAULT, CW_USEDEFAULT, WindowPixels(m_layout.width, m_dpi),
                        WindowPixels(m_layout.height, m_dpi), nullptr, nullptr, instance, nullptr);
    if (m_window == nullptr) {
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    m_font.Reset(CreateFontA(-MulDiv(8, m_dpi, 72), 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                             OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                             FF_SWISS | VARIABLE_PITCH, "Arial"));
    m_tips.Create(m_window);
    for (const ControlRow& row : kControls) {
        const bool edged = (row.style & WS_VSCROLL) != 0 || row.id == kFndTXT;
        const HWND control =
            CreateWindowExA(edged ? WS_EX_CLIENTEDGE : 0, row.windowClass, ToAnsi(row.text).c_str(),
                            row.style | WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, m_window,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(row.id)), instance, nullptr);
        if (control == nullptr) {
            throw RunTimeError(RunTimeError::kOutOfMemory);
        }
        SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(m_font.Get()), FALSE);
        if (row.tip != nullptr) {
            m_tips.Set(control, row.tip);
        }
    }
    m_entries.Attach(Control(kKg_CLST));
    m_entries.ScrollSideways();
    m_entriesVisibility.Attach(Control(kKg_CLST));
    m_saved.Attach(Control(kSavecLST));
    m_saved.ScrollSideways();
    m_savedTip.Attach(m_tips, Control(kSavecLST));
    m_findText.Attach(Control(kFndTXT));
    m_findButton.Attach(Control(kFndCache));
    m_findTip.Attach(m_tips, Control(kFndCache));
    m_countLabel.Attach(Control(kIECacheLBL));
    m_detailsLabel.Attach(Control(kCacheDetail));
    m_boxes.Attach(m_window);
    ApplyLayout();
    SetWindowLongA(m_window, GWL_USERDATA, static_cast<LONG>(reinterpret_cast<LONG_PTR>(this)));
    DialogWindows::Add(m_window);
}

void CacheForm::Form_Load() {
    m_parts.listing.LoadCacheEntries(false, false, m_parts.ShowCookiesOnly);
    const ListFill fill(m_saved);
    for (const std::wstring& cookie : m_parts.savedCookies) {
        m_saved.Append(cookie);
    }
}

void CacheForm::Show() {
    ShowWindow(m_window, IsIconic(m_window) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(m_window);
}

void CacheForm::Unload() {
    const auto self = shared_from_this();
    if (m_window == nullptr) {
        return;
    }
    m_parts.ShowCookiesOnly = false;
    RunTimeError failure(0, {});
    if (m_savedEditor.SavedListChanged()) {
        try {
            m_parts.savedCookiesFile.SavedCookiesFile(L"WRITE", &m_saved);
        } catch (const RunTimeError& error) {
            failure = error;
        }
    }
    const HWND window = std::exchange(m_window, nullptr);
    DialogWindows::Remove(window);
    SetWindowLongA(window, GWL_USERDATA, 0);
    DestroyWindow(window);
    m_parts.unloaded();
    if (failure.Number() != 0) {
        throw failure;
    }
}

LRESULT CALLBACK CacheForm::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    CacheForm* const found = FormOf(window);
    if (found == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    // A handler may show a box, and the window may be closed meanwhile.
    const std::shared_ptr<CacheForm> form = found->shared_from_this();
    LRESULT result = 0;
    AtEdge([&] { result = form->OnMessage(message, wParam, lParam); },
           [&form](const RunTimeError& error) { form->m_parts.showError(form->m_window, error); });
    return result;
}

LRESULT CacheForm::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND window = m_window;
    switch (message) {
        case WM_COMMAND:
            OnCommand(LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_VKEYTOITEM:
            if (LOWORD(wParam) == VK_DELETE) {
                m_browser.kg_CLST_DblClick();
                return -2;  // the key is dealt with
            }
            return -1;
        case WM_SIZE:
            if (wParam != SIZE_MINIMIZED) {
                Form_Resize();
            }
            return 0;
        case WM_CLOSE:
            Unload();
            return 0;
        case DM_GETDEFID:
            return GetFocus() == Control(kFndTXT) ? MAKELRESULT(kFndCache, DC_HASDEFID) : 0;
        case WM_ACTIVATE:
            if (LOWORD(wParam) == WA_INACTIVE && IsChild(window, GetFocus())) {
                m_lastFocus = GetFocus();
            }
            break;
        case WM_SETFOCUS:
            SetFocus(m_lastFocus != nullptr ? m_lastFocus : Control(kKg_CLST));
            return 0;
        default:
            break;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

void CacheForm::OnCommand(int id, int notification) {
    for (const Command& command : kCommands) {
        if (command.id == id && command.notification == notification) {
            command.handler(*this);
            return;
        }
    }
}

void CacheForm::Form_Resize() {
    RECT outer = {};
    GetWindowRect(m_window, &outer);
    const std::int32_t width = TwipsOfPixels(outer.right - outer.left, m_dpi);
    const std::int32_t height = TwipsOfPixels(outer.bottom - outer.top, m_dpi);
    m_layout = ResizedCacheLayout(m_layout, width, height);
    if (m_layout.width != width || m_layout.height != height) {
        SetWindowPos(m_window, nullptr, 0, 0, WindowPixels(m_layout.width, m_dpi),
                     WindowPixels(m_layout.height, m_dpi), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    ApplyLayout();
}

void CacheForm::ApplyLayout() {
    for (const ControlRow& row : kControls) {
        const TwipsRect& place = m_layout.*row.place;
        SetWindowPos(Control(row.id), nullptr, ToPixels(place.left), ToPixels(place.top),
                     ToPixels(place.width), ToPixels(place.height),
                     SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
    }
    // Controls that trade places leave gaps in each other; the window is painted once, whole.
    RedrawWindow(m_window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

}  // namespace kestrelguard
