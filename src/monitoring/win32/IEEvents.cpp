#include "monitoring/win32/IEEvents.h"

#include <utility>

namespace kestrelguard {

namespace {

constexpr std::wstring_view kEnabled = L"Enabled";

}  // namespace

IEEvents::IEEvents(BrowserEvents& host, PropertyHost* properties, ShellWindowsMaker makeShellWindows)
    : m_host(host),
      m_properties(properties),
      oBrowserEvents([make = std::move(makeShellWindows)] { return MakeCom<cBrowserEvents>(make); },
                     [this](const ComPtr<cBrowserEvents>& watcher) {
                         watcher->Connect(m_listener);
                         watcher->SetBrowsers(m_oBrowsers);
                         watcher->LoadBrowsers();
                     }) {}

bool IEEvents::Enabled() {
    const bool enabled = oBrowserEvents.On();
    // Kept: reading counts as a change, too.
    PropertyChanged();
    return enabled;
}

void IEEvents::SetEnabled(bool blnNewValue) {
    if (blnNewValue) {
        oBrowserEvents.SwitchOn();
    } else {
        oBrowserEvents.SwitchOff();
    }
    PropertyChanged();
}

void IEEvents::Refresh() {
    oBrowserEvents.Refresh();
}

void IEEvents::GoOn() {
    oBrowserEvents.GoOn();
}

void IEEvents::PropertyChanged() {
    if (m_properties != nullptr) {
        m_properties->PropertyChanged(kEnabled);
    }
}

void IEEvents::WriteProperties(PropertyBag& bag) const {
    // Kept: what is stored is whether monitoring is off.
    bag.WriteProperty(kEnabled, !oBrowserEvents.On(), false);
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
