#include "monitoring/win32/cBrowserEvents.h"

#include <exdispid.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "runtime/ErrorsIgnored.h"
#include "runtime/Numbers.h"
#include "runtime/win32/ComError.h"

namespace kestrelguard {

namespace {

/// Sets a flag for the length of a scope.
class Flagged {
 public:
    explicit Flagged(bool& flag) noexcept : m_flag(flag) { m_flag = true; }
    ~Flagged() { m_flag = false; }
    Flagged(const Flagged&) = delete;
    Flagged& operator=(const Flagged&) = delete;

 private:
    bool& m_flag;
};

/// Runs actions that each have to run, and throws the first failure at the end.
class FirstFailure {
 public:
    template <class Action>
    void Try(Action&& action) {
        try {
            std::forward<Action>(action)();
        } catch (...) {
            if (!m_failure) {
                m_failure = std::current_exception();
            }
        }
    }
    void Rethrow() {
        if (m_failure) {
            std::rethrow_exception(m_failure);
        }
    }

 private:
    std::exception_ptr m_failure;
};

std::int32_t HandleOf(IWebBrowser2& browser) {
    SHANDLE_PTR handle = 0;
    CallOut([&] { return browser.get_HWND(&handle); });
    return static_cast<std::int32_t>(handle);
}

ComPtr<IEnumVARIANT> WindowsOf(IShellWindows& shell) {
    ComPtr<IUnknown> windows;
    CallOut([&] { return shell._NewEnum(windows.Put()); });
    auto walk = Query<IEnumVARIANT>(windows.Get());
    if (!walk) {
        throw RunTimeError(RunTimeError::kObjectNotSet);
    }
    return walk;
}

/// The next entry; false after the last.
bool Next(IEnumVARIANT& windows, Variant& entry) {
    ULONG fetched = 0;
    HRESULT result = S_OK;
    CallOut([&] { return result = windows.Next(1, entry.Put(), &fetched); });
    return result == S_OK && fetched == 1;
}

/// The entry as a browser; null for an entry without an object. Throws for an object that is no browser.
ComPtr<IWebBrowser2> AsBrowser(const Variant& entry) {
    const VARIANT& value = entry.Get();
    if (value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) {
        throw RunTimeError(RunTimeError::kTypeMismatch);
    }
    SetErrorInfo(0, nullptr);
    return Query<IWebBrowser2>(value.punkVal);
}

/// The counter after this one; the empty one counts as 0.
std::wstring Advanced(const std::wstring& counter) {
    return Decimal(CheckedAdd(RoundToInteger(LeadingNumber(counter)), 1));
}

/// What tells the objects apart; good for as long as somebody holds them.
std::unordered_set<IUnknown*> IdentitiesOf(const std::vector<ComPtr<IWebBrowser2>>& objects) {
    std::unordered_set<IUnknown*> identities;
    for (const auto& object : objects) {
        identities.insert(IdentityOf(object.Get()).Get());
    }
    return identities;
}

/// An argument on its way from an operation of IBrowser to an event: as it is ...
template <class Parameter, class Given>
class Handed {
 public:
    static_assert(std::is_same_v<Parameter, Given>);
    static bool Missing(const Given&) noexcept { return false; }
    explicit Handed(const Given& given) noexcept : m_value(given) {}
    Parameter Value() const noexcept { return m_value; }

 private:
    Parameter m_value;
};

/// ... what a pointer points to, as a reference ...
template <class Type>
class Handed<Type&, Type*> {
 public:
    static bool Missing(const Type* given) noexcept { return given == nullptr; }
    explicit Handed(Type* given) noexcept : m_value(given) {}
    Type& Value() const noexcept { return *m_value; }

 private:
    Type* m_value;
};

/// ... a reference to a copy of an object ...
template <>
class Handed<IDispatch*&, IDispatch*> {
 public:
    static bool Missing(const IDispatch*) noexcept { return false; }
    explicit Handed(IDispatch* given) noexcept : m_copy(given) {}
    IDispatch*& Value() noexcept { return m_copy.InOut(); }

 private:
    ComPtr<IDispatch> m_copy;
};

/// ... or a text's copy.
template <>
class Handed<const std::wstring&, BSTR> {
 public:
    static bool Missing(const wchar_t*) noexcept { return false; }
    explicit Handed(BSTR given) : m_text(given == nullptr ? L"" : given, SysStringLen(given)) {}
    const std::wstring& Value() const noexcept { return m_text; }

