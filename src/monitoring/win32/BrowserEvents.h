#pragma once

#include <windows.h>

#include <array>

#include "monitoring/win32/EventRows.h"

namespace kestrelguard {

/// The fourteen events of monitoring, as the watcher raises them and the control raises them again.
///
/// `Browser` is the browser that speaks. References reach back to the browser itself: what a handler writes
/// to `Cancel`, `ppDisp` or `URL` is what the browser reads when its event returns. A handler that replaces
/// an object releases the old one and leaves a reference to the new one. A handler that may let other events
/// in (a message box, a call to a browser) keeps references of its own to the objects that it still needs:
/// `Browser` then names whichever browser spoke last.
///
/// What a handler throws as RunTimeError goes back to the browser as a failed call.
class BrowserEvents {
 public:
    virtual ~BrowserEvents() = default;

#define KG_EVENT(name, parameters, arguments) virtual void name parameters = 0;
    KG_BROWSER_EVENTS(KG_EVENT)
#undef KG_EVENT
};

/// Acts on no event; ground for whoever acts on some.
class NoBrowserEvents : public BrowserEvents {
 public:
#define KG_EVENT(name, parameters, arguments) \
    void name parameters override {           \
        Nothing arguments;                    \
    }
    KG_BROWSER_EVENTS(KG_EVENT)
#undef KG_EVENT

 private:
    static void Nothing(const auto&... /*arguments*/) {}
};

/// The names of the events; an event's dispatch number is its place here, counted from 1.
#define KG_EVENT(name, parameters, arguments) L## #name,
inline constexpr std::array kBrowserEventNames = {KG_BROWSER_EVENTS(KG_EVENT)};
#undef KG_EVENT
static_assert(kBrowserEventNames.size() == 14);

}  // namespace kestrelguard
