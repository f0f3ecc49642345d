#include "update/UpdateCheckFixture.h"

#include <string>
#include <vector>

#include "runtime/Maker.h"
#include "runtime/Text.h"

namespace kestrelguard {
namespace {

// --- the version reply

TEST_F(UpdateCheckTest, ANewerVersionShowsTheNotice) {
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI2.0.114");
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].caption, L"Kestrelguard Update Available!");
    EXPECT_EQ(boxes.shown[0].text,
              L"There is a newer version of Kestrelguard available.\r\n\r\nUpdate to version 2.0.114 Now?");
    EXPECT_EQ(boxes.shown[0].style, 69696U);
    EXPECT_TRUE(check.Data().updateOffered);
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, TheOkButtonStartsNothing) {
    boxes.answer = 1;
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI2.0.114");
    EXPECT_EQ(boxes.shown.size(), 1U);
    EXPECT_TRUE(program.started.empty());
}

TEST_F(UpdateCheckTest, OnlyAYesThatTheBoxCannotGiveWouldStartTheUpdater) {
    boxes.answer = 6;
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI 2.0.114 ");
    EXPECT_EQ(program.started, std::vector<std::wstring>{L"/v2.0.114 /tKestrelguard"});
}

TEST_F(UpdateCheckTest, ATextThatIsNoVersionNeverReachesACommandLine) {
    boxes.answer = 6;
    for (const wchar_t* const offered : {L"9 & del", L"9\" /x", L"9\r\n", L"a.b", L"9%s%n", L"..\\9"}) {
        FakeWinsock second;
        UpdateCheck other{With(zev, second), Fresh()};
        second.data = L":'/|ZEV_PRODLI" + std::wstring(offered);
        other.ZevPliEvents().OnDataArrival(1);
        EXPECT_TRUE(other.Data().updateOffered);
    }
    EXPECT_TRUE(program.started.empty());
}

struct OfferCase {
    const wchar_t* offered;
    bool shown;
};

class Offers : public UpdateCheckTest, public testing::WithParamInterface<OfferCase> {};

TEST_P(Offers, AreComparedAsPlainText) {
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI" + std::wstring(GetParam().offered));
    EXPECT_EQ(!boxes.shown.empty(), GetParam().shown);
    EXPECT_TRUE(check.Data().updateOffered);
    EXPECT_FALSE(Busy());
}

INSTANTIATE_TEST_SUITE_P(Versions, Offers,
                         testing::Values(OfferCase{L"2.0.113", false}, OfferCase{L"  2.0.113  ", false},
                                         OfferCase{L"2.0.99", true}, OfferCase{L"2.0.114", true},
                                         OfferCase{L"2.0.112", false}, OfferCase{L"2.0.1131", true},
                                         OfferCase{L"2.0.11", false}, OfferCase{L"10.0.0", false},
                                         OfferCase{L"3", true}, OfferCase{L"2", false}, OfferCase{L"", false},
                                         OfferCase{L"abc", true}));

TEST_F(UpdateCheckTest, NoFurtherCheckStartsOnceAReplyWasReceived) {
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI2.0.113");
    clock.now += 10'000;
    zev.TakeCalls();
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.TakeCalls(), Calls());
    EXPECT_FALSE(Busy());
}

class OtherReplies : public UpdateCheckTest, public testing::WithParamInterface<std::wstring> {};

TEST_P(OtherReplies, AreIgnoredAndLeaveTheCheckBusy) {
    LookUpAndConnect();
    Reply(GetParam());
    check.ZevPliEvents().OnClose();
    EXPECT_TRUE(boxes.shown.empty());
    EXPECT_FALSE(check.Data().updateOffered);
    EXPECT_TRUE(Busy());
}

INSTANTIATE_TEST_SUITE_P(Texts, OtherReplies,
                         testing::Values(L"x", L":'/|ZEV_PRODL", L":'/|zev_prodli9", L"ZEV_PRODLI:'/|9",
                                         L" :'/|ZEV_PRODLI9", L":'/|ZEV_PRODAI9", std::wstring(20, L'\0'),
                                         L"HTTP/1.1 200 OK\r\n\r\n:'/|ZEV_PRODLI9"));

TEST_F(UpdateCheckTest, AReplySplitWithinTheTokenIsIgnored) {
    const std::wstring reply = L":'/|ZEV_PRODLI9.0.0";
    for (std::size_t cut = 1; cut < 14; ++cut) {
        FakeWinsock second;
        UpdateCheck other{With(zev, second), Fresh()};
        for (const std::wstring& piece : {reply.substr(0, cut), reply.substr(cut)}) {
            second.data = piece;
            other.ZevPliEvents().OnDataArrival(static_cast<std::int32_t>(piece.size()));
        }
        EXPECT_FALSE(other.Data().updateOffered) << cut;
    }
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(UpdateCheckTest, AReplySplitWithinTheVersionOffersItsBeginning) {
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI2.0.1");
    Reply(L"14");
    EXPECT_TRUE(boxes.shown.empty());
    EXPECT_TRUE(check.Data().updateOffered);
}

TEST_F(UpdateCheckTest, AReadFailureOfTheReplyEndsTheCheck) {
    LookUpAndConnect();
    zevPli.errors["GetData"] = 10054;
    Reply(L":'/|ZEV_PRODLI9");
    EXPECT_EQ(zevPli.calls.back(), "Close");
    EXPECT_FALSE(Busy());
    EXPECT_FALSE(check.Data().updateOffered);
}

TEST_F(UpdateCheckTest, FurtherRepliesPileUpNoNotices) {
    boxes.whileShown = [&] {
        boxes.whileShown = nullptr;
        Reply(L":'/|ZEV_PRODLI9.0.1");
        EXPECT_FALSE(Busy());
    };
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI9.0.0");
    Reply(L":'/|ZEV_PRODLI9.0.2");
    EXPECT_EQ(boxes.shown.size(), 1U);
}

TEST_F(UpdateCheckTest, AHugeOfferShowsAShortNotice) {
    LookUpAndConnect();
    Reply(L":'/|ZEV_PRODLI" + std::wstring(1'000'000, L'9'));
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(boxes.shown[0].text,
              L"There is a newer version of Kestrelguard available.\r\n\r\nUpdate to version " +
                  std::wstring(64, L'9') + L" Now?");
}

TEST_F(UpdateCheckTest, FormatsAndNulsInAnOfferAreJustText) {
    const std::wstring odd = std::wstring(L"%s%n{0}\0%1", 10);
    UpdateData old = Fresh();
    old.versionText = L"!";
    UpdateCheck other{With(zev, zevPli), old};
    zevPli.data = L":'/|ZEV_PRODLI" + odd;
    other.ZevPliEvents().OnDataArrival(24);
    ASSERT_EQ(boxes.shown.size(), 1U);
    EXPECT_NE(boxes.shown[0].text.find(odd + L" Now?"), std::wstring::npos);
}

TEST_F(UpdateCheckTest, AnEndlessReplyIsClosed) {
    LookUpAndConnect();
    const std::wstring chunk(65'536, L'9');
    for (int chunks = 0; zevPli.calls.back() != "Close" && chunks < 1000; ++chunks) {
        Reply(chunk);
    }
    EXPECT_EQ(zevPli.calls.back(), "Close");
    EXPECT_TRUE(Busy()) << "an ignored reply";
}

}  // namespace
}  // namespace kestrelguard
