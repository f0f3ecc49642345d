#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "monitoring/WatchedDesktop.h"

namespace kestrelguard {

/// Who came and who went: compares the list of windows with what it was, and knows what is still to be told.
class WindowChanges {
 public:
    using Windows = std::vector<DesktopWindowPtr>;

    /// An announcement as far as it decides what is told.
    struct Announced {
        std::uint32_t revoked = 0;
        /// Those of `revoked` that may be another one's repetition.
        std::uint32_t perhapsRepeated = 0;
        /// The window that the search for a new one has found, and whether it was known before the rebuild.
        DesktopWindowPtr found = {};
        bool wasKnown = false;
        /// An earlier rebuild has failed, and announcements may have been lost with it: whatever went is
        /// told.
        bool mended = false;
    };

    /// Takes the list as a rebuild has filled it. `whole` is false when the walk ended before the system's
    /// list did: what is missing may still be open. Nothing has come or gone by the first list.
    void Note(const Windows& listed, bool whole);
    /// Revocations whose rebuild has failed: told after the next one that succeeds.
    void Owe(std::uint32_t revoked) noexcept { m_owed += revoked; }
    /// The rebuild for an announcement is done: what came and went is to be told.
    void MakeDue(const Announced& announced);
    bool AnythingDue() const noexcept { return !m_createdDue.empty() || m_destroyedDue > 0; }
    /// Tells one thing of what is due, arrivals first. The news may end the life of this object.
    void TellNext(WindowNews& news);

    bool Knows(const DesktopWindowPtr& window) const;
    /// The known window of that identity; null for none.
    DesktopWindowPtr WindowOf(const void* identity) const;
    /// The windows that the last rebuild has left known: none before the first.
    Windows Known() const { return m_known.value_or(Windows()); }

 private:
    std::optional<Windows> m_known;
    /// Windows that came, and how many went, since somebody was told.
    Windows m_came;
    std::uint32_t m_went = 0;
    std::uint32_t m_owed = 0;
    /// What is to be told now.
    std::deque<DesktopWindowPtr> m_createdDue;
    std::uint32_t m_destroyedDue = 0;
};

}  // namespace kestrelguard
