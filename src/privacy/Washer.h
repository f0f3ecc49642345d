#pragma once

#include <cstdint>

#include "controls/Controls.h"
#include "controls/MessageLoop.h"
#include "privacy/KG_IECache.h"
#include "privacy/UrlHistory.h"
#include "runtime/System.h"

namespace kestrelguard {

/// Opens the cache window.
class CacheWindowOpener {
 public:
    virtual ~CacheWindowOpener() = default;
    /// Creates the cache window when there is none, and shows it; does not wait for it.
    virtual void ShowCacheWindow() = 0;
};

/// The cleaning page: cache, cookies and history cleared at once or on a schedule. What cleaning meets is
/// reported to nobody: a step that fails is left, the next one runs.
class Washer {
 public:
    /// All of it belongs to the caller and outlives this object.
    struct Parts {
        /// `KG_C(2)` to `KG_C(5)`: what a wash includes, and whether there is a schedule.
        const CheckBox& washCache;
        const CheckBox& washHistory;
        const CheckBox& washCookies;
        const CheckBox& washAuto;
        /// `wash_F` and `wash_CMB`: the interval's count and unit.
        const TextBox& wash_F;
        const DropDown& wash_CMB;
        /// The timer `Washer`, one tick a minute.
        Switch& timer;
        Switch& ApplyCmd;
        CacheWalk& cache;
        CacheWindows& cacheWindows;
        CacheWindowOpener& cacheWindowOpener;
        HistoryPlatform& history;
        MessageLoop& messages;
        /// Program-wide: the wash interval in minutes, and what the cache window lists.
        std::int32_t& WashMinutes;
        bool& ShowCookiesOnly;
    };

    explicit Washer(const Parts& parts) : m_parts(parts) {}

    void ClearIEC_Click();
    void ClearIECookies_Click();
    void ClearIEH_Click();
    void ShowIEC_Click();
    void ShowIECookies_Click();
    void wash_F_Change();
    void wash_CMB_Click();
    /// Throws kOverflow.
    void Washer_Timer();

    /// Takes the interval from the page into WashMinutes and enables Apply. Throws kOverflow when it does not
    /// fit into 32 bits.
    void UpdateWashInterval();

    /// Enables the timer exactly when "Clear Automatically every" is ticked: for start-up and after Apply.
    void EnableTimer();

    /// Switches the timer off for good: for the window's end. A wash under way, which lets that end happen
    /// among its pending events, goes no further.
    void Stop();

    /// Minutes counted since the last wash or the start.
    std::int32_t WashTicks() const { return m_washTicks; }

 private:
    void Wash();
    void Walk(bool showList, bool clearFiles, bool clearCookies);

    Parts m_parts;
    std::int32_t m_washTicks = 0;
    bool m_stopped = false;
};

}  // namespace kestrelguard
