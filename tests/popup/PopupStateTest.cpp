#include "popup/PopupState.h"

#include <gtest/gtest.h>

#include "controls/Fakes.h"

namespace kestrelguard {
namespace {

TEST(TipText, HasALeadingBlankAndTheCountOfPrevented) {
    EXPECT_EQ(TipText(PopupMode::Prevent, 12), L" Kestrelguard v2 - Preventing Popups: 12");
    EXPECT_EQ(TipText(PopupMode::Prevent, 1234567), L" Kestrelguard v2 - Preventing Popups: 1234567");
}

TEST(TipText, NamesThePromptMode) {
    EXPECT_EQ(TipText(PopupMode::Prompt, 0), L" Kestrelguard v2 - Prompting for Popups: 0");
}

TEST(TipText, HasNoNumberInAllowMode) {
    EXPECT_EQ(TipText(PopupMode::Allow, 12), L" Kestrelguard v2 - Allowing Popups.");
}

TEST(TipText, AlwaysFitsTheRecord) {
    EXPECT_LE(TipText(PopupMode::Prompt, 2147483647).size(), 63U);
}

TEST(PopupState, ModeIsTheSelectedButton) {
    FakeOptionButton prevent(true);
    FakeOptionButton prompt;
    FakeOptionButton allow;
    FakeOptionButton::Group({&prevent, &prompt, &allow});
    std::int32_t total = 0;
    const PopupState state{prevent, prompt, allow, total};
    EXPECT_EQ(state.Mode(), PopupMode::Prevent);
    prompt.Select(true);
    EXPECT_EQ(state.Mode(), PopupMode::Prompt);
    allow.Select(true);
    EXPECT_EQ(state.Mode(), PopupMode::Allow);
    allow.Select(false);
    EXPECT_FALSE(state.Mode().has_value());
}

}  // namespace
}  // namespace kestrelguard
