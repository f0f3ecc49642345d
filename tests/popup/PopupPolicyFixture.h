#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "controls/Fakes.h"
#include "popup/PopupPolicy.h"

namespace kestrelguard {

inline constexpr int kControl = 0x11;
inline constexpr int kShift = 0x10;
inline constexpr std::int16_t kHeld = std::numeric_limits<std::int16_t>::min();
inline constexpr std::int16_t kPressedBefore = 1;
class FakeKeyboard : public Keyboard, public Fallible {
 public:
    std::int16_t AsyncKeyState(int virtualKey) override {
        Call();
        asked.push_back(virtualKey);
        return states[virtualKey];
    }
    std::map<int, std::int16_t> states;
    std::vector<int> asked;
};

inline constexpr std::int32_t kFull = std::numeric_limits<std::int32_t>::max();

/// Keeps what was written and whether the shell was asked to show it.
class FakeTrayTip : public TrayTip {
 public:
    void WriteTip(const std::wstring& text) override {
        tip = text;
        calls.push_back(L"write" + text);
    }
    void UpdateSZTIP() override { calls.emplace_back(L"update"); }
    std::wstring tip;
    std::vector<std::wstring> calls;
};

class PopupPolicyTest : public testing::Test {
 protected:
    PopupPolicyTest() {
        FakeOptionButton::Group({&pto0, &pto1, &pto2});
        browser.locationURL = L"http://news.example/";
        browser.statusText = L"http://news.example/story";
    }

    /// Answers what the browser finds in Cancel.
    bool NewWindow() {
        bool cancel = false;
        policy.HandleNewWindow(browser, cancel);
        return cancel;
    }

    int Selected() const { return pto0.selected ? 0 : pto1.selected ? 1 : pto2.selected ? 2 : -1; }

    /// One click on the menu item, whose check mark has followed the mode as it does when the menu opens.
    void ClickInTheMenu() {
        mnuPOP.checked = pto0.selected;
        policy.mnuPOP_Click();
    }

    FakeOptionButton pto0{true};
    FakeOptionButton pto1;
    FakeOptionButton pto2;
    std::int32_t total = 0;
    PopupState state{pto0, pto1, pto2, total};
    FakeTrayTip trayTip;
    FakeCheckMark mnuPOP{true};
    FakeSwitch applyCmd;
    FakeCaption popsToday;
    FakeCaption popStopsT;
    FakeKeyboard keyboard;
    FakeMessageBoxes messageBoxes;
    FakeLocale locale;
    FakeBrowser browser;
    PopupPolicy policy{PopupPolicy::Parts{.state = state,
                                          .trayTip = trayTip,
                                          .mnuPOP = mnuPOP,
                                          .ApplyCmd = applyCmd,
                                          .popsToday = popsToday,
                                          .popStopsT = popStopsT,
                                          .keyboard = keyboard,
                                          .messageBoxes = messageBoxes,
                                          .locale = locale}};
};

}  // namespace kestrelguard
