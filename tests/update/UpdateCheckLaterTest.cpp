#include <gtest/gtest.h>

#include "runtime/RunTimeError.h"
#include "update/UpdateWorld.h"

// What the update check leaves behind: the settings after a version reply, and its marks for a second
// look-up.

namespace kestrelguard {
namespace {

class UpdateSettingsTest : public testing::Test, protected UpdateWorld {};

TEST_F(UpdateSettingsTest, AreWrittenOnceAVersionReplyWasAccepted) {
    LookUpAndConnect();
    EXPECT_EQ(program.settingsWritten, 0);
    bool offered = false;
    bool busy = true;
    std::size_t boxesBefore = 1;
    program.whenWritten = [&] {
        offered = check.Data().updateOffered;
        busy = Busy();
        boxesBefore = boxes.shown.size();
    };
    Reply(L":'/|ZEV_PRODLI9.0.0");
    EXPECT_EQ(program.settingsWritten, 1);
    EXPECT_TRUE(offered);
    EXPECT_FALSE(busy);
    EXPECT_EQ(boxesBefore, 0U) << "before the notice";
    EXPECT_EQ(boxes.shown.size(), 1U);
}

TEST_F(UpdateSettingsTest, AreWrittenThoughNothingNewerIsOffered) {
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI2.0.113");
    EXPECT_EQ(program.settingsWritten, 1);
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(UpdateSettingsTest, AreNotWrittenForAnotherReplyNorForASecondOne) {
    LookUpAndConnect();
    Reply(L"ZEV_PRODLI9.0.0");
    EXPECT_EQ(program.settingsWritten, 0);
    Reply(L":'/|ZEV_PRODLI9.0.0");
    Reply(L":'/|ZEV_PRODLI9.0.0");
    EXPECT_EQ(program.settingsWritten, 1);
}

TEST_F(UpdateSettingsTest, ThatCannotBeWrittenKeepNobodyFromTheNotice) {
    LookUpAndConnect();
    program.whenWritten = [] { throw RunTimeError(RunTimeError::kPermissionDenied); };
    Reply(L":'/|ZEV_PRODLI9.0.0");
    EXPECT_EQ(boxes.shown.size(), 1U);
    EXPECT_TRUE(check.Data().updateOffered);
}

class SecondLookupTest : public testing::Test, protected UpdateWorld {
 protected:
    void AnHourLater() { clock.now += 3601; }
};

/// The first look-up got an answer; the second one's silence is a failed connection even so.
TEST_F(SecondLookupTest, WithoutAReplyEndsTheCheckLikeTheFirst) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
    ASSERT_FALSE(Busy());
    AnHourLater();
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    ASSERT_TRUE(Busy());
    check.ZevEvents().OnClose();
    EXPECT_FALSE(Busy());
}

/// The same for the version query: what the first server said is no answer of the second one.
TEST_F(SecondLookupTest, WithASilentVersionServerEndsTheCheckLikeTheFirst) {
    LookUpAndConnect();
    Reply(L"something else");
    check.ZevPliEvents().OnError(10054, L"reset");
    ASSERT_FALSE(Busy());
    check.ConnectUpdateServer();
    check.ZevPliEvents().OnConnect();
    // Busy again as the look-up would have set it.
    AnHourLater();
    check.DocumentComplete(kPage);
    ASSERT_TRUE(Busy());
    check.ZevPliEvents().OnClose();
    EXPECT_FALSE(Busy());
}

}  // namespace
}  // namespace kestrelguard
