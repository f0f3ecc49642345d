#include "monitoring/win32/IEEvents.h"

#include <utility>

namespace kestrelguard {

namespace {

constexpr std::wstring_view kEnabled = L"Enabled";

}  // namespace

IEEvents::IEEvents(BrowserEvents& host, PropertyHost* properties, ShellWindowsMaker makeShellWindows)
    : m_host(host), m_properties(properties), m_makeShellWindows(std::move(makeShellWindows)) {}

IEEvents::~IEEvents() {
    Stop();
}

bool IEEvents::Enabled() {
    const bool enabled = static_cast<bool>(oBrowserEvents);
    // Kept: reading counts as a change, too.
    PropertyChanged();
    return enabled;
}

void IEEvents::SetEnabled(bool blnNewValue) {
    if (!blnNewValue) {
        Stop();
    } else if (!oBrowserEvents && m_startingTurn == 0) {
        Start();
    }
    PropertyChanged();
}

void IEEvents::Refresh() {
    Stop();
    Start();
}

void IEEvents::Start() {
    const std::uint32_t turn = ++m_turn;
    m_startingTurn = turn;
    // Watching calls the windows, which lets other calls in: one of them may switch monitoring off, or start
    // it over.
    ComPtr<cBrowserEvents> watcher;
    try {
        watcher = cBrowserEvents::Create(m_makeShellWindows);
    } catch (...) {
        if (m_startingTurn == turn) {
            m_startingTurn = 0;
        }
        throw;
    }
    if (m_turn != turn) {
        watcher->Close();
        return;
    }
    m_startingTurn = 0;
    oBrowserEvents = watcher;
    watcher->Connect(m_listener);
    watcher->SetBrowsers(m_oBrowsers);
    watcher->LoadBrowsers();
}

void IEEvents::Stop() noexcept {
    ++m_turn;
    m_startingTurn = 0;
    if (const ComPtr<cBrowserEvents> watcher = std::move(oBrowserEvents)) {
        watcher->Close();
    }
}

void IEEvents::PropertyChanged() {
    if (m_properties != nullptr) {
        m_properties->PropertyChanged(kEnabled);
    }
}

void IEEvents::WriteProperties(PropertyBag& bag) const {
    // Kept: what is stored is whether monitoring is off.
    bag.WriteProperty(kEnabled, !oBrowserEvents, false);
}

#define KG_EVENT(name, parameters, arguments)         \
    void IEEvents::oBrowserEvents_##name parameters { \
        m_host.name arguments;                        \
    }                                                 \
    void IEEvents::Listener::name parameters {        \
        m_control.oBrowserEvents_##name arguments;    \
    }
KG_BROWSER_EVENTS(KG_EVENT)
#undef KG_EVENT

}  // namespace kestrelguard
