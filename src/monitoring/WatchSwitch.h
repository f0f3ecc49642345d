#pragma once

#include <functional>
#include <utility>

namespace kestrelguard {

/// Switches watching on and off, one watcher at a time. Watching calls the windows, which lets other calls
/// in: one of them may switch off, or start over, while a start is under way.
///
/// `WatcherPtr` shares a watcher that has Succeed(predecessor), FirstLook(), Busy(), WorkOff() and Close().
template <class WatcherPtr>
class WatchSwitch {
 public:
    /// `make` makes a watcher that watches nothing yet and calls nobody; `use` gives one that has taken its
    /// first look its tasks.
    WatchSwitch(std::function<WatcherPtr()> make, std::function<void(const WatcherPtr&)> use)
        : m_make(std::move(make)), m_use(std::move(use)) {}
    ~WatchSwitch() { SwitchOff(); }
    WatchSwitch(const WatchSwitch&) = delete;
    WatchSwitch& operator=(const WatchSwitch&) = delete;

    bool On() const noexcept { return static_cast<bool>(m_watcher); }

    /// Nothing happens when it is on, or about to be. Throws what the watcher's looks throw.
    void SwitchOn() {
        if (!m_watcher && !m_starting) {
            Start(WatcherPtr());
        }
    }
    void SwitchOff() noexcept {
        for (WatcherPtr* const one : {&m_watcher, &m_starting}) {
            if (const WatcherPtr watcher = std::exchange(*one, WatcherPtr())) {
                watcher->Close();
            }
        }
    }
    /// Takes a new watcher in place of the old one; switches on when it was off. The old one listens for
    /// announcements until the new one does. Throws as SwitchOn.
    void Refresh() {
        WatcherPtr old = std::exchange(m_watcher, WatcherPtr());
        WatcherPtr starting = std::exchange(m_starting, WatcherPtr());
        Start(old ? std::move(old) : std::move(starting));
    }

    /// A call does not come back: what waits for it is done without it. A watcher that waits is succeeded;
    /// one that only tells of windows tells of the others. Nothing happens while it is off. Throws as
    /// SwitchOn.
    void GoOn() {
        if (m_starting || (m_watcher && m_watcher->Busy())) {
            Refresh();
        } else if (const WatcherPtr watcher = m_watcher) {
            watcher->WorkOff();
        }
    }

 private:
    void Start(WatcherPtr predecessor) {
        const WatcherPtr watcher = m_make();
        m_starting = watcher;
        if (predecessor) {
            watcher->Succeed(*predecessor);
            predecessor = WatcherPtr();
        }
        try {
            watcher->FirstLook();
        } catch (...) {
            if (m_starting == watcher) {
                m_starting = WatcherPtr();
            }
            watcher->Close();
            throw;
        }
        if (m_starting != watcher) {
            // Another start, or the end, was quicker. Whoever it was has closed this one.
            return;
        }
        m_starting = WatcherPtr();
        m_watcher = watcher;
        m_use(watcher);
    }

    const std::function<WatcherPtr()> m_make;
    const std::function<void(const WatcherPtr&)> m_use;
    /// The one that is on, and the one that is taking its first look.
    WatcherPtr m_watcher;
    WatcherPtr m_starting;
};

}  // namespace kestrelguard
