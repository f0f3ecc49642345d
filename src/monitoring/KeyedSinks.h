#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "monitoring/WatchedDesktop.h"
#include "runtime/KeyedCollection.h"

namespace kestrelguard {

/// The sinks of one watch under their keys, in the order of the windows. A sink on a window that does not
/// answer cannot be let go: it rests until it is woken or taken away.
class KeyedSinks {
 public:
    struct Sink {
        std::wstring key;
        DesktopWindowPtr window;
        std::shared_ptr<WindowSink> listening;
        std::int32_t handle = 0;
    };

    /// The key for a handle: "_", the handle, "_" and, if that is taken, a counter.
    std::wstring KeyOf(std::int32_t handle) const;
    /// Throws RunTimeError when the key is taken.
    void Add(Sink sink);
    /// Lets all sinks go but those on windows that do not answer, which rest. Calls out; by then there are
    /// none.
    void Release() noexcept;
    /// Whether a sink on the window rests.
    bool Rests(const DesktopWindowPtr& window) const;
    /// Puts the resting sink on the window behind the others, under a key of its handle.
    void Wake(const DesktopWindowPtr& window);
    /// Lets the sink go that rests on the window, if there is one. Calls out.
    void ReleaseResting(const DesktopWindow& window) noexcept;
    /// Takes those that rest away.
    std::vector<Sink> TakeResting() noexcept;

    /// The window of that identity, as a sink has it; null when none does.
    DesktopWindowPtr WindowOf(const void* identity) const;
    std::vector<Sink> All() const;
    std::vector<std::wstring> Keys() const;

 private:
    KeyedCollection<Sink> m_colBrowsers;
    std::vector<Sink> m_resting;
};

}  // namespace kestrelguard
