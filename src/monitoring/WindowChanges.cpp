#include "monitoring/WindowChanges.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace kestrelguard {

namespace {

/// Whether a window has this identity.
auto Is(const void* identity) {
    return [identity](const DesktopWindowPtr& window) { return window->Identity() == identity; };
}

std::unordered_set<const void*> IdentitiesOf(const WindowChanges::Windows& windows) {
    std::unordered_set<const void*> identities;
    for (const DesktopWindowPtr& window : windows) {
        identities.insert(window->Identity());
    }
    return identities;
}

}  // namespace

void WindowChanges::Note(const Windows& listed, bool whole) {
    Windows known = listed;
    auto now = IdentitiesOf(listed);
    if (m_known) {
        auto before = IdentitiesOf(*m_known);
        for (const auto& window : *m_known) {
            if (!whole && now.insert(window->Identity()).second) {
                known.push_back(window);
            }
        }
        for (const auto& window : listed) {
            if (before.insert(window->Identity()).second) {
                m_came.push_back(window);
            }
        }
        m_went += static_cast<std::uint32_t>(
            std::count_if(before.begin(), before.end(), [&](const void* one) { return !now.contains(one); }));
        // Who came and went before anybody was told has never been there.
        m_went -= static_cast<std::uint32_t>(
            std::erase_if(m_came, [&](const auto& window) { return !now.contains(window->Identity()); }));
    }
    // Letting windows go lets other calls in: they find the new list.
    const auto old = std::exchange(m_known, std::move(known));
}

bool WindowChanges::Knows(const DesktopWindowPtr& window) const {
    return window && WindowOf(window->Identity());
}

DesktopWindowPtr WindowChanges::WindowOf(const void* identity) const {
    if (!m_known) {
        return nullptr;
    }
    const auto found = std::find_if(m_known->begin(), m_known->end(), Is(identity));
    return found != m_known->end() ? *found : nullptr;
}

void WindowChanges::MakeDue(const Announced& announced) {
    if (announced.found) {
        std::erase_if(m_came, Is(announced.found->Identity()));
        m_createdDue.push_back(announced.found);
        if (!announced.wasKnown && !Knows(announced.found)) {
            // It is told although it has gone again.
            ++m_went;
        }
    }
    const Windows came = std::exchange(m_came, Windows());
    std::copy(came.begin(), came.end(), std::back_inserter(m_createdDue));
    // An announcement that may be a repetition, or an older one whose rebuild has failed, counts when a
    // window has gone of which nobody was told.
    const std::uint32_t all = announced.revoked + std::exchange(m_owed, 0);
    const std::uint32_t destroyed = std::max(announced.revoked - announced.perhapsRepeated,
                                             announced.mended ? m_went : std::min(all, m_went));
    m_went -= std::min(m_went, destroyed);
    m_destroyedDue += destroyed;
}

void WindowChanges::TellNext(WindowNews& news) {
    if (m_createdDue.empty()) {
        --m_destroyedDue;
        news.BrowserDestroyed();
        return;
    }
    const DesktopWindowPtr window = std::move(m_createdDue.front());
    m_createdDue.pop_front();
    news.BrowserCreated(window);
}

}  // namespace kestrelguard
