#include "monitoring/win32/cBrowserEvents.h"

#include <type_traits>

#include "runtime/win32/ComError.h"

namespace kestrelguard {

namespace {

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

cBrowserEvents::~cBrowserEvents() {
    m_watch->Close();
}

void cBrowserEvents::Succeed(cBrowserEvents& predecessor) noexcept {
    const ComPtr<cBrowserEvents> self(this);
    const ComPtr<cBrowserEvents> other(&predecessor);
    m_watch->Succeed(*predecessor.m_watch);
    predecessor.Close();
}

void cBrowserEvents::FirstLook() {
    const ComPtr<cBrowserEvents> self(this);
    m_watch->FirstLook();
}

void cBrowserEvents::Connect(BrowserEvents& events) noexcept {
    if (!m_closed) {
        m_events = &events;
        m_watch->TellTo(*this);
    }
}

void cBrowserEvents::SetBrowsers(ComPtr<cBrowsers> oBrowsers) noexcept {
    if (!m_closed) {
        m_oBrowsers = std::move(oBrowsers);
        m_watch->Fill(*this);
    }
}

void cBrowserEvents::LoadBrowsers() {
    const ComPtr<cBrowserEvents> self(this);
    m_watch->LoadBrowsers();
}

void cBrowserEvents::WorkOff() {
    const ComPtr<cBrowserEvents> self(this);
    const std::shared_ptr<WindowWatch> watch = m_watch;
    watch->WorkOff();
}

void cBrowserEvents::Close() noexcept {
    const ComPtr<cBrowserEvents> self(this);
    m_closed = true;
    m_events = nullptr;
    m_watch->Close();
    const ComPtr<cBrowsers> browsers = std::move(m_oBrowsers);
}

// A call from here may bring about this object's end: nothing of it is touched afterwards.

void cBrowserEvents::Clear() {
    const ComPtr<cBrowsers> browsers = m_oBrowsers;
    browsers->Clear();
}

void cBrowserEvents::Add(const DesktopWindowPtr& window) {
    m_oBrowsers->Add(ComWindow::BrowserOf(window));
}

void cBrowserEvents::BrowserCreated(const DesktopWindowPtr& window) {
    Raise([&](BrowserEvents& events) { events.BrowserCreated(ComWindow::BrowserOf(window).Get()); });
}

void cBrowserEvents::BrowserDestroyed() {
    Raise([](BrowserEvents& events) { events.BrowserDestroyed(); });
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
    const Browsers parting = std::move(m_parting);
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
