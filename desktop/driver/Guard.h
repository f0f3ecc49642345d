#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desktop/driver/Controls.h"
#include "desktop/driver/Files.h"
#include "desktop/driver/Hook.h"
#include "desktop/driver/Process.h"
#include "desktop/driver/Tray.h"

namespace kestrelguard::testing {

/// A folder with the unchanged kestrelguard.exe and its files in it, as after an installation.
class GuardFolder {
 public:
    /// Contents of KestrelS.CFG and KestrelC.CFG, byte for byte; without one there is no such file. `exe` is
    /// the program to copy: the one beside the running program when empty. Throws std::runtime_error when it
    /// cannot be copied.
    explicit GuardFolder(std::optional<std::string> settings = {}, std::optional<std::string> cookies = {},
                         const std::wstring& exe = {});

    const std::wstring& Path() const { return m_folder.Path(); }
    std::wstring Exe() const { return File(L"kestrelguard.exe"); }
    std::wstring File(const wchar_t* name) const { return Path() + L"\\" + name; }
    /// Puts a copy of a file beside the exe.
    void Add(const std::wstring& path) const;

    std::string Settings() const { return ReadBytes(File(L"KestrelS.CFG")); }
    std::string Cookies() const { return ReadBytes(File(L"KestrelC.CFG")); }
    /// The line of the settings file that begins with the key and a separator, without its line end; empty
    /// when there is none.
    std::string SettingsLine(const std::string& key) const;

 private:
    TemporaryFolder m_folder;
};

/// The program under test, running. Ended with this.
class Guard {
 public:
    /// What is done inside before anything has run there; false when it cannot be done.
    using Preparation = std::function<bool(const Hook&)>;

    /// Starts it; see WaitReady. Throws std::runtime_error when it does not start or cannot be prepared.
    explicit Guard(const GuardFolder& folder, const Preparation& prepare = {});

    Process& Program() { return m_program; }
    /// Waits until it has started: its window is on the screen or in the tray, and answers. False after the
    /// limit (milliseconds), or when it has ended instead.
    bool WaitReady(DWORD limit = kLimit);
    /// The main window; null before WaitReady.
    HWND Window() const { return m_window; }
    const Hook& Inside();
    /// Waits until it has worked off what was posted to it before, which a question that is sent overtakes.
    /// False after the limit (milliseconds).
    bool WaitPosted(DWORD limit = kLimit) const;

    // Its controls, by what a person sees.
    HWND Find(const wchar_t* type, const std::wstring& text) const {
        return FindInside(m_window, type, text.c_str());
    }
    HWND Button(const std::wstring& caption) const { return Find(L"Button", caption); }
    HWND Tree() const { return FindInside(m_window, L"SysTreeView32"); }
    HWND Tabs() const { return FindInside(m_window, L"SysTabControl32"); }
    HWND SiteList() const { return FindInside(m_window, L"ListBox"); }
    HWND UnitDropDown() const { return FindInside(m_window, L"ComboBox"); }
    /// The edit fields in the order of creation: new site, title keywords, wash interval.
    std::vector<HWND> Edits() const;
    /// The three "Check1" boxes from top to bottom: cache, history, cookies.
    std::vector<HWND> WashBoxes() const;
    HWND Apply() const { return Button(L"Apply"); }

    /// The popup mode that is selected: 0 prevent, 1 prompt, 2 allow; -1 when none or several are.
    int Mode() const;
    /// Clicks the option button of a mode and waits until it is selected.
    bool SetMode(int mode) const;
    static const wchar_t* ModeCaption(int mode);
    /// The numbers of stopped windows as the labels show them.
    std::wstring Today() const { return TextOf(LabelRightOf(m_window, L"New Browsers Stopped Today:")); }
    std::wstring Total() const { return TextOf(LabelRightOf(m_window, L"New Browsers Stopped Total:")); }
    /// The texts of the browser tree, indented.
    std::vector<std::wstring> TreeLines() const { return TreeTexts(Tree()); }

    // Its window and its icon.
    bool Minimised() const { return IsIconic(m_window) != FALSE; }
    /// Whether nothing is to be seen of it but its icon.
    bool InTray() const { return Minimised() && !IsWindowVisible(m_window); }
    /// Minimises it as its title bar's button does, and waits until it is in the tray.
    bool Minimise();
    /// Brings it back by a click on its icon, and waits.
    bool Restore();
    /// The icon in the notification area; none after the limit (milliseconds).
    std::optional<TrayIcon> Icon(DWORD limit = kLimit) const;
    /// The tip as the notification area has it, after the pointer was moved over the icon.
    std::wstring Tip();
    /// Opens the tray menu by a right click on the icon. Close it with Inside().CloseMenu() or choose an
    /// entry.
    OpenMenu OpenTrayMenu();
    /// Opens the tray menu and chooses an entry by its caption.
    bool ChooseFromTrayMenu(const std::wstring& caption);

    // Its end.
    /// Chooses "Exit" in the tray menu and waits for its end.
    bool ExitByMenu(DWORD limit = kLimit);
    /// Closes its window and waits for its end.
    bool Close(DWORD limit = kLimit);

 private:
    Process m_program;
    HWND m_window = nullptr;
    std::unique_ptr<Hook> m_hook;
};

/// Keys that are held down, for every process of the desktop, as long as this lives. The program may be told
/// what was so a moment ago (Wine keeps the state of the keys for each thread), so this comes back only when
/// the program sees them held, and goes only when it sees them released.
class HeldKeys {
 public:
    /// Throws std::runtime_error when the program, which outlives this, does not come to see them.
    HeldKeys(Guard& guard, std::vector<BYTE> keys);
    ~HeldKeys();
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;

 private:
    bool AllSeen(bool held) const;

    Guard& m_guard;
    const std::vector<BYTE> m_keys;
    std::vector<std::unique_ptr<HeldKey>> m_pressed;
};

}  // namespace kestrelguard::testing
