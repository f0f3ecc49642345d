#pragma once

#include <windows.h>

#include <memory>
#include <optional>

#include "app/ProgramLife.h"
#include "app/win32/FormWindow.h"
#include "controls/win32/WindowBase.h"

namespace kestrelguard {

struct Rooms;

/// The form Kestrelguard: the windows, the subsystems behind them and how they are tied together.
class Kestrelguard final : FormWindow {
 public:
    /// Creates every window and room; nothing is read, shown or watched yet.
    Kestrelguard();
    ~Kestrelguard() override;

    /// The start of the program, in its order. What it throws ends the program; told to close meanwhile, it
    /// ends the program itself.
    void Form_Load() { m_life.Start(); }

    /// A call to a browser does not come back: goes on while it is under way.
    void GoOn();

    using WindowBase::Handle;

 private:
    static const Command<Kestrelguard> kCommands[];

    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnCommand(int id, int notification) override;
    bool TurnPage(int step) override;
    /// The messages that handlers hear while the program runs.
    std::optional<LRESULT> OnFormMessage(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> OnNotify(const NMHDR& notification);
    void mnuHelp_Click();

    /// `Form_Load` and `Form_Unload`, step by step.
    ProgramLife::Steps StartSteps();
    ProgramLife::Steps EndSteps();
    void SettingsFile(const wchar_t* mode);
    /// Shows the window as the settings want it: in the tray, or on the screen.
    void FirstShow();

    // Before the rooms: their making sends messages, which ask for it.
    ProgramLife m_life;
    /// What would be written before would be no settings of the user's.
    bool m_settingsRead = false;
    UINT m_taskbarCreated = 0;
    HINSTANCE m_helpInstance = nullptr;
    std::unique_ptr<Rooms> m_rooms;
};

}  // namespace kestrelguard
