#include "popup/PopupPolicy.h"

#include <string>

#include "popup/Texts.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr int kVirtualKeyShift = 0x10;
constexpr int kVirtualKeyControl = 0x11;

// How much of the address the question leaves out.
constexpr std::size_t kAddressLeftOut = 49;

}  // namespace

void PopupPolicy::HandleNewWindow(Browser& browser, bool& cancel) {
    if (m_parts.state.prevent.Selected()) {
        Prevent(browser, cancel);
    } else if (m_parts.state.prompt.Selected()) {
        Prompt(browser, cancel);
    }
}

void PopupPolicy::Prevent(Browser& browser, bool& cancel) {
    m_controlState = m_parts.keyboard.AsyncKeyState(kVirtualKeyControl);
    m_shiftState = m_parts.keyboard.AsyncKeyState(kVirtualKeyShift);
    if (m_controlState < 0 && m_shiftState < 0) {
        cancel = true;
        // While the mouse rests on a link the status text is its address: it opens in the same window.
        ErrorsIgnored([&] { browser.Navigate2(browser.StatusText()); });
        return;
    }
    if (m_controlState != 0) {
        return;
    }
    Count();
    cancel = true;
}

void PopupPolicy::Count() {
    PopupState& state = m_parts.state;
    state.popupsStoppedTotal = CheckedAdd(state.popupsStoppedTotal, 1);
    state.popupsStoppedToday = CheckedAdd(state.popupsStoppedToday, 1);
    m_parts.trayTip.WriteTip(TipText(PopupMode::Prevent, state.popupsStoppedToday));
    const std::wstring separator = m_parts.locale.ThousandsSeparator();
    m_parts.popsToday.SetCaption(Grouped(state.popupsStoppedToday, separator));
    m_parts.popStopsT.SetCaption(Grouped(state.popupsStoppedTotal, separator));
}

void PopupPolicy::Prompt(const Browser& browser, bool& cancel) {
    const std::wstring address = browser.LocationURL();
    // Kept: the beginning of the address is what is left out.
    const std::wstring shown = address.size() > kAddressLeftOut ? address.substr(kAddressLeftOut) : L"";
    const std::wstring question =
        std::wstring(popup_texts::kQuestion) + kLineEnd + shown + popup_texts::kQuestionEnd;
    // Kept: the box has no No button, so this never cancels.
    cancel = m_parts.messageBoxes.Show(question, popup_texts::kQuestionCaption, box_style::kNotice) ==
             box_answer::kNo;
}

void PopupPolicy::mnuPOP_Click() {
    PopupState& state = m_parts.state;
    m_parts.mnuPOP.SetChecked(!m_parts.mnuPOP.Checked());
    const bool preventing = state.prevent.Selected();
    if (!m_parts.mnuPOP.Checked()) {
        if (preventing) {
            state.prevent.Select(false);
            m_parts.trayTip.WriteTip(TipText(PopupMode::Allow, state.popupsStoppedToday));
            state.allow.Select(true);
        }
    } else if (!preventing) {
        state.prevent.Select(true);
        m_parts.trayTip.WriteTip(TipText(PopupMode::Prevent, state.popupsStoppedToday));
        state.allow.Select(false);
    }
    m_parts.trayTip.UpdateSZTIP();
}

void PopupPolicy::PTO_Click(int /*index*/) {
    m_parts.ApplyCmd.SetEnabled(true);
}

}  // namespace kestrelguard
