#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desktop/driver/Process.h"
#include "desktop/hook/HookRequest.h"

namespace kestrelguard::testing {

/// One entry of an open pop-up menu.
struct MenuEntry {
    std::wstring text;
    UINT id = 0;
    bool separator = false;
    bool checked = false;
    bool enabled = true;
    bool isDefault = false;  ///< drawn bold
};

/// A pop-up menu that is open.
struct OpenMenu {
    HWND window = nullptr;
    std::vector<MenuEntry> entries;

    explicit operator bool() const { return window != nullptr; }
    /// The captions in order; a separator is "-", a check mark shows as "* " in front.
    std::vector<std::wstring> Captions() const;
};

/// Objects that a program holds, counted from within.
struct ObjectCounts {
    int windows = 0;
    int menus = 0;
    int icons = 0;
    int gdiObjects = 0;
    int handles = 0;  ///< kernel objects; includes the two or three that counting itself needs
};

/// One call of Shell_NotifyIconA.
struct TrayCall {
    DWORD message = 0;  ///< NIM_ADD, NIM_MODIFY, NIM_DELETE
    DWORD size = 0;     ///< cbSize
    HWND window = nullptr;
    UINT id = 0;
    UINT flags = 0;
    UINT callback = 0;
    HICON icon = nullptr;
    std::string tip;        ///< up to the first NUL
    std::string tipBuffer;  ///< all 64 bytes
};

using TimerCall = hook::TimerRecord;

/// One call of ShellExecuteA. A null pointer reads "(null)".
struct ExecuteCall {
    HWND owner = nullptr;
    std::string verb;
    std::string file;
    std::string parameters;
    std::string folder;
    int show = 0;
};

/// A look inside the program under test: kg_hook.dll, loaded there by a thread of its own. The program's file
/// is not touched. Everything throws std::runtime_error when the program does not answer.
class Hook {
 public:
    /// `process` outlives this and may still be suspended: then nothing has run there yet.
    explicit Hook(const Process& process);

    /// The menu that is open; empty when none is.
    OpenMenu ReadMenu() const;
    /// Waits for one to open; empty after the limit (milliseconds).
    OpenMenu WaitMenu(DWORD limit = kLimit) const;
    /// Chooses the entry of that caption in the open menu with the keyboard. False when it has none, or the
    /// menu does not close.
    bool Choose(const std::wstring& caption, DWORD limit = kLimit) const;
    /// Leaves the open menu with Esc.
    bool CloseMenu(DWORD limit = kLimit) const;

    ObjectCounts Count() const;

    /// The font of one of the program's controls; all zero when the control uses the system's.
    LOGFONTW FontOf(HWND control) const;

    /// Whether the thread that owns the window is told that a key is held. Nothing when it does not answer.
    std::optional<bool> SeesHeld(HWND window, BYTE key) const;
    /// Whether that thread waits for something to do: it has dealt with all keys and posted messages.
    bool IsIdle(HWND window) const;

    /// Writes down all calls of Shell_NotifyIconA from now on. False when the program does not import it.
    bool RecordTray() const;
    std::vector<TrayCall> TrayCalls() const;

    /// Writes down all calls of SetTimer and ShellExecuteA from now on; the shell opens nothing any more and
    /// answers that it has no program for it. False when the program does not import both.
    bool RecordCalls() const;
    /// The first sixteen of each; throws std::runtime_error when there were more.
    std::vector<TimerCall> TimerCalls() const;
    std::vector<ExecuteCall> ExecuteCalls() const;

    /// Writes down all calls of LoadLibraryA from now on. False when the program does not import it.
    bool RecordLibraries() const;
    /// What they asked for, the first sixteen; throws std::runtime_error when there were more.
    std::vector<std::string> LibraryCalls() const;

    /// The timers of a minute that the program sets from now on do not tick: a test that sends it minutes can
    /// count them. False when the program does not import SetTimer.
    bool HoldMinutes() const;

    /// From now on the program's list boxes take no more rows than those of Windows 98, 32,767. False when it
    /// does not import what it takes to fill one.
    bool MakeListsOld() const;

 private:
    bool Call(hook::Request& request) const;
    std::unique_ptr<hook::Request> CallRecords() const;
    /// Null when the window's thread does not answer.
    std::unique_ptr<hook::Request> KeyRequest(HWND window, BYTE key) const;

    const Process& m_process;
    char* m_entry = nullptr;
};

}  // namespace kestrelguard::testing
