#include "privacy/Washer.h"

#include <optional>
#include <string>
#include <string_view>

#include "runtime/ErrorsIgnored.h"
#include "runtime/Numbers.h"

namespace kestrelguard {

namespace {

struct Unit {
    std::wstring_view start;
    double minutes;
};

/// Told by the first three characters of the unit's text.
constexpr Unit kUnits[] = {
    {L"Min", 1},
    {L"Hou", 60},
    {L"Day", 1440},
};

}  // namespace

void Washer::ClearIEC_Click() {
    ErrorsIgnored([this] { Walk(false, true, false); });
}

void Washer::ClearIECookies_Click() {
    ErrorsIgnored([this] { Walk(false, false, true); });
}

void Washer::ClearIEH_Click() {
    ErrorsIgnored([this] { CURLHistory(m_parts.history).Clear(); });
}

void Washer::ShowIEC_Click() {
    m_parts.ShowCookiesOnly = false;
    m_parts.cacheWindowOpener.ShowCacheWindow();
}

void Washer::ShowIECookies_Click() {
    m_parts.ShowCookiesOnly = true;
    m_parts.cacheWindowOpener.ShowCacheWindow();
}

void Washer::wash_F_Change() {
    const std::optional<double> count = NumberOf(m_parts.wash_F.Text());
    // Kept: the count is compared with the minutes, whatever the unit.
    if (count && *count != m_parts.WashMinutes) {
        UpdateWashInterval();
    }
}

void Washer::wash_CMB_Click() {
    UpdateWashInterval();
}

void Washer::UpdateWashInterval() {
    const std::wstring unit = m_parts.wash_CMB.Text().substr(0, 3);
    for (const Unit& known : kUnits) {
        if (unit == known.start) {
            m_parts.WashMinutes = RoundToInteger(LeadingNumber(m_parts.wash_F.Text()) * known.minutes);
        }
    }
    m_parts.ApplyCmd.SetEnabled(true);
}

void Washer::Washer_Timer() {
    m_washTicks = CheckedAdd(m_washTicks, 1);
    if (m_washTicks >= m_parts.WashMinutes) {
        m_washTicks = 0;
        m_parts.timer.SetEnabled(false);
        Wash();
    }
}

void Washer::EnableTimer() {
    m_parts.timer.SetEnabled(m_parts.washAuto.Ticked());
}

void Washer::Stop() {
    m_stopped = true;
    m_parts.timer.SetEnabled(false);
}

/// The timer is off when this runs. Without the schedule's tick it stays off until something enables it.
void Washer::Wash() {
    if (m_parts.washAuto.Value() == 0) {
        return;
    }
    ErrorsIgnored(
        [this] {
            const bool cache = m_parts.washCache.Ticked();
            const bool cookies = m_parts.washCookies.Ticked();
            if (cache || cookies) {
                Walk(false, cache, cookies);
            }
        },
        [this] { m_parts.messages.DoEvents(); },
        [this] {
            if (!m_stopped && m_parts.washHistory.Ticked()) {
                CURLHistory(m_parts.history).Clear();
            }
        },
        [this] {
            if (!m_stopped && m_parts.cacheWindows.FindWindowA(nullptr, kCacheWindowCaption) > 0) {
                Walk(true, false, false);
            }
        });
    if (!m_stopped) {
        m_parts.timer.SetEnabled(true);
    }
}

void Washer::Walk(bool showList, bool clearFiles, bool clearCookies) {
    bool cookiesOnly = false;
    m_parts.cache.LoadCacheEntries(showList, clearFiles, clearCookies, cookiesOnly);
}

}  // namespace kestrelguard
