#include "controls/win32/WindowBase.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <vector>

#include "controls/win32/SubclassedControl.h"

namespace kestrelguard {
namespace {

constexpr UINT kQuestion = WM_APP + 7;

/// What was reported: the window, and the error's number.
struct Reported {
    HWND window;
    std::int32_t number;
    bool operator==(const Reported&) const = default;
};

class TestWindow final : public WindowBase {
 public:
    explicit TestWindow(std::vector<Reported>& reports)
        : WindowBase([&reports](HWND window, const RunTimeError& error) {
              reports.push_back({window, error.Number()});
          }) {
        Create({.name = "KestrelguardTestWindow"}, {.style = WS_POPUP});
    }
    using WindowBase::DestroyOwnWindow;
    std::function<std::optional<LRESULT>()> answer;
    std::vector<UINT>* heard = nullptr;

 private:
    std::optional<LRESULT> OnMessage(UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) override {
        if (heard != nullptr) {
            heard->push_back(message);
        }
        return message == kQuestion && answer ? answer() : std::nullopt;
    }
};

struct WindowBaseTest : testing::Test {
    std::vector<Reported> reports;
};

TEST_F(WindowBaseTest, AMessageReachesTheObjectAndItsAnswerTheSender) {
    TestWindow window(reports);
    window.answer = [] { return 42; };
    EXPECT_EQ(42, SendMessageA(window.Handle(), kQuestion, 0, 0));
    window.answer = [] { return std::nullopt; };
    EXPECT_EQ(0, SendMessageA(window.Handle(), kQuestion, 0, 0)) << "the system's own handling";
}

TEST_F(WindowBaseTest, WhatAHandlerThrowsIsReportedAndTheMessageCountsAsHandled) {
    TestWindow window(reports);
    window.answer = []() -> std::optional<LRESULT> { throw RunTimeError(RunTimeError::kOverflow); };
    EXPECT_EQ(0, SendMessageA(window.Handle(), kQuestion, 0, 0));
    window.answer = []() -> std::optional<LRESULT> { throw std::bad_alloc(); };
    EXPECT_EQ(0, SendMessageA(window.Handle(), kQuestion, 0, 0));
    EXPECT_EQ((std::vector<Reported>{{window.Handle(), RunTimeError::kOverflow},
                                     {window.Handle(), RunTimeError::kOutOfMemory}}),
              reports);
}

TEST_F(WindowBaseTest, AHandlerMayDestroyTheObjectAndThenFail) {
    auto window = std::make_unique<TestWindow>(reports);
    const HWND handle = window->Handle();
    window->answer = [&]() -> std::optional<LRESULT> {
        window.reset();
        throw RunTimeError(RunTimeError::kOverflow);
    };
    EXPECT_EQ(0, SendMessageA(handle, kQuestion, 0, 0));
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_EQ((std::vector<Reported>{{nullptr, RunTimeError::kOverflow}}), reports);
}

TEST_F(WindowBaseTest, AWindowThatHasGoneIsForgotten) {
    TestWindow window(reports);
    const HWND handle = window.Handle();
    window.DestroyOwnWindow();
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_EQ(nullptr, window.Handle());
}

TEST_F(WindowBaseTest, ABirthAndADeathThatAreNoneAreNotHeard) {
    TestWindow window(reports);
    const HWND handle = window.Handle();
    std::vector<UINT> heard;
    window.heard = &heard;
    CREATESTRUCTA creation = {};
    creation.lpCreateParams = &creation;
    EXPECT_EQ(FALSE, SendMessageA(handle, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&creation)));
    SendMessageA(handle, WM_DESTROY, 0, 0);
    SendMessageA(handle, WM_NCDESTROY, 0, 0);
    EXPECT_TRUE(heard.empty());
    SendMessageA(handle, WM_CLOSE, 0, 0);
    EXPECT_EQ(std::vector<UINT>{WM_CLOSE}, heard);
    EXPECT_TRUE(IsWindow(handle));
    EXPECT_EQ(handle, window.Handle());
    window.answer = [] { return 42; };
    EXPECT_EQ(42, SendMessageA(handle, kQuestion, 0, 0));
}

TEST_F(WindowBaseTest, AnObjectThatGoesHearsNothingOfItsWindowsEnd) {
    std::vector<UINT> heard;
    auto window = std::make_unique<TestWindow>(reports);
    window->heard = &heard;
    window.reset();
    EXPECT_TRUE(heard.empty());
}

TEST(Commands, RunTheHandlerOfTheControlAndTheNotification) {
    struct Form {
        std::vector<int> ran;
    } form;
    constexpr Command<Form> commands[] = {{100, BN_CLICKED, [](Form& each) { each.ran.push_back(1); }},
                                          {101, BN_CLICKED, [](Form& each) { each.ran.push_back(2); }},
                                          {101, EN_CHANGE, [](Form& each) { each.ran.push_back(3); }}};
    RunCommand(commands, form, 101, EN_CHANGE);
    RunCommand(commands, form, 100, EN_CHANGE);
    RunCommand(commands, form, 102, BN_CLICKED);
    RunCommand(commands, form, 100, BN_CLICKED);
    EXPECT_EQ((std::vector<int>{3, 1}), form.ran);
}

class Listener final : public SubclassedControl {
 public:
    explicit Listener(HWND control) { Subclass(control); }
    using SubclassedControl::Original;
    using SubclassedControl::Subclassed;
    int heard = 0;
    bool answers = false;

 private:
    std::optional<LRESULT> OnControlMessage(UINT message, WPARAM /*wParam*/,
                                            LPARAM /*lParam*/) noexcept override {
        if (message != WM_GETTEXTLENGTH) {
            return std::nullopt;
        }
        ++heard;
        return answers ? std::optional<LRESULT>(99) : std::nullopt;
    }
};

struct SubclassedControlTest : testing::Test {
    ~SubclassedControlTest() override { DestroyWindow(control); }
    LRESULT Length() const { return SendMessageA(control, WM_GETTEXTLENGTH, 0, 0); }
    HWND control =
        CreateWindowExA(0, "Static", "text", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
};

TEST_F(SubclassedControlTest, HearsAMessageFirst) {
    Listener listener(control);
    EXPECT_EQ(4, Length());
    EXPECT_EQ(1, listener.heard);
    listener.answers = true;
    EXPECT_EQ(99, Length());
    EXPECT_EQ(4, listener.Original(WM_GETTEXTLENGTH, 0, 0));
    EXPECT_EQ(2, listener.heard);
}

TEST_F(SubclassedControlTest, LeavesTheControlAsItWas) {
    { const Listener listener(control); }
    EXPECT_EQ(4, Length());
    EXPECT_EQ(0, GetWindowLongA(control, GWL_USERDATA));
}

TEST_F(SubclassedControlTest, TheControlMayGoFirst) {
    const Listener listener(control);
    DestroyWindow(control);
    EXPECT_EQ(nullptr, listener.Subclassed());
}

}  // namespace
}  // namespace kestrelguard
