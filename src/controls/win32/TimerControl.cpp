#include "controls/win32/TimerControl.h"

namespace kestrelguard {

void TimerControl::SetEnabled(bool enabled) {
    if (!enabled) {
        Stop();
    } else if (!m_enabled) {
        m_enabled = SetTimer(m_window, m_id, m_milliseconds, nullptr) != 0;
    }
}

void TimerControl::Stop() {
    if (m_enabled) {
        KillTimer(m_window, m_id);
        m_enabled = false;
    }
}

}  // namespace kestrelguard
