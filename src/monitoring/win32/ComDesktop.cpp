#include "monitoring/win32/ComDesktop.h"

#include <exdispid.h>

#include <array>

#include "monitoring/win32/EventSink.h"
#include "monitoring/win32/cBrowser.h"
#include "runtime/win32/ComError.h"

namespace kestrelguard {

namespace {

/// What the shell says, on its way to a listener.
class ShellEvents final : public ComObject<ShellEvents, IUnknown> {
 public:
    explicit ShellEvents(std::shared_ptr<ShellListener> listener) : m_listener(std::move(listener)) {}

    void* Find(REFIID iid) noexcept { return iid == IID_IUnknown ? static_cast<IUnknown*>(this) : nullptr; }

    static const std::array<EventRow<ShellEvents>, 2> kEvents;

 private:
    // The windows' cookies mean nothing.
    void m_oShell_WindowRegistered(LONG /*lCookie*/) { m_listener->WindowRegistered(); }
    void m_oShell_WindowRevoked(LONG /*lCookie*/) { m_listener->WindowRevoked(); }

    const std::shared_ptr<ShellListener> m_listener;
};

constexpr std::array<EventRow<ShellEvents>, 2> ShellEvents::kEvents = {
    Row<ShellEvents, &ShellEvents::m_oShell_WindowRegistered>(200),
    Row<ShellEvents, &ShellEvents::m_oShell_WindowRevoked>(201),
};

class ComWalk final : public WindowWalk {
 public:
    explicit ComWalk(IShellWindows& shell) {
        ComPtr<IUnknown> windows;
        CallOut([&] { return shell._NewEnum(windows.Put()); });
        m_windows = Query<IEnumVARIANT>(windows.Get());
        if (!m_windows) {
            throw RunTimeError(RunTimeError::kObjectNotSet);
        }
    }
    bool Next() override {
        ULONG fetched = 0;
        HRESULT result = S_OK;
        CallOut([&] { return result = m_windows->Next(1, m_entry.Put(), &fetched); });
        return result == S_OK && fetched == 1;
    }
    DesktopWindowPtr Window() override {
        const VARIANT& value = m_entry.Get();
        if (value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) {
            throw RunTimeError(RunTimeError::kTypeMismatch);
        }
        SetErrorInfo(0, nullptr);
        auto browser = Query<IWebBrowser2>(value.punkVal);
        return browser ? std::make_shared<ComWindow>(std::move(browser)) : nullptr;
    }

 private:
    ComPtr<IEnumVARIANT> m_windows;
    Variant m_entry;
};

class ComShell final : public ShellConnection {
 public:
    ComShell(ComPtr<IShellWindows> shell, std::shared_ptr<ShellListener> listener)
        : m_oShell(std::move(shell)),
          m_events(MakeCom<ShellEvents>(std::move(listener))),
          m_sink(MakeCom<EventSink<ShellEvents>>(*m_events, DIID_DShellWindowsEvents, ShellEvents::kEvents)) {
        static_assert(ShellEvents::kEvents[0].id == DISPID_WINDOWREGISTERED &&
                      ShellEvents::kEvents[1].id == DISPID_WINDOWREVOKED);
        try {
            SetErrorInfo(0, nullptr);
            m_connection = Advise(m_oShell.Get(), DIID_DShellWindowsEvents, m_sink.Get());
        } catch (...) {
            m_sink->Detach();
            throw;
        }
    }
    ~ComShell() override { m_sink->Detach(); }

    std::unique_ptr<WindowWalk> Walk() override {
        // A call may bring about the end of this connection.
        const ComPtr<IShellWindows> shell = m_oShell;
        return std::make_unique<ComWalk>(*shell);
    }

 private:
    const ComPtr<IShellWindows> m_oShell;
    const ComPtr<ShellEvents> m_events;
    const ComPtr<EventSink<ShellEvents>> m_sink;
    Advise m_connection;
};

class ComSink final : public WindowSink {
 public:
    ComSink(IBrowser& receiver, const ComPtr<IWebBrowser2>& browser) {
        m_browser->SetInterFace(ComPtr<IBrowser>(&receiver));
        m_browser->SetBrowser(browser);
    }

 private:
    const ComPtr<cBrowser> m_browser = MakeCom<cBrowser>();
};

}  // namespace

ComPtr<IShellWindows> CreateShellWindows() {
    ComPtr<IShellWindows> shell;
    CallOut([&] {
        return CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                __uuidof(IShellWindows), reinterpret_cast<void**>(shell.Put()));
    });
    return shell;
}

std::int32_t ComWindow::Handle() {
    SHANDLE_PTR handle = 0;
    CallOut([&] { return m_browser->get_HWND(&handle); });
    return static_cast<std::int32_t>(handle);
}

std::unique_ptr<ShellConnection> ComDesktop::ConnectShell(std::shared_ptr<ShellListener> listener) {
    auto shell = m_makeShellWindows();
    return std::make_unique<ComShell>(std::move(shell), std::move(listener));
}

std::unique_ptr<WindowSink> ComDesktop::Listen(const DesktopWindowPtr& window) {
    return window ? std::make_unique<ComSink>(m_receiver, ComWindow::BrowserOf(window)) : nullptr;
}

}  // namespace kestrelguard
