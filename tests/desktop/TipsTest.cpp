// The tool tips of the main window.

#include <windows.h>

#include <string>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

class TipsTest : public DesktopTest {
 protected:
    std::wstring Tip(HWND control) const { return TipOf(m_guard.Window(), control); }

    RunningGuard m_guard{"MIN/:/:n\r\n"};
};

TEST_F(TipsTest, TheFieldForANewSiteSaysWhatToDo) {
    const auto edits = m_guard.Edits();
    ASSERT_EQ(3u, edits.size());
    EXPECT_EQ(L"", TextOf(edits[0]));
    EXPECT_EQ(L"Type a new Site to prevent and click Add", Tip(edits[0]));
    EXPECT_EQ(L"", Tip(edits[1]));
    EXPECT_EQ(L"", Tip(edits[2]));
}

TEST_F(TipsTest, EachBoxOfTheCleaningSaysWhatItIncludes) {
    const auto boxes = m_guard.WashBoxes();
    ASSERT_EQ(3u, boxes.size());
    for (const HWND box : boxes) {
        EXPECT_EQ(L"Include in the automatic cleaning", Tip(box));
    }
}

TEST_F(TipsTest, TheButtonsHaveNone) {
    for (const wchar_t* caption : {L"Add", L"Remove", L"?", L"OK", L"Cancel", L"Apply"}) {
        ASSERT_NE(nullptr, m_guard.Button(caption));
        EXPECT_EQ(L"", Tip(m_guard.Button(caption))) << caption;
    }
}

}  // namespace
}  // namespace kestrelguard::testing
