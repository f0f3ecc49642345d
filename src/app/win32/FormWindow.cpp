#include "app/win32/FormWindow.h"

#include <windowsx.h>

#include <cstring>
#include <string>
#include <utility>

#include "controls/win32/AccessibleNames.h"
#include "controls/win32/PackedIcon.h"
#include "runtime/ProgramVersion.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

using namespace form_layout;

namespace {

constexpr int kFontPoints = 9;

HINSTANCE Instance() {
    return GetModuleHandleA(nullptr);
}

kestrelguard::Icon LoadPicture(int resource, int size) {
    return kestrelguard::Icon(static_cast<HICON>(
        LoadImageA(Instance(), MAKEINTRESOURCEA(resource), IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
}

}  // namespace

FormWindow::FormWindow(ErrorReport report)
    : FormBase(std::move(report)),
      m_bigIcon(LoadPicture(IDI_KESTRELGUARD, GetSystemMetrics(SM_CXICON))),
      m_smallIcon(LoadPicture(IDI_KESTRELGUARD, GetSystemMetrics(SM_CXSMICON))) {
    m_font = ArialFont(kFontPoints, FW_NORMAL);
    m_boldFont = ArialFont(kFontPoints, FW_BOLD);
    CreateMainWindow();
    CreateControls();
    LoadPictures();
    FillTabs();
    FillLists();
    m_trayMenu.emplace(Handle());
    m_treeMenu.emplace(Handle());
}

void FormWindow::CreateMainWindow() {
    constexpr DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    RECT outer = {0, 0, Scaled(kFormWidth), Scaled(kFormHeight)};
    AdjustWindowRectEx(&outer, style, FALSE, WS_EX_CONTROLPARENT);
    const int width = outer.right - outer.left;
    const int height = outer.bottom - outer.top;
    const RECT work = WorkArea();
    const std::string caption = ToAnsi(texts::kFormCaption + VersionText());
    CreateForm({.name = "Kestrelguard", .background = GetSysColorBrush(COLOR_BTNFACE), .icons = FormIcons()},
               {.caption = caption.c_str(),
                .style = style,
                .extendedStyle = WS_EX_CONTROLPARENT,
                .x = work.left + (work.right - work.left - width) / 2,
                .y = work.top + (work.bottom - work.top - height) / 2,
                .width = width,
                .height = height});
    KeepTitleBarOnScreen();
}

void FormWindow::CreateControls() {
    for (const ControlRow& row : kControls) {
        CreateOne(row);
    }
    m_treeKeys.Attach(Control(kTvBrowsers), Handle(), Scaled(12));
    m_tips.Create(Handle());
    for (const TipRow& row : kTipRows) {
        m_tips.Set(Control(row.id), row.text);
    }
    const AccessibleNames names;
    for (const NameRow& row : kNameRows) {
        names.Set(Control(row.id), row.name);
    }
}

void FormWindow::CreateOne(const ControlRow& row) {
    HWND parent = Handle();
    if (row.place != kOnForm) {
        PageWindow& page = m_pages[static_cast<std::size_t>(row.place)];
        if (page.Handle() == nullptr) {
            page.CreateAt({Scaled(kPageArea.left), Scaled(kPageArea.top),
                           Scaled(kPageArea.left) + Scaled(kPageArea.right - kPageArea.left),
                           Scaled(kPageArea.top) + Scaled(kPageArea.bottom - kPageArea.top)},
                          Handle(), PageId(row.place));
        }
        parent = page.Handle();
    }
    const int x = Scaled(row.x);
    const int y = Scaled(row.y);
    m_controls[static_cast<std::size_t>(row.id)] =
        CreateControl({.id = row.id,
                       .windowClass = row.windowClass,
                       .text = row.text,
                       .style = row.style,
                       .place = {x, y, x + Scaled(row.width), y + Scaled(row.height)}},
                      parent, (row.bold ? m_boldFont : m_font).Get());
}

void FormWindow::LoadPictures() {
    for (const PictureRow& row : kPictureRows) {
        m_pictures.push_back(LoadPackedIcon(Instance(), row.resource, Scaled(row.size)));
        SendMessageA(Control(row.id), STM_SETICON, reinterpret_cast<WPARAM>(m_pictures.back().Get()), 0);
    }
}

ImageList FormWindow::LoadTreeImages() const {
    const int size = Scaled(16);
    ImageList images(ImageList_Create(size, size, ILC_COLOR32 | ILC_MASK, 3, 0));
    for (const int resource : {IDI_TREE_DETAIL, IDI_TREE_ROOT, IDI_TREE_BROWSER}) {
        ImageList_AddIcon(images.Get(), LoadPicture(resource, size).Get());
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
    m_pages.front().Show(true);
}

void FormWindow::FillLists() {
    for (const wchar_t* unit : kWashUnits) {
        SendMessageA(Control(kWash_CMB), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(ToAnsi(unit).c_str()));
    }
    SendMessageA(Control(kWash_CMB), CB_SETCURSEL, 0, 0);
    SendMessageA(Control(kPTO0), BM_SETCHECK, BST_CHECKED, 0);
}

int FormWindow::DefaultButton(HWND focus) const {
    // Enter in the site box adds the site; elsewhere it is OK.
    return focus == Control(kSiteTXT) ? kAddSite : kOKcmd;
}

HWND FormWindow::FirstFocus() const {
    return Control(kKGTabs);
}

// The window as its icon and its pages see it.

WindowState FormWindow::State() const {
    if (IsIconic(Handle())) {
        return WindowState::Minimised;
    }
    return IsZoomed(Handle()) ? WindowState::Maximised : WindowState::Normal;
}

void FormWindow::SetState(WindowState state) {
    // A hidden window that is minimised once more would show as an icon and hear of no size.
    if (state == WindowState::Minimised && State() == state) {
        return;
    }
    ShowWindow(Handle(), state == WindowState::Minimised   ? SW_MINIMIZE
                         : state == WindowState::Maximised ? SW_SHOWMAXIMIZED
                                                           : SW_RESTORE);
}

void FormWindow::Hide() {
    ShowWindow(Handle(), SW_HIDE);
}

void FormWindow::Show() {
    ShowWindow(Handle(), SW_SHOW);
    SetForegroundWindow(Handle());
}

void FormWindow::SetForeground() {
    SetForegroundWindow(Handle());
}

int FormWindow::SelectedTab() const {
    return static_cast<int>(SendMessageA(Control(kKGTabs), TCM_GETCURSEL, 0, 0)) + 1;
}

void FormWindow::SelectTab(int tab) {
    SendMessageA(Control(kKGTabs), TCM_SETCURSEL, static_cast<WPARAM>(tab - 1), 0);
}

bool FormWindow::FocusInPage() const {
    const auto page = static_cast<std::size_t>(SelectedTab() - 1);
    return page < m_pages.size() && IsChild(m_pages[page].Handle(), GetFocus()) != FALSE;
}

void FormWindow::FocusPage() {
    SetFocus(GetNextDlgTabItem(Handle(), Control(kKGTabs), FALSE));
}

void FormWindow::ShowFrame(int frame, bool show) {
    if (frame >= 0 && frame < kPages) {
        m_pages[static_cast<std::size_t>(frame)].Show(show);
    }
}

// The tree's mouse and keys.

void TreeMenuKeys::Attach(HWND tree, HWND form, int margin) {
    m_form = form;
    m_margin = margin;
    Subclass(tree);
}

std::optional<LRESULT> TreeMenuKeys::OnControlMessage(UINT message, WPARAM /*wParam*/,
                                                      LPARAM lParam) noexcept {
    if (message == WM_RBUTTONDOWN) {
        // The control's own handling would wait for the button and mark the node under the pointer.
        Tell({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
        return 0;
    }
    if (message == WM_CONTEXTMENU) {
        if (lParam == -1) {  // the menu key
            Tell(BelowSelectedNode());
        }
        return 0;
    }
    return std::nullopt;
}

POINT TreeMenuKeys::BelowSelectedNode() const noexcept {
    RECT node = {};
    const auto item = reinterpret_cast<HTREEITEM>(Original(TVM_GETNEXTITEM, TVGN_CARET, 0));
    if (item != nullptr) {
        std::memcpy(&node, &item, sizeof(void*));  // how the message wants to be asked
        if (Original(TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&node)) != FALSE) {
            return {node.left, node.bottom};
        }
    }
    return {m_margin, m_margin};
}

void TreeMenuKeys::Tell(POINT inTree) const noexcept {
    ClientToScreen(Subclassed(), &inTree);
    PostMessageA(m_form, kTreeMenuMessage, 0, MAKELPARAM(inTree.x, inTree.y));
}

}  // namespace kestrelguard