 private:
    std::wstring m_text;
};

}  // namespace

/// Handles that were read for one announcement, so that its rebuild need not ask the windows again.
class cBrowserEvents::ReadHandles {
 public:
    void Remember(IWebBrowser2& browser, std::int32_t handle) {
        auto identity = IdentityOf(&browser);
        const auto* key = identity.Get();
        m_handles.insert_or_assign(key, Known{std::move(identity), handle});
    }

    /// Throws RunTimeError when the window has to be asked and fails.
    std::int32_t Of(IWebBrowser2& browser) const {
        const auto found = m_handles.find(IdentityOf(&browser).Get());
        return found == m_handles.end() ? HandleOf(browser) : found->second.handle;
    }

 private:
    struct Known {
        ComPtr<IUnknown> keptAlive;
        std::int32_t handle;
    };

    std::unordered_map<const IUnknown*, Known> m_handles;
};

constexpr std::array<EventRow<cBrowserEvents>, 2> cBrowserEvents::kEvents = {
    Row<cBrowserEvents, &cBrowserEvents::m_oShell_WindowRegistered>(200),
    Row<cBrowserEvents, &cBrowserEvents::m_oShell_WindowRevoked>(201),
};

ComPtr<IShellWindows> CreateShellWindows() {
    ComPtr<IShellWindows> shell;
    CallOut([&] {
        return CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                __uuidof(IShellWindows), reinterpret_cast<void**>(shell.Put()));
    });
    return shell;
}

ComPtr<cBrowserEvents> cBrowserEvents::Create(ShellWindowsMaker makeShellWindows) {
    auto watcher = MakeCom<cBrowserEvents>(std::move(makeShellWindows));
    try {
        // What is announced meanwhile waits for the owner's own LoadBrowsers.
        const Flagged busy(watcher->m_busy);
        ReadHandles handles;
        watcher->Rebuild(handles);
    } catch (...) {
        watcher->Close();
        throw;
    }
    return watcher;
}

cBrowserEvents::~cBrowserEvents() {
    ReleaseSinks();
    ReleaseShell();
}

void cBrowserEvents::Connect(BrowserEvents& events) noexcept {
    if (!m_closed) {
        m_events = &events;
    }
}

void cBrowserEvents::Close() noexcept {
    const ComPtr<cBrowserEvents> self(this);
    m_closed = true;
    m_events = nullptr;
    ReleaseSinks();
    ReleaseShell();
    const ComPtr<cBrowsers> browsers = std::move(m_oBrowsers);
}

void cBrowserEvents::ReleaseShell() noexcept {
    if (m_shellSink) {
        m_shellSink->Detach();
    }
    const ComPtr<EventSink<cBrowserEvents>> sink = std::move(m_shellSink);
    const ComPtr<IShellWindows> shell = std::move(m_oShell);
    const Advise connection = std::move(m_shellConnection);
}

void cBrowserEvents::ReleaseSinks() noexcept {
    // Each sink's end lets other calls in: they find the collection empty.
    const Sinks sinks = std::exchange(m_colBrowsers, Sinks());
}

void cBrowserEvents::LoadBrowsers() {
    if (m_busy) {
        m_loadAgain = true;
        return;
    }
    const ComPtr<cBrowserEvents> self(this);
    FirstFailure failure;
    failure.Try([this] {
        const Flagged busy(m_busy);
        ReadHandles handles;
        Rebuild(handles);
    });
    failure.Try([this] { WorkOff(); });
    failure.Rethrow();
}

void cBrowserEvents::Rebuild(ReadHandles& handles, bool newcomersWanted) {
    const Windows listedBefore = ListedBrowsers();
    ReleaseShell();
    ReleaseSinks();
    if (m_closed) {
        return;
    }
    ConnectShell();
    const ComPtr<IShellWindows> shell = m_oShell;
    if (m_closed || !shell) {
        return;
    }
    if (m_oBrowsers) {
        m_oBrowsers->Clear();
    }
    WatchWindows(shell, handles);
    NoteNewcomers(listedBefore, newcomersWanted);
}

void cBrowserEvents::ConnectShell() {
    static_assert(kEvents[0].id == DISPID_WINDOWREGISTERED && kEvents[1].id == DISPID_WINDOWREVOKED);
    auto shell = m_makeShellWindows();
    if (m_closed) {
        return;
    }
    const auto sink = MakeCom<EventSink<cBrowserEvents>>(*this, DIID_DShellWindowsEvents, kEvents);
    m_oShell = shell;
    m_shellSink = sink;
    try {
        SetErrorInfo(0, nullptr);
        Advise connection(shell.Get(), DIID_DShellWindowsEvents, sink.Get());
        if (!m_closed) {
            m_shellConnection = std::move(connection);
        }
    } catch (...) {
        ReleaseShell();
        throw;
    }
}

