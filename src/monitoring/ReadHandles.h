#pragma once

#include <cstdint>
#include <unordered_map>

#include "monitoring/WatchedDesktop.h"

namespace kestrelguard {

/// Handles that were read for one announcement: no window is asked twice for the same one.
class ReadHandles {
 public:
    /// Throws RunTimeError when the window has to be asked and fails.
    std::int32_t Of(const DesktopWindowPtr& window) {
        const auto found = m_handles.find(window->Identity());
        if (found != m_handles.end()) {
            return found->second.handle;
        }
        const std::int32_t handle = window->Handle();
        m_handles.insert_or_assign(window->Identity(), Known{window, handle});
        return handle;
    }

 private:
    struct Known {
        DesktopWindowPtr keptAlive;
        std::int32_t handle;
    };

    std::unordered_map<const void*, Known> m_handles;
};

}  // namespace kestrelguard
