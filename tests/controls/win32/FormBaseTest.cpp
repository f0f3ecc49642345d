#include "controls/win32/FormBase.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "controls/win32/SubclassedControl.h"

namespace kestrelguard {
namespace {

constexpr UINT kChangeUIState = 0x0127;
constexpr WPARAM kInitialize = 3;
constexpr WPARAM kClearFocusAndKeys = MAKEWPARAM(2, 3);

enum Id : int { kFirst = 100, kField, kOne, kOther, kThird, kButton };

/// A form with a field, three option buttons and a button.
class SmallForm final : public FormBase {
 public:
    SmallForm() : FormBase({}) {
        CreateForm({.name = "SmallForm", .icons = {Big(), Little()}},
                   {.style = WS_OVERLAPPEDWINDOW, .width = 300, .height = 300});
        Make(kField, "Edit", WS_TABSTOP);
        Make(kOne, "Button", BS_AUTORADIOBUTTON | WS_GROUP | WS_TABSTOP);
        Make(kOther, "Button", BS_AUTORADIOBUTTON);
        Make(kThird, "Button", BS_AUTORADIOBUTTON);
        Make(kButton, "Button", BS_PUSHBUTTON | WS_GROUP | WS_TABSTOP);
    }

    static HICON Big() { return LoadIconA(nullptr, MAKEINTRESOURCEA(32512)); }
    static HICON Little() { return LoadIconA(nullptr, MAKEINTRESOURCEA(32514)); }
    HWND Window() const { return Handle(); }
    HWND Control(int id) const { return GetDlgItem(Handle(), id); }
    void Keep() const { KeepTitleBarOnScreen(); }
    std::vector<WPARAM> uiStates;
    std::vector<int> turns;

 private:
    void Make(int id, const char* type, DWORD style) {
        const int top = (id - kFirst) * 30;
        CreateControl(
            {.id = id, .windowClass = type, .text = L"x", .style = style, .place = {0, top, 100, top + 25}},
            Handle(), nullptr);
    }
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == kChangeUIState) {
            uiStates.push_back(wParam);
        }
        return FormBase::OnMessage(message, wParam, lParam);
    }
    int DefaultButton(HWND focus) const override { return focus == Control(kField) ? kButton : 0; }
    HWND FirstFocus() const override { return Control(kField); }
    bool TurnPage(int step) override {
        turns.push_back(step);
        return true;
    }
};

class FormBaseTest : public testing::Test {
 protected:
    void Show() { ShowWindow(form.Window(), SW_SHOW); }
    /// A key as it comes out of the queue, with those keys held down.
    void Press(HWND window, WPARAM key, std::initializer_list<int> held = {}) {
        BYTE state[256] = {};
        for (const int one : held) {
            state[one] = 0x80;
        }
        SetKeyboardState(state);
        MSG message = {window, WM_KEYDOWN, key, 1, 0, {}};
        DialogWindows::Dispatch(message);
        BYTE none[256] = {};
        SetKeyboardState(none);
    }
    void Choose(int id) {
        for (const int button : {kOne, kOther, kThird}) {
            SendMessageA(form.Control(button), BM_SETCHECK, button == id ? BST_CHECKED : BST_UNCHECKED, 0);
        }
    }
    LONG TypeOf(int id) const { return GetWindowLongA(form.Control(id), GWL_STYLE) & BS_TYPEMASK; }

    SmallForm form;
};

TEST_F(FormBaseTest, TheFocusIsHiddenUntilTheFirstKey) {
    Show();
    EXPECT_EQ(form.uiStates, (std::vector<WPARAM>{kInitialize}));
    ShowWindow(form.Window(), SW_HIDE);
    Show();
    EXPECT_EQ(form.uiStates, (std::vector<WPARAM>{kInitialize})) << "once";
    Press(form.Control(kField), 'A');
    ASSERT_LE(2U, form.uiStates.size());
    EXPECT_EQ(form.uiStates[1], kClearFocusAndKeys);
}

TEST_F(FormBaseTest, TheWindowHasItsIconInBothSizes) {
    const auto icon = [this](WPARAM size) {
        return reinterpret_cast<HICON>(SendMessageA(form.Window(), WM_GETICON, size, 0));
    };
    EXPECT_EQ(icon(ICON_BIG), SmallForm::Big());
    EXPECT_EQ(icon(ICON_SMALL), SmallForm::Little());
}