void cBrowserEvents::WatchWindows(const ComPtr<IShellWindows>& shell, ReadHandles& handles) {
    const auto windows = WindowsOf(*shell);
    bool errorsIgnored = false;
    const auto step = [&errorsIgnored](auto&& action) {
        if (errorsIgnored) {
            return ErrorOf(action) == 0;
        }
        action();
        return true;
    };
    for (;;) {
        Variant entry;
        bool more = false;
        step([&] { more = Next(*windows, entry); });
        if (!more || m_closed) {
            return;
        }
        ComPtr<IWebBrowser2> window;
        if (!step([&] { window = AsBrowser(entry); })) {
            continue;
        }
        const auto sink = MakeCom<cBrowser>();
        sink->SetInterFace(ComPtr<IBrowser>(this));
        step([&] { sink->SetBrowser(window); });
        if (m_closed) {
            return;
        }
        if (!sink->Browser()) {
            // Kept: a window that cannot be connected to ends the walk; those after it wait for the next one.
            return;
        }
        std::wstring key;
        const bool keyBuilt = step([&] {
            const std::wstring handle = L"_" + Decimal(handles.Of(*sink->Browser())) + L"_";
            std::wstring counter;
            while (KeyExists(m_colBrowsers, handle + counter)) {
                counter = Advanced(counter);
            }
            key = handle + counter;
        });
        if (m_closed) {
            return;
        }
        // From the first key on, what fails is left out and the next step runs.
        errorsIgnored = true;
        if (keyBuilt) {
            step([&] { m_colBrowsers.Add(Sink{key, sink}, key); });
        }
        if (m_oBrowsers) {
            step([&] { m_oBrowsers->Add(window); });
        }
    }
}

bool cBrowserEvents::KeyExists(const Sinks& collection, const std::wstring& key) {
    return collection.Contains(key);
}

std::vector<std::wstring> cBrowserEvents::Keys() const {
    std::vector<std::wstring> keys;
    for (const Sink& sink : m_colBrowsers) {
        keys.push_back(sink.key);
    }
    return keys;
}

ComPtr<IWebBrowser2> cBrowserEvents::GetNewBrowser(ReadHandles& handles) {
    const ComPtr<IShellWindows> shell = m_oShell;
    if (!shell) {
        throw RunTimeError(RunTimeError::kObjectNotSet);
    }
    Windows watched;
    for (const Sink& sink : m_colBrowsers) {
        watched.push_back(sink.browser->Browser());
    }
    // The scan of the sinks ends at one whose handle cannot be read, the same for every window.
    std::optional<std::unordered_set<std::int32_t>> watchedHandles;
    const auto readWatched = [&] {
        watchedHandles.emplace();
        for (const auto& browser : watched) {
            if (m_closed || ErrorOf([&] { watchedHandles->insert(HandleOf(*browser)); }) != 0) {
                return;
            }
        }
    };

    const auto windows = WindowsOf(*shell);
    for (;;) {
        Variant entry;
        if (!Next(*windows, entry) || m_closed) {
            return nullptr;
        }
        ComPtr<IWebBrowser2> window;
        if (ErrorOf([&] { window = AsBrowser(entry); }) != 0) {
            // Not a browser: nothing that could be watched.
            continue;
        }
        if (!window || watched.empty()) {
            return window;
        }
        if (!watchedHandles) {
            readWatched();
        }
        bool found = false;
        ErrorsIgnored([&] {
            const std::int32_t handle = HandleOf(*window);
            handles.Remember(*window, handle);
            found = watchedHandles->contains(handle);
        });
        if (m_closed) {
            return nullptr;
        }
        if (!found) {
            return window;
        }
    }
}

void cBrowserEvents::m_oShell_WindowRegistered(LONG) {
    ++m_registered;
    if (!m_busy) {
        WorkOff();
    }
}

void cBrowserEvents::m_oShell_WindowRevoked(LONG) {
    ++m_revoked;
    if (!m_busy) {
        WorkOff();
    }
}

void cBrowserEvents::WorkOff() {
    FirstFailure failure;
    while (!m_closed && !m_busy && (m_registered > 0 || m_revoked > 0 || m_loadAgain)) {
        failure.Try([this] { WorkOffOnce(); });
    }
    const Windows done = std::exchange(m_newcomers, Windows());
    failure.Rethrow();
}

