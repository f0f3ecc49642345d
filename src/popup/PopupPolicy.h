#pragma once

#include <cstdint>

#include "controls/Controls.h"
#include "controls/MessageBoxes.h"
#include "popup/Keyboard.h"
#include "popup/PopupState.h"
#include "runtime/Browser.h"
#include "runtime/System.h"

namespace kestrelguard {

/// Decides about new browser windows: prevents and counts them, asks, or lets them open.
class PopupPolicy {
 public:
    /// What the policy reads and writes; all of it outlives the policy.
    struct Parts {
        PopupState& state;
        TrayTip& trayTip;
        CheckMark& mnuPOP;
        Switch& ApplyCmd;
        Caption& popsToday;
        Caption& popStopsT;
        Keyboard& keyboard;
        MessageBoxes& messageBoxes;
        const Locale& locale;
    };

    explicit PopupPolicy(const Parts& parts) : m_parts(parts) {}

    /// The NewWindow event: `browser` is about to open a new window; `cancel` is set where it must not.
    /// Throws kOverflow when a counter is full, and what the browser throws while its address is read.
    void HandleNewWindow(Browser& browser, bool& cancel);

    /// The tray menu's command: switches between Prevent and Allow.
    void mnuPOP_Click();

    /// A click on an option button. The mode itself is the button's state and acts at once.
    void PTO_Click(int index);

 private:
    void Prevent(Browser& browser, bool& cancel);
    void Prompt(const Browser& browser, bool& cancel);
    void Count();

    Parts m_parts;
    // The last sampled states of Ctrl and Shift.
    std::int16_t m_controlState = 0;
    std::int16_t m_shiftState = 0;
};

}  // namespace kestrelguard