TEST_F(FormBaseTest, ItComesToLieOnTheScreen) {
    RECT work = {};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    const auto kept = [&](int x, int y, int width, int height) {
        SetWindowPos(form.Window(), nullptr, x, y, width, height, SWP_NOZORDER);
        form.Keep();
        RECT place = {};
        GetWindowRect(form.Window(), &place);
        return std::pair<int, int>(place.left, place.top);
    };
    EXPECT_EQ(kept(work.left + 10, work.top + 20, 200, 100),
              std::pair(int(work.left) + 10, int(work.top) + 20));
    EXPECT_EQ(kept(work.left - 10, work.top - 20, 200, 100), std::pair(int(work.left), int(work.top)));
    EXPECT_EQ(kept(work.right - 10, work.bottom - 20, 200, 100),
              std::pair(int(work.right) - 200, int(work.bottom) - 100));
    EXPECT_EQ(kept(50, 50, work.right - work.left + 1, 100), std::pair(int(work.left), 50))
        << "cut at its right";
}

/// Counts what a control is told of changed colours.
class ColourWatch final : SubclassedControl {
 public:
    explicit ColourWatch(HWND control) { Subclass(control); }
    int told = 0;

 private:
    std::optional<LRESULT> OnControlMessage(UINT message, WPARAM, LPARAM) noexcept override {
        told += message == WM_SYSCOLORCHANGE ? 1 : 0;
        return std::nullopt;
    }
};

TEST_F(FormBaseTest, ChangedColoursAreToldToTheControls) {
    const ColourWatch watch(form.Control(kField));
    SendMessageA(form.Window(), WM_SYSCOLORCHANGE, 0, 0);
    EXPECT_EQ(watch.told, 1);
}

TEST_F(FormBaseTest, LabelsAreWrittenInTheColoursOfTheForm) {
    const HDC context = GetDC(form.Window());
    SetTextColor(context, RGB(1, 2, 3));
    const LRESULT brush = SendMessageA(form.Window(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context),
                                       reinterpret_cast<LPARAM>(form.Control(kField)));
    EXPECT_EQ(reinterpret_cast<HBRUSH>(brush), GetSysColorBrush(COLOR_BTNFACE));
    EXPECT_EQ(GetTextColor(context), GetSysColor(COLOR_BTNTEXT));
    EXPECT_EQ(GetBkColor(context), GetSysColor(COLOR_BTNFACE));
    ReleaseDC(form.Window(), context);
}

TEST_F(FormBaseTest, KeysTurnPages) {
    Show();
    const HWND field = form.Control(kField);
    Press(field, VK_TAB, {VK_CONTROL});
    Press(field, VK_TAB, {VK_CONTROL, VK_SHIFT});
    Press(field, VK_NEXT, {VK_CONTROL});
    Press(field, VK_PRIOR, {VK_CONTROL});
    EXPECT_EQ(form.turns, (std::vector<int>{1, -1, 1, -1}));
    Press(field, VK_NEXT);
    Press(field, VK_NEXT, {VK_CONTROL, VK_MENU});
    EXPECT_EQ(form.turns.size(), 4U);
}

TEST_F(FormBaseTest, AnOptionButtonGetsTheFocusBackOnlyWhileItIsSelected) {
    Show();
    Choose(kOther);
    SetFocus(form.Control(kOther));
    SendMessageA(form.Window(), WM_ACTIVATE, WA_INACTIVE, 0);
    SetFocus(nullptr);
    SetFocus(form.Window());
    EXPECT_EQ(GetFocus(), form.Control(kOther));
    Choose(kOne);
    SetFocus(nullptr);
    SetFocus(form.Window());
    EXPECT_EQ(GetFocus(), form.Control(kOne));
    Choose(0);
    SetFocus(nullptr);
    SetFocus(form.Window());
    EXPECT_EQ(GetFocus(), form.Control(kField)) << "nowhere to go back to";
}

TEST_F(FormBaseTest, EnterBelongsToTheButtonWithTheFocus) {
    Show();
    const auto forEnter = [this] { return SendMessageA(form.Window(), DM_GETDEFID, 0, 0); };
    SetFocus(form.Control(kOne));
    EXPECT_EQ(forEnter(), 0);
    Press(form.Control(kOne), 'A');
    EXPECT_EQ(TypeOf(kButton), BS_PUSHBUTTON);
    SetFocus(form.Control(kField));
    EXPECT_EQ(forEnter(), MAKELRESULT(kButton, DC_HASDEFID));
    Press(form.Control(kField), 'A');
    EXPECT_EQ(TypeOf(kButton), BS_DEFPUSHBUTTON);
    SetFocus(form.Control(kOne));
    Press(form.Control(kOne), 'A');
    EXPECT_EQ(TypeOf(kButton), BS_PUSHBUTTON);
    SetFocus(form.Control(kButton));
    EXPECT_EQ(forEnter(), MAKELRESULT(kButton, DC_HASDEFID));
}

}  // namespace
}  // namespace kestrelguard