void cBrowserEvents::WorkOffOnce() {
    const std::uint32_t registered = std::exchange(m_registered, 0);
    const std::uint32_t revoked = std::exchange(m_revoked, 0);
    const bool loadAgain = std::exchange(m_loadAgain, false);
    Windows created;
    {
        const Flagged busy(m_busy);
        ReadHandles handles;
        if (registered > 0) {
            if (auto window = GetNewBrowser(handles)) {
                created.push_back(std::move(window));
            }
        }
        const bool newcomersWait = registered > 0 && !m_newcomers.empty();
        if (m_closed || (created.empty() && !newcomersWait && revoked == 0 && !loadAgain)) {
            return;
        }
        Rebuild(handles, registered > 1);
        // Windows that an interrupted rebuild listed before their announcement was looked at.
        for (const auto& window : created) {
            const auto identity = IdentityOf(window.Get());
            std::erase_if(m_newcomers, [&](const ComPtr<IWebBrowser2>& newcomer) {
                return IdentityOf(newcomer.Get()).Get() == identity.Get();
            });
        }
        while (created.size() < registered && !m_newcomers.empty()) {
            created.push_back(std::move(m_newcomers.front()));
            m_newcomers.erase(m_newcomers.begin());
        }
    }
    FirstFailure failure;
    for (const auto& window : created) {
        failure.Try([&] { Raise([&](BrowserEvents& events) { events.BrowserCreated(window.Get()); }); });
    }
    for (std::uint32_t i = 0; i < revoked; ++i) {
        failure.Try([&] { Raise([](BrowserEvents& events) { events.BrowserDestroyed(); }); });
    }
    failure.Rethrow();
}

cBrowserEvents::Windows cBrowserEvents::ListedBrowsers() const {
    return m_oBrowsers ? *m_oBrowsers->m_entries : Windows();
}

void cBrowserEvents::NoteNewcomers(const Windows& listedBefore, bool wanted) {
    const bool known = m_listFilled || !listedBefore.empty();
    m_listFilled = m_oBrowsers.Get() != nullptr;
    if (!wanted && m_registered == 0 && m_newcomers.empty()) {
        return;
    }
    const auto before = IdentitiesOf(listedBefore);
    const auto untold = IdentitiesOf(m_newcomers);
    Windows newcomers;
    for (const auto& window : ListedBrowsers()) {
        IUnknown* const identity = IdentityOf(window.Get()).Get();
        if (untold.contains(identity) || (known && !before.contains(identity))) {
            newcomers.push_back(window);
        }
    }
    std::swap(m_newcomers, newcomers);
}

void* cBrowserEvents::Find(REFIID iid) noexcept {
    if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IBrowser) {
        return static_cast<IBrowser*>(this);
    }
    return iid == IID_ISupportErrorInfo ? static_cast<ISupportErrorInfo*>(this) : nullptr;
}

template <class Event>
void cBrowserEvents::Raise(Event&& event) {
    if (m_events != nullptr) {
        std::forward<Event>(event)(*m_events);
    }
}

HRESULT cBrowserEvents::SetBrowserInst(IDispatch** oBrowser) noexcept {
    if (oBrowser == nullptr) {
        return E_POINTER;
    }
    return AtComMethod([&] {
        auto speaking = Query<IWebBrowser2>(*oBrowser);
        m_parting.push_back(m_oCurBrowser);
        m_oCurBrowser = std::move(speaking);
    });
}

template <class... Parameters, class... Given>
HRESULT cBrowserEvents::RaiseForCurrent(void (BrowserEvents::*event)(IWebBrowser2*&, Parameters...),
                                        std::tuple<Given&...> given) noexcept {
    const Windows parting = std::move(m_parting);
    return std::apply(
        [&](Given&... one) -> HRESULT {
            if ((Handed<Parameters, Given>::Missing(one) || ...)) {
                return E_POINTER;
            }
            return AtComMethod([&] {
                Raise([&](BrowserEvents& events) {
                    (events.*event)(m_oCurBrowser.InOut(), Handed<Parameters, Given>(one).Value()...);
                });
            });
        },
        given);
}

#define KG_SLOT(name, event, handler, parameters, arguments)                            \
    HRESULT cBrowserEvents::name parameters noexcept {                                  \
        return RaiseForCurrent(&BrowserEvents::event, std::forward_as_tuple arguments); \
    }
KG_BROWSER_OPERATIONS(KG_SLOT)
#undef KG_SLOT

}  // namespace kestrelguard
