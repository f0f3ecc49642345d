#pragma once

#include <windows.h>

#include "controls/win32/PlatformMessageLoop.h"
#include "controls/win32/WindowBase.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// One control of a form: where it lies in dots, and how it looks.
struct ControlFrame {
    int id;
    const char* windowClass;
    const wchar_t* text;
    DWORD style;
    RECT place = {};
};

/// A window with controls, handled by the keyboard like a dialog: knows the screen's resolution, makes
/// controls in the program's font, remembers where the focus was and which button Enter stands for.
class FormBase : public WindowBase, DialogKeys {
 protected:
    explicit FormBase(ErrorReport report);
    ~FormBase() override;

    /// Dots an inch of the screen.
    int Dpi() const noexcept { return m_dpi; }
    /// A length that is given in dots of a screen with 96 of them an inch.
    int Scaled(int at96Dpi) const { return MulDiv(at96Dpi, m_dpi, 96); }
    Font ArialFont(int points, int weight) const;

    /// The form itself, from which on Tab, arrows, Enter and Esc work in it. Throws kOutOfMemory.
    void CreateForm(const WindowKind& kind, const WindowFrame& frame);
    /// Moves a form that has just been made so that its upper left corner, and as much of the rest as there
    /// is room for, lies on the screen.
    void KeepTitleBarOnScreen() const;
    /// The screen without the task bar.
    static RECT WorkArea();
    /// A visible control of the form, or of a page of it. Throws kOutOfMemory.
    HWND CreateControl(const ControlFrame& frame, HWND parent, HFONT font) const;

    /// Sends commands to OnCommand and handles the focus. Forms with more to say call it for the rest.
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

    /// A control's or menu item's notification.
    virtual void OnCommand(int id, int notification);
    /// The id of the button that Enter presses while `focus`, which is no button itself, has the focus; 0
    /// when there is none.
    virtual int DefaultButton(HWND focus) const = 0;
    /// Where the focus goes when there is nowhere to go back to.
    virtual HWND FirstFocus() const = 0;
    /// Ctrl+Tab and its kin: 1 for the next page, -1 for the one before. Answers whether there are pages.
    virtual bool TurnPage(int step);

    /// Destroys the window; nothing when it has gone.
    void DestroyForm();

 private:
    // DialogKeys
    bool KeyDown(WPARAM key) override;
    void FocusMoved(HWND focus) override;

    int ButtonForEnter(HWND focus) const;
    void RememberFocus();
    void GiveFocusBack() const;

    int m_dpi;
    HWND m_lastFocus = nullptr;
    /// The button that is drawn as the one that Enter presses.
    HWND m_drawnForEnter = nullptr;
    bool m_shown = false;
};

}  // namespace kestrelguard
