#include "monitoring/win32/ComDesktop.h"

#include <exdispid.h>

#include <array>

#include "monitoring/win32/Answering.h"
#include "monitoring/win32/EventSink.h"
#include "monitoring/win32/cBrowser.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/win32/ComError.h"

namespace kestrelguard {

namespace {

/// How long a new window that does not answer is left alone, in milliseconds.
constexpr UINT kRemindAfter = 2000;

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
        const CallUnderWay underWay(nullptr);
        ComPtr<IUnknown> windows;
        CallOut([&] { return shell._NewEnum(windows.Put()); });
        m_windows = Query<IEnumVARIANT>(windows.Get());
        if (!m_windows) {
            throw RunTimeError(RunTimeError::kObjectNotSet);
        }
    }
    bool Next() override {
        const CallUnderWay underWay(nullptr);
        ULONG fetched = 0;
        HRESULT result = S_OK;
        CallOut([&] { return result = m_windows->Next(1, m_entry.Put(), &fetched); });
        return result == S_OK && fetched == 1;
    }
    const void* Identity() override {
        return HasObject() ? IdentityOf(m_entry.Get().punkVal).Get() : nullptr;
    }
    bool Answers() override {
        if (!HasObject()) {
            return true;
        }
        const ComPtr<IUnknown> identity = IdentityOf(m_entry.Get().punkVal);
        if (!IsSilent(identity.Get()) && m_servers.Answer(identity.Get())) {
            return true;
        }
        // Letting go of the entry would be a call.
        Keep(identity, nullptr, nullptr);
        return false;
    }
    DesktopWindowPtr Window() override {
        const VARIANT& value = m_entry.Get();
        if (!IsObject()) {
            throw RunTimeError(RunTimeError::kTypeMismatch);
        }
        SetErrorInfo(0, nullptr);
        ComPtr<IWebBrowser2> browser;
        CallWindow(value.punkVal, [&] { browser = Query<IWebBrowser2>(value.punkVal); });
        return browser ? std::make_shared<ComWindow>(std::move(browser)) : nullptr;
    }

 private:
    bool IsObject() const { return m_entry.Get().vt == VT_DISPATCH || m_entry.Get().vt == VT_UNKNOWN; }
    bool HasObject() const { return IsObject() && m_entry.Get().punkVal != nullptr; }

    ComPtr<IEnumVARIANT> m_windows;
    Variant m_entry;
    Servers m_servers;
};

class ComShell final : public ShellConnection {
 public:
    ComShell(ComPtr<IShellWindows> shell, std::shared_ptr<ShellListener> listener)
        : m_oShell(std::move(shell)),
          m_events(MakeCom<ShellEvents>(std::move(listener))),
          m_sink(MakeCom<EventSink<ShellEvents>>(*m_events, DIID_DShellWindowsEvents, ShellEvents::kEvents)) {
        static_assert(ShellEvents::kEvents[0].id == DISPID_WINDOWREGISTERED &&
                      ShellEvents::kEvents[1].id == DISPID_WINDOWREVOKED);
        const CallUnderWay underWay(nullptr);
        try {
            SetErrorInfo(0, nullptr);
            m_connection = Advise(m_oShell.Get(), DIID_DShellWindowsEvents, m_sink.Get());
        } catch (...) {
            m_sink->Detach();
            throw;
        }
    }
    ~ComShell() override {
        const CallUnderWay underWay(nullptr);
        m_sink->Detach();
        m_connection.Reset();
    }

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
    ComSink(IBrowser& receiver, const ComPtr<IWebBrowser2>& browser) : m_identity(IdentityOf(browser.Get())) {
        m_browser->SetInterFace(ComPtr<IBrowser>(&receiver));
        m_browser->SetBrowser(browser);
    }
    ~ComSink() override {
        const CallUnderWay underWay(m_identity.Get());
        m_browser->SetBrowser(nullptr);
    }
    /// No more events, and no call either: the other side's hold on the sink is cut.
    void CutOff() noexcept { m_browser->CutOff(); }

 private:
    const ComPtr<IUnknown> m_identity;
    const ComPtr<cBrowser> m_browser = MakeCom<cBrowser>();
};

}  // namespace

