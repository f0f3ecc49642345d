#include "popup/PopupState.h"

#include "popup/Texts.h"
#include "runtime/Numbers.h"
#include "runtime/ProgramVersion.h"

namespace kestrelguard {

std::optional<PopupMode> PopupState::Mode() const {
    if (prevent.Selected()) {
        return PopupMode::Prevent;
    }
    if (prompt.Selected()) {
        return PopupMode::Prompt;
    }
    if (allow.Selected()) {
        return PopupMode::Allow;
    }
    return std::nullopt;
}

std::wstring TipText(PopupMode mode, std::int32_t stoppedToday) {
    const std::wstring product = popup_texts::kTipProduct + Decimal(kMajorVersion);
    switch (mode) {
        case PopupMode::Prevent:
            return product + popup_texts::kTipPreventing + Decimal(stoppedToday);
        case PopupMode::Prompt:
            return product + popup_texts::kTipPrompting + Decimal(stoppedToday);
        case PopupMode::Allow:
            break;
    }
    return product + popup_texts::kTipAllowing;
}

}  // namespace kestrelguard
