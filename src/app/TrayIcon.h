#pragma once

#include <cstdint>

#include "app/FixedText64.h"
#include "controls/Controls.h"
#include "popup/PopupState.h"

namespace kestrelguard {

/// The shell's notification area, called with the icon's record; the record differs in its tip alone.
/// Results are not looked at: a failed addition leaves no icon.
class ShellTray {
 public:
    virtual ~ShellTray() = default;
    virtual void Add(const FixedText64& tip) = 0;
    virtual void Modify(const FixedText64& tip) = 0;
    virtual void Delete() = 0;
};

enum class WindowState { Normal = 0, Minimised = 1, Maximised = 2 };

/// The unit in which a window reports the place of the mouse.
struct MouseScale {
    bool pixels = true;
    /// For a window that does not measure in pixels.
    double twipsPerPixelX = 15;
};

/// The main window, as far as its icon works on it.
class TrayWindow {
 public:
    virtual ~TrayWindow() = default;
    virtual WindowState State() const = 0;
    virtual void SetState(WindowState state) = 0;
    virtual void Hide() = 0;
    virtual void Show() = 0;
    /// Without this the menu would stay open when the user clicks elsewhere.
    virtual void SetForeground() = 0;
    virtual MouseScale Scale() const { return {}; }
};

/// The tray menu `mnuM`.
class TrayPopup {
 public:
    virtual ~TrayPopup() = default;
    /// Opens the menu at the mouse; returns when it has closed.
    virtual void PopUp() = 0;
};

/// The icon that stands for the minimised main window: its tip, and what a click on it does.
class TrayIcon final : public TrayTip {
 public:
    /// What the icon works on; all of it outlives the icon.
    struct Parts {
        const PopupState& state;
        ShellTray& shell;
        TrayWindow& window;
        TrayPopup& mnuM;
        Caption& mnuPOPCaption;
        CheckMark& mnuPOP;
    };

    explicit TrayIcon(const Parts& parts) : m_parts(parts) {}

    /// At start: the tip of the popup mode; in Allow mode `mnuPOP` loses its check mark.
    void FillTip();

    void WriteTip(const std::wstring& text) override { m_trayTipText.Store(text); }
    void UpdateSZTIP() override;

    /// The window was minimised, restored or sized: the icon is there exactly while it is minimised.
    void Form_Resize();

    /// Every event of the icon arrives as a mouse move with the message's number as its `x`.
    /// Throws kOverflow when that is no 32-bit number.
    void Form_MouseMove(double x);

    void mnuShow_Click();

    /// The shell's task bar was made anew: it has forgotten the icon.
    void TaskbarCreated();

    /// At the end of the program.
    void Delete() { m_parts.shell.Delete(); }

    /// `trayTipText`, the record's tip.
    const FixedText64& Tip() const noexcept { return m_trayTipText; }

 private:
    void OpenMenu();

    Parts m_parts;
    FixedText64 m_trayTipText;
    FixedText64 m_lastTip;
};

}  // namespace kestrelguard
