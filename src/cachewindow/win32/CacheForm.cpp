#include "cachewindow/win32/CacheForm.h"

#include <commctrl.h>

#include "cachewindow/Texts.h"
#include "runtime/FirstFailure.h"

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

namespace {

constexpr char kClass[] = "KG_Cache";

constexpr int kFontPoints = 8;

constexpr DWORD kLabel = SS_LEFT | SS_NOPREFIX;
/// A long file name must not push the last line out.
constexpr DWORD kThreeLines = SS_LEFTNOWORDWRAP | SS_NOPREFIX;
constexpr DWORD kButton = BS_PUSHBUTTON | WS_TABSTOP;
constexpr DWORD kList =
    LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | LBS_HASSTRINGS | WS_VSCROLL | WS_HSCROLL | WS_TABSTOP;

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

const Command<CacheForm> CacheForm::kCommands[] = {
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
    {kCancel, BN_CLICKED, [](CacheForm& form) { PostMessageA(form.Handle(), WM_CLOSE, 0, 0); }},
};

std::shared_ptr<CacheForm> CacheForm::Create(const Parts& parts) {
    auto form = std::make_shared<CacheForm>(parts);
    form->CreateWindows();
    return form;
}

CacheForm::CacheForm(const Parts& parts)
    : FormBase(parts.showError),
      m_parts(parts),
      m_browser({.entries = m_entries,
                 .selection = m_entries,
                 .fndTXT = m_findText,
                 .fndCache = m_findButton,
                 .fndCacheTip = m_findTip,
                 .IECacheLBL = m_countLabel,
                 .CacheDetail = m_detailsLabel,
                 .listing = parts.listing,
                 .cache = parts.cache,
                 .boxes = m_boxes,
                 .messages = parts.messages,
                 .ShowCookiesOnly = parts.ShowCookiesOnly}),
      m_savedEditor({.cacheRows = m_entries,
                     .cacheSelection = m_entries,
                     .savedRows = m_saved,
                     .savedSelection = m_saved,
                     .savedTip = m_savedTip,
                     .savedCookies = parts.savedCookies}) {}

void CacheForm::CreateWindows() {
    CreateForm({.name = kClass, .background = GetSysColorBrush(COLOR_BTNFACE), .icons = m_parts.icons},
               {.caption = m_parts.caption,
                .style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                .extendedStyle = WS_EX_CONTROLPARENT,
                .x = CW_USEDEFAULT,
                .y = CW_USEDEFAULT,
                .width = WindowPixels(m_layout.width, Dpi()),
                .height = WindowPixels(m_layout.height, Dpi())});
    KeepTitleBarOnScreen();
    m_font = ArialFont(kFontPoints, FW_NORMAL);
    m_tips.Create(Handle());
    for (const ControlRow& row : kControls) {
        const HWND control = CreateControl(
            {.id = row.id, .windowClass = row.windowClass, .text = row.text, .style = row.style}, Handle(),
            m_font.Get());
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
    m_boxes.Attach(Handle());
    ApplyLayout();
    m_complete = true;
}

void CacheForm::Form_Load() {
    m_parts.listing.LoadCacheEntries(false, false, m_parts.ShowCookiesOnly);
    const ListFill fill(m_saved);
    for (const std::wstring& cookie : m_parts.savedCookies) {
        m_saved.Append(cookie);
    }
}

void CacheForm::Show() {
    ShowWindow(Handle(), IsIconic(Handle()) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(Handle());
}

void CacheForm::Unload() {
    const auto self = shared_from_this();
    if (Handle() == nullptr) {
        return;
    }
    m_parts.ShowCookiesOnly = false;
    FirstFailure failure;
    if (m_savedEditor.SavedListChanged() || m_parts.savedCookiesFile.Unwritten()) {
        failure.Try([this] { m_parts.savedCookiesFile.SavedCookiesFile(L"WRITE", &m_saved); });
    }
    Discard();
    failure.Rethrow();
}

void CacheForm::Discard() {
    const auto self = shared_from_this();
    m_complete = false;
    DestroyForm();
    m_parts.unloaded();
}

std::optional<LRESULT> CacheForm::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    // A handler may show a box, and the window may be closed meanwhile.
    const std::shared_ptr<CacheForm> self = weak_from_this().lock();
    switch (message) {
        case WM_VKEYTOITEM:
            if (LOWORD(wParam) == VK_DELETE) {
                m_browser.kg_CLST_DblClick();
                return -2;  // the key is dealt with
            }
            return -1;
        case WM_SIZE:
            if (m_complete && wParam != SIZE_MINIMIZED) {
                Form_Resize();
            }
            return 0;
        case WM_CLOSE:
            Unload();
            return 0;
        default:
            return FormBase::OnMessage(message, wParam, lParam);
    }
}

void CacheForm::OnCommand(int id, int notification) {
    if (m_complete) {
        RunCommand(kCommands, *this, id, notification);
    }
}

int CacheForm::DefaultButton(HWND focus) const {
    return focus == Control(kFndTXT) ? kFndCache : 0;
}

HWND CacheForm::FirstFocus() const {
    return Control(kKg_CLST);
}

void CacheForm::Form_Resize() {
    RECT outer = {};
    GetWindowRect(Handle(), &outer);
    const std::int32_t width = TwipsOfPixels(outer.right - outer.left, Dpi());
    const std::int32_t height = TwipsOfPixels(outer.bottom - outer.top, Dpi());
    m_layout = ResizedCacheLayout(m_layout, width, height);
    if (m_layout.width != width || m_layout.height != height) {
        SetWindowPos(Handle(), nullptr, 0, 0, WindowPixels(m_layout.width, Dpi()),
                     WindowPixels(m_layout.height, Dpi()), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
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
    RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

}  // namespace kestrelguard
