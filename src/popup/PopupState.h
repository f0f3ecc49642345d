#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "controls/Controls.h"

namespace kestrelguard {

/// The selected button of `PTO`; the value that the settings file stores.
enum class PopupMode { Prevent = 0, Prompt = 1, Allow = 2 };

/// The live popup mode and the two counters. The option buttons are the mode: nothing else holds it.
struct PopupState {
    OptionButton& prevent;  ///< PTO(0)
    OptionButton& prompt;   ///< PTO(1)
    OptionButton& allow;    ///< PTO(2)
    /// New windows stopped since the counter was first created; a lasting setting, owned by the program.
    std::int32_t& popupsStoppedTotal;
    /// New windows stopped in this run of the program, however many days it lasts (meant).
    std::int32_t popupsStoppedToday = 0;

    /// The selected button; the buttons are asked in this order. Nothing when none is selected.
    std::optional<PopupMode> Mode() const;
};

/// The text of the tray tip in a mode, with the count where the mode shows one.
std::wstring TipText(PopupMode mode, std::int32_t stoppedToday);

/// The tray tip, as far as the policy writes it.
class TrayTip {
 public:
    virtual ~TrayTip() = default;
    /// Stores the text in `trayTipText`. What the shell shows does not change yet.
    virtual void WriteTip(const std::wstring& text) = 0;
    /// Brings the tip that the shell shows up to date.
    virtual void UpdateSZTIP() = 0;
};

}  // namespace kestrelguard
