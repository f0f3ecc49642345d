#include "app/win32/FormMenus.h"

#include "app/Texts.h"
#include "app/win32/ControlIds.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

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

}  // namespace

void PopUpMenu::PopUpAt(POINT at) const {
    TrackPopupMenu(m_menu.Get(), TPM_LEFTALIGN | TPM_LEFTBUTTON, at.x, at.y, 0, m_owner, nullptr);
    // Without a further message the menu of a hidden window would not close on the second try.
    PostMessageA(m_owner, WM_NULL, 0, 0);
}

TrayMenu::TrayMenu(HWND owner) : m_menu(owner, CreateMenuFrom(kTrayMenuRows)) {
    CheckMenuItem(m_menu.Handle(), kMnuPOP, MF_BYCOMMAND | MF_CHECKED);
}

void TrayMenu::PopUp() {
    POINT mouse = {};
    GetCursorPos(&mouse);
    m_menu.PopUpAt(mouse);
}

TreeMenu::TreeMenu(HWND owner) : m_menu(owner, CreateMenuFrom(kBrowserMenuRows)) {
    SetMenuDefaultItem(m_menu.Handle(), kMnuSB, FALSE);
}

}  // namespace kestrelguard
