#pragma once

#include <windows.h>

#include <exdisp.h>

#include <string_view>

#include "monitoring/WatchSwitch.h"
#include "monitoring/win32/BrowserEvents.h"
#include "monitoring/win32/cBrowserEvents.h"
#include "monitoring/win32/cBrowsers.h"
#include "runtime/win32/Com.h"

namespace kestrelguard {

/// Where the control's host keeps its properties.
class PropertyBag {
 public:
    virtual ~PropertyBag() = default;
    virtual void WriteProperty(std::wstring_view name, bool value, bool defaultValue) = 0;
};

/// The host's ear for changed properties.
class PropertyHost {
 public:
    virtual ~PropertyHost() = default;
    virtual void PropertyChanged(std::wstring_view name) = 0;
};

/// The browser events control: the one door of monitoring. Switches it on and off, hands out the list of
/// watched browsers and raises the watcher's fourteen events to its host.
///
/// Works on the thread that made it, which must be in a single-threaded apartment and run a message loop.
/// `host` (and `properties`, if given) must outlive the control. Being in a message that another thread
/// *sent* no browser can be called: switch on, refresh and use browsers from posted messages and events only.
class IEEvents final {
 public:
    static constexpr std::wstring_view kProgId = L"Kestrel.IEEvents";

    explicit IEEvents(BrowserEvents& host, PropertyHost* properties = nullptr,
                      ShellWindowsMaker makeShellWindows = CreateShellWindows);
    /// Switches monitoring off and lets the list go.
    ~IEEvents() = default;
    IEEvents(const IEEvents&) = delete;
    IEEvents& operator=(const IEEvents&) = delete;

    /// Whether monitoring is on. Marks the property as changed.
    bool Enabled();
    /// True switches monitoring on; nothing happens when it is on already. False switches it off: no event
    /// reaches the host from then on, and the list stays as it is. Throws RunTimeError when the windows
    /// cannot be watched.
    void SetEnabled(bool blnNewValue);
    /// Watches all windows afresh; switches monitoring on when it was off. Throws RunTimeError when the
    /// windows cannot be watched.
    void Refresh();
    /// A call to a window does not come back: goes on watching the others while it is under way. Throws
    /// RunTimeError when they cannot be watched.
    void GoOn();
    /// The list of watched browsers: the same object each time.
    const ComPtr<cBrowsers>& Browsers() const noexcept { return m_oBrowsers; }

    void WriteProperties(PropertyBag& bag) const;

 private:
    /// The watcher's connection to the handlers.
    class Listener final : public BrowserEvents {
     public:
        explicit Listener(IEEvents& control) : m_control(control) {}
#define KG_EVENT(name, parameters, arguments) void name parameters override;
        KG_BROWSER_EVENTS(KG_EVENT)
#undef KG_EVENT

     private:
        IEEvents& m_control;
    };

    /// oBrowserEvents_<event>: raises the control's own event of the same name.
#define KG_EVENT(name, parameters, arguments) void oBrowserEvents_##name parameters;
    KG_BROWSER_EVENTS(KG_EVENT)
#undef KG_EVENT

    void PropertyChanged();

    BrowserEvents& m_host;
    PropertyHost* const m_properties;
    Listener m_listener{*this};

    ComPtr<cBrowsers> m_oBrowsers = MakeCom<cBrowsers>();
    /// The watcher, which is there while monitoring is on.
    WatchSwitch<ComPtr<cBrowserEvents>> oBrowserEvents;
};

}  // namespace kestrelguard