ComPtr<IShellWindows> CreateShellWindows() {
    const CallUnderWay underWay(nullptr);
    ComPtr<IShellWindows> shell;
    CallOut([&] {
        return CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                __uuidof(IShellWindows), reinterpret_cast<void**>(shell.Put()));
    });
    return shell;
}

ComWindow::ComWindow(ComPtr<IWebBrowser2> browser)
    : m_browser(std::move(browser)), m_identity(IdentityOf(m_browser.Get())) {
    if (const HWND frame = FrameOf(m_browser.Get())) {
        RememberFrame(Identity(), frame);
        m_frame = frame;
    }
}

std::int32_t ComWindow::Handle() {
    SHANDLE_PTR handle = 0;
    try {
        CallWindow(m_identity.Get(), [&] { CallOut([&] { return m_browser->get_HWND(&handle); }); });
    } catch (const RunTimeError& error) {
        if (error.Number() != RPC_E_CALL_CANCELED || m_frame == nullptr) {
            throw;
        }
        return static_cast<std::int32_t>(reinterpret_cast<LONG_PTR>(m_frame));
    }
    if (m_frame != nullptr) {
        ForgetFrame(Identity());
    }
    m_frame = reinterpret_cast<HWND>(handle);
    if (m_frame != nullptr) {
        RememberFrame(Identity(), m_frame);
    }
    return static_cast<std::int32_t>(handle);
}

ComWindow::~ComWindow() {
    if (m_frame != nullptr) {
        ForgetFrame(Identity());
    }
}

bool ComWindow::Answers() {
    return WindowAnswers(m_identity.Get(), m_frame);
}

std::unique_ptr<ShellConnection> ComDesktop::ConnectShell(std::shared_ptr<ShellListener> listener) {
    auto shell = m_makeShellWindows();
    return std::make_unique<ComShell>(std::move(shell), std::move(listener));
}

void ComDesktop::Park(const DesktopWindowPtr& window, std::shared_ptr<WindowSink> sink) noexcept {
    if (sink) {
        static_cast<ComSink&>(*sink).CutOff();
    }
    Keep(IdentityOf(ComWindow::BrowserOf(window).Get()), window, std::move(sink));
}

DesktopWindowPtr ComDesktop::Parked(const void* identity) const {
    return KeptWindow(identity);
}

void ComDesktop::ReleaseAnswering() noexcept {
    kestrelguard::ReleaseAnswering();
}

void ComDesktop::RemindLater(std::shared_ptr<ShellListener> listener) noexcept {
    // Without it the window is asked with the next announcement.
    ErrorsIgnored([&] {
        if (!m_reminder) {
            m_reminder = std::make_unique<Reminder>();
        }
        m_reminder->Set(std::move(listener));
    });
}

ComDesktop::Reminder::Reminder() : m_timer(1, kRemindAfter) {
    Create(WindowKind{.name = "Kestrelguard.Reminder"}, WindowFrame{});
    m_timer.Attach(Handle());
}

void ComDesktop::Reminder::Set(std::shared_ptr<ShellListener> listener) {
    m_listener = std::move(listener);
    m_timer.SetEnabled(true);
}

std::optional<LRESULT> ComDesktop::Reminder::OnMessage(UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    if (message != WM_TIMER) {
        return std::nullopt;
    }
    m_timer.SetEnabled(false);
    if (const auto listener = std::exchange(m_listener, nullptr)) {
        // It may end the watching, and with it this object. Nobody waits for an answer.
        ErrorsIgnored([&] { listener->Reminded(); });
    }
    return 0;
}

std::unique_ptr<WindowSink> ComDesktop::Listen(const DesktopWindowPtr& window) {
    if (!window) {
        return nullptr;
    }
    // An earlier sink on it that was kept would be a second one.
    Release(window->Identity());
    std::unique_ptr<WindowSink> sink;
    const ComPtr<IWebBrowser2>& browser = ComWindow::BrowserOf(window);
    CallWindow(browser.Get(), [&] { sink = std::make_unique<ComSink>(m_receiver, browser); });
    return sink;
}

}  // namespace kestrelguard
