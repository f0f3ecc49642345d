#pragma once

#include <windows.h>

#include <exdisp.h>

#include <string>

#include "desktop/BrowserObject.h"

namespace kestrelguard::desktop {

/// How a browser in a process of its own comes into being.
struct RemoteOptions {
    std::wstring url = L"http://www.home.example/";
    std::wstring title = L"Home";
    /// With address bar, page and status bar, and visible.
    bool dressed = false;
    /// Whether it is announced with WindowRegistered.
    bool announced = true;
};

/// A browser in a process of its own, which registered itself with the window list as real ones do. Can be
/// made to hang: as a whole, or in the reads of one property alone.
///
/// While it is stopped, `Stop`, `GoOn` and `Kill` are all that may be asked of it: everything else would wait
/// with it.
class RemoteBrowser {
 public:
    RemoteBrowser(Handle process, ComPtr<IWebBrowser2> browser, LONG cookie);
    RemoteBrowser(const RemoteBrowser&) = delete;
    RemoteBrowser& operator=(const RemoteBrowser&) = delete;

    HWND Window() const { return m_window; }
    LONG Handle() const { return static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_window)); }
    LONG Cookie() const { return m_cookie; }
    DWORD ProcessId() const { return GetProcessId(m_process.Get()); }
    bool Running() const { return WaitForSingleObject(m_process.Get(), 0) == WAIT_TIMEOUT; }
    /// Sinks that are advised now; -1 when the process does not answer.
    int Sinks() const { return Number(L"sinks"); }
    int Reads(Property property) const { return Number(L"reads", property); }

    // Events, fired over there. `Fire...` waits for their end, `Start...` does not. Of the result `hr`,
    // `cancel` and `sinks` are told; those of a process that ends meanwhile fail.
    EventResult FireNewWindow2() { return Fire(L"NewWindow2"); }
    PendingEvent StartNewWindow2() { return Start(L"NewWindow2"); }
    EventResult FireBeforeNavigate2(const std::wstring& url) { return Fire(L"BeforeNavigate2 " + url); }
    /// Sets the address too.
    EventResult FireNavigateComplete2(const std::wstring& url) { return Fire(L"NavigateComplete2 " + url); }
    EventResult FireDocumentComplete(const std::wstring& url) { return Fire(L"DocumentComplete " + url); }
    /// Sets the title too.
    EventResult FireTitleChange(const std::wstring& title) { return Fire(L"TitleChange " + title); }
    PendingEvent StartTitleChange(const std::wstring& title) { return Start(L"TitleChange " + title); }
    /// Loads an address as a user would; the events come later, from over there.
    void Navigate(const std::wstring& url) { Number(L"load " + url); }

    // Hanging.
    /// Suspends all threads of the process: nothing of it answers, its window neither.
    void Stop();
    void GoOn();
    bool Stopped() const { return m_stopped; }
    /// Lets no read of the property be answered, while the window and all else go on, until `LetGo` or the
    /// end.
    void Stall(Property property) { Number(L"stall", property); }
    void LetGo(Property property) { Number(L"go", property); }
    /// How many reads of the property wait.
    int Stalled(Property property) const { return Number(L"stalled", property); }
    bool WaitStalled(Property property, DWORD limit = 30000) const;

    // Its end.
    /// Ends the process from one moment to the next, stopped or not. The list keeps its entry.
    void Kill();
    /// Closes it in good order and waits for the end of its process. False after the limit (milliseconds).
    bool Close(DWORD limit = 30000);

 private:
    EventResult Fire(const std::wstring& command) const { return Start(command).Result(); }
    PendingEvent Start(const std::wstring& command) const;
    int Number(const std::wstring& command) const;
    int Number(const std::wstring& command, Property property) const {
        return Number(command + L" " + std::to_wstring(static_cast<int>(property)));
    }

    kestrelguard::Handle m_process;
    ComPtr<IWebBrowser2> m_browser;
    LONG m_cookie;
    HWND m_window = nullptr;
    bool m_stopped = false;
};

}  // namespace kestrelguard::desktop
