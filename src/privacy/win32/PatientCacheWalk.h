#pragma once

#include "controls/win32/WaitCursor.h"
#include "privacy/KG_IECache.h"

namespace kestrelguard {

/// A walk over a cache that may be large: the windows are painted before it, and the user sees that it lasts.
class PatientCacheWalk final : public CacheWalk {
 public:
    /// `walk` outlives this object.
    explicit PatientCacheWalk(CacheWalk& walk) : m_walk(walk) {}

    void LoadCacheEntries(bool& ShowList, bool& ClearFiles, bool& ClearCookies, bool& CookiesOnly) override {
        PaintWindows();
        const WaitCursor wait;
        m_walk.LoadCacheEntries(ShowList, ClearFiles, ClearCookies, CookiesOnly);
    }

 private:
    CacheWalk& m_walk;
};

}  // namespace kestrelguard
