#pragma once

#include <windows.h>

#include "app/TrayIcon.h"
#include "browsertree/BrowserTree.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// A pop-up menu; its commands go to its owner.
class PopUpMenu {
 public:
    PopUpMenu(HWND owner, HMENU menu) : m_owner(owner), m_menu(menu) {}
    HMENU Handle() const noexcept { return m_menu.Get(); }
    /// Opens the menu there on the screen; returns when it has closed.
    void PopUpAt(POINT at) const;

 private:
    HWND m_owner;
    Menu m_menu;
};

/// `mnuM`, the menu of the tray icon.
class TrayMenu final : public TrayPopup {
 public:
    explicit TrayMenu(HWND owner);
    HMENU Handle() const noexcept { return m_menu.Handle(); }
    void PopUp() override;

 private:
    PopUpMenu m_menu;
};

/// `bMnu`, the menu of the tree: opens where the mouse went down, or at the selected node.
class TreeMenu final : public BrowserMenu {
 public:
    explicit TreeMenu(HWND owner);
    /// Where it opens the next time, on the screen.
    POINT at = {};
    void PopUp() override { m_menu.PopUpAt(at); }

 private:
    PopUpMenu m_menu;
};

}  // namespace kestrelguard
