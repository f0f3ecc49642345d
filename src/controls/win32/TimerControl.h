#pragma once

#include <windows.h>

#include "controls/Controls.h"

namespace kestrelguard {

/// A timer of a window; its ticks arrive there as WM_TIMER with the timer's id.
class TimerControl final : public Switch {
 public:
    TimerControl(UINT_PTR id, UINT milliseconds) : m_id(id), m_milliseconds(milliseconds) {}
    ~TimerControl() override { Stop(); }
    TimerControl(const TimerControl&) = delete;
    TimerControl& operator=(const TimerControl&) = delete;

    void Attach(HWND window) { m_window = window; }
    /// Whether a WM_TIMER with that id is a tick of this timer; one that is switched off has none.
    bool Ticks(UINT_PTR id) const { return m_enabled && id == m_id; }
    bool Enabled() const override { return m_enabled; }
    void SetEnabled(bool enabled) override;

 private:
    void Stop();

    HWND m_window = nullptr;
    UINT_PTR m_id;
    UINT m_milliseconds;
    bool m_enabled = false;
};

}  // namespace kestrelguard
