#pragma once

#include <windows.h>

#include <commctrl.h>

#include <array>
#include <optional>
#include <vector>

#include "app/win32/ControlIds.h"
#include "controls/win32/ToolTips.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

struct ImageListTraits {
    using Type = HIMAGELIST;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type object) noexcept { ImageList_Destroy(object); }
};
using ImageList = Owner<ImageListTraits>;

/// Who handles the form's messages.
class FormMessages {
 public:
    virtual ~FormMessages() = default;
    /// Answers the message's result, or nothing for the default handling. May throw: the error is shown to
    /// the user and the message counts as handled.
    virtual std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;
    /// Tells the user about an error that left OnMessage.
    virtual void OnError(const class RunTimeError& error) = 0;
};

/// The windows of the form Kestrelguard: the main window, its three pages, all controls and both menus, laid
/// out and with their default texts, hidden. Decides nothing.
class FormWindow {
 public:
    static constexpr int kPages = 3;

    /// Creates every window. Throws RunTimeError when the system refuses one.
    explicit FormWindow(FormMessages& messages);
    ~FormWindow();
    FormWindow(const FormWindow&) = delete;
    FormWindow& operator=(const FormWindow&) = delete;

    HWND Handle() const { return m_form; }
    HWND Control(ControlId id) const { return m_controls[static_cast<std::size_t>(id)]; }
    HMENU TrayMenu() const { return m_trayMenu.Get(); }
    HMENU BrowserMenu() const { return m_browserMenu.Get(); }
    HICON FormIcon() const { return m_icon; }
    ToolTips& Tips() { return m_tips; }

    /// `KG_IMGL`: 1 a detail, 2 the root, 3 a browser window.
    ImageList LoadTreeImages() const;

    /// Shows or hides one page, counted from 0.
    void ShowPage(int page, bool show);
    /// The selected tab, counted from 0.
    int SelectedTab() const;

    /// The window has gone: nothing may be done with it any more.
    bool Destroyed() const { return m_form == nullptr; }
    void Destroy();

 private:
    static LRESULT CALLBACK FormProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    static LRESULT CALLBACK PageProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    static LRESULT CALLBACK TreeProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> OnLook(UINT message, WPARAM wParam, LPARAM lParam);
    void CreateFonts();
    void CreateControls();
    void CreateMenus();
    void LoadPictures();
    void FillTabs();
    void FillLists();
    int Scaled(int at96Dpi) const { return MulDiv(at96Dpi, m_dpi, 96); }

    FormMessages& m_messages;
    HWND m_form = nullptr;
    std::array<HWND, 200> m_controls = {};
    HWND m_lastFocus = nullptr;
    WNDPROC m_treeProcedure = nullptr;
    HICON m_icon = nullptr;
    HBRUSH m_pageBrush = nullptr;
    int m_dpi = 96;
    Font m_font;
    Font m_boldFont;
    Menu m_trayMenu;
    Menu m_browserMenu;
    std::vector<kestrelguard::Icon> m_pictures;
    ToolTips m_tips;
};

/// Sent by the tree to the form when the right button goes down over it or its menu key is pressed:
/// the low word of lParam is x, the high word y, on the screen.
inline constexpr UINT kTreeMenuMessage = WM_APP + 1;

}  // namespace kestrelguard
