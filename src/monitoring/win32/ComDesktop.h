#pragma once

#include <windows.h>

#include <exdisp.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "controls/win32/TimerControl.h"
#include "controls/win32/WindowBase.h"
#include "monitoring/WatchedDesktop.h"
#include "monitoring/win32/IBrowser.h"
#include "runtime/win32/Com.h"

namespace kestrelguard {

/// Makes the object that lists the desktop's browser windows. Throws RunTimeError.
using ShellWindowsMaker = std::function<ComPtr<IShellWindows>()>;

/// The system's own.
ComPtr<IShellWindows> CreateShellWindows();

/// A browser window, held by its automation object.
class ComWindow final : public DesktopWindow {
 public:
    explicit ComWindow(ComPtr<IWebBrowser2> browser);
    ~ComWindow() override;
    ComWindow(const ComWindow&) = delete;
    ComWindow& operator=(const ComWindow&) = delete;

    std::int32_t Handle() override;
    const void* Identity() const override { return m_identity.Get(); }
    bool Answers() override;

    /// The object of a window that a ComDesktop has made.
    static const ComPtr<IWebBrowser2>& BrowserOf(const DesktopWindowPtr& window) {
        return static_cast<const ComWindow&>(*window).m_browser;
    }

 private:
    const ComPtr<IWebBrowser2> m_browser;
    const ComPtr<IUnknown> m_identity;
    /// Once it was read, through this or through another one for the same window.
    HWND m_frame = nullptr;
};

/// The desktop's windows through COM. Their events go to a receiver.
class ComDesktop final : public WatchedDesktop {
 public:
    /// Nothing is listened to after the receiver's end.
    ComDesktop(ShellWindowsMaker makeShellWindows, IBrowser& receiver)
        : m_makeShellWindows(std::move(makeShellWindows)), m_receiver(receiver) {}

    std::unique_ptr<ShellConnection> ConnectShell(std::shared_ptr<ShellListener> listener) override;
    std::unique_ptr<WindowSink> Listen(const DesktopWindowPtr& window) override;
    void Park(const DesktopWindowPtr& window, std::shared_ptr<WindowSink> sink) noexcept override;
    DesktopWindowPtr Parked(const void* identity) const override;
    void ReleaseAnswering() noexcept override;
    void RemindLater(std::shared_ptr<ShellListener> listener) noexcept override;

 private:
    /// An invisible window with a timer.
    class Reminder final : public WindowBase {
     public:
        /// Throws RunTimeError when the system refuses the window.
        Reminder();
        void Set(std::shared_ptr<ShellListener> listener);

     private:
        std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

        std::shared_ptr<ShellListener> m_listener;
        TimerControl m_timer;
    };

    const ShellWindowsMaker m_makeShellWindows;
    IBrowser& m_receiver;
    /// Made when it is first needed.
    std::unique_ptr<Reminder> m_reminder;
};

}  // namespace kestrelguard
