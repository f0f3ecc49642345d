#include "update/UpdateCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/Maker.h"
#include "runtime/Text.h"
#include "update/UpdateWorld.h"

namespace kestrelguard {
namespace {

using Calls = std::vector<std::string>;

constexpr std::int64_t kSomeDay = 3'900'000'000;

struct FakeVersion : WindowsVersionSource {
    std::optional<WindowsVersion> version;
    std::optional<WindowsVersion> Version() const override { return version; }
};

class UpdateCheckTest : public testing::Test, protected UpdateWorld {};

// --- the trigger

TEST_F(UpdateCheckTest, PagesFromElsewhereNeverContactTheNetwork) {
    for (const wchar_t* const address :
         {L"file:///C:/pages/start.htm", L"C:\\pages\\start.htm", L"about:blank",
          L"https://www.bank.example/", L"HTTP://WWW.SITE.EXAMPLE/", L"http:/one.slash", L""}) {
        check.DocumentComplete(address);
    }
    EXPECT_EQ(zev.calls, Calls());
    EXPECT_EQ(zevPli.calls, Calls());
    EXPECT_FALSE(Busy());
    EXPECT_EQ(check.Data().lastLookupTime, 0);
}

TEST_F(UpdateCheckTest, AnAddressThatContainsTheSchemeAnywhereStartsACheck) {
    check.DocumentComplete(L"about:to http://www.site.example/");
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, ALoadedPageStartsTheLookup) {
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.calls, (Calls{"RemoteHost", "RemotePort", "Connect"}));
    EXPECT_EQ(zev.remoteHost, maker::kWebServer);
    EXPECT_EQ(zev.remotePort, 80);
    EXPECT_EQ(messages.runs, 1);
    EXPECT_EQ(check.Data().lastLookupTime, kSomeDay);
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, TwoPagesWithinTheHourStartOneLookup) {
    check.DocumentComplete(kPage);
    check.DocumentComplete(kPage);
    EXPECT_EQ(std::count(zev.calls.begin(), zev.calls.end(), "Connect"), 1);
    // Also when the first check is over.
    check.ZevEvents().OnError(11001, L"");
    clock.now += 60;
    check.DocumentComplete(kPage);
    EXPECT_EQ(std::count(zev.calls.begin(), zev.calls.end(), "Connect"), 1);
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, ASecondPageDuringThePendingEventsDoesNothing) {
    messages.pending = [&] { check.DocumentComplete(kPage); };
    check.DocumentComplete(kPage);
    EXPECT_EQ(std::count(zev.calls.begin(), zev.calls.end(), "Connect"), 1);
    EXPECT_EQ(messages.runs, 1);
}

TEST_F(UpdateCheckTest, TheNextLookupComesAfter3601Seconds) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnError(11001, L"");
    zev.TakeCalls();

    clock.now = kSomeDay + 3600;
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.TakeCalls(), Calls());
    EXPECT_FALSE(Busy());
    EXPECT_EQ(messages.runs, 1) << "a throttled look-up does not even run pending events";
    EXPECT_EQ(check.Data().lastLookupTime, kSomeDay);

    clock.now = kSomeDay + 3601;
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.TakeCalls(), (Calls{"RemoteHost", "RemotePort", "Connect"}));
    EXPECT_EQ(check.Data().lastLookupTime, kSomeDay + 3601);
}

TEST_F(UpdateCheckTest, AClockThatWasSetBackHoldsTheLookup) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnError(11001, L"");
    clock.now = kSomeDay - 100'000;
    zev.TakeCalls();
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.TakeCalls(), Calls());
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, AFailingConnectEndsTheCheck) {
    zev.errors["Connect"] = 10050;
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.calls, (Calls{"RemoteHost", "RemotePort", "Connect", "Close"}));
    EXPECT_FALSE(Busy());
    EXPECT_EQ(messages.runs, 1);
}

TEST_F(UpdateCheckTest, EveryStepOfTheLookupFailsOnItsOwn) {
    for (const char* const step : {"RemoteHost", "RemotePort", "Connect", "Close"}) {
        zev.errors[step] = 40020;
    }
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.calls, (Calls{"RemoteHost", "RemotePort", "Connect", "Close"}));
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, ALookupConnectionThatFailsLaterEndsTheCheck) {
    check.DocumentComplete(kPage);
    zev.TakeCalls();
    check.ZevEvents().OnError(10061, L"refused");
    EXPECT_EQ(zev.TakeCalls(), Calls{"Close"});
    EXPECT_FALSE(Busy());
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(UpdateCheckTest, ALookupConnectionThatEndsWithoutAReplyEndsTheCheck) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    check.ZevEvents().OnClose();
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, ALookupConnectionThatEndsHalfWayStaysBusy) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nonly this");
    check.ZevEvents().OnClose();
    EXPECT_TRUE(Busy());
}

// --- the request

TEST_F(UpdateCheckTest, TheRequestIsExact) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    EXPECT_EQ(zev.sent,
              L"GET /kg/login/ZEVkg.htm HTTP/1.1\r\n"
              L"Accept: */*\r\n"
              L"Host: " +
                  std::wstring(maker::kWebServer) +
                  L"\r\n"
                  L"Referer: Kestrelguard v2.0.113\r\n"
                  L"User-Agent: Kestrelguard v2.0.113\r\n"
                  L"\r\n");
}

TEST_F(UpdateCheckTest, ARequestThatCannotBeSentEndsTheCheckSilently) {
    check.DocumentComplete(kPage);
    zev.errors["SendData"] = 10054;
    check.ZevEvents().OnConnect();
    EXPECT_EQ(zev.calls.back(), "Close");
    EXPECT_FALSE(Busy());
}

// --- the look-up's reply

TEST_F(UpdateCheckTest, AReplyInOneChunkStartsTheVersionQuery) {
    LookUp();
    EXPECT_EQ(zev.calls.back(), "Close");
    EXPECT_EQ(check.Data().updateServer, L"update.kestrelguard.example");
    EXPECT_EQ(zevPli.calls, (Calls{"Close", "RemoteHost", "RemotePort", "LocalPort", "Connect"}));
    EXPECT_EQ(zevPli.remoteHost, L"update.kestrelguard.example");
    EXPECT_EQ(zevPli.remotePort, 26144);
    EXPECT_EQ(zevPli.localPort, 0);
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, ASplitBodyCompletesExactlyAtTheAnnouncedLength) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Length: 15\r\nServer: x\r\n\r\n10.9");
    EXPECT_EQ(check.Data().lookupBytes, 4);
    EXPECT_EQ(check.Data().lookupLength, 15);
    Arrive(L".8.7 ");
    Arrive(L"    ");
    EXPECT_TRUE(zevPli.calls.empty());
    Arrive(L"\r\n");
    EXPECT_EQ(zevPli.remoteHost, L"10.9.8.7");
    EXPECT_EQ(zev.calls.back(), "Close");
}

TEST_F(UpdateCheckTest, LineEndsAndOuterBlanksAreNoPartOfTheAddress) {
    LookUp(L"\r\n  update.\r\nkestrel guard.example \r\n ");
    EXPECT_EQ(check.Data().updateServer, L"update.kestrel guard.example");
}

TEST_F(UpdateCheckTest, AnOvershootNeverCompletes) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n10.9.8");
    Arrive(L".7");
    check.ZevEvents().OnClose();
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
    clock.now += 10'000;
    zev.TakeCalls();
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.TakeCalls(), Calls()) << "busy for the rest of the run";
}

TEST_F(UpdateCheckTest, AMissingPageEndsTheCheckQuietly) {
    for (const wchar_t* const status : {L"HTTP/1.1 404 Not Found", L"HTTP/1.1 404 NOT FOUND"}) {
        UpdateCheck other{With(zev, zevPli), Fresh()};
        other.DocumentComplete(kPage);
        other.ZevEvents().OnConnect();
        zev.data = std::wstring(status) + L"\r\nContent-Length: 4\r\nServer: x\r\n\r\ngone";
        other.ZevEvents().OnDataArrival(static_cast<std::int32_t>(zev.data.size()));
        EXPECT_FALSE(other.Data().checkBusy);
        EXPECT_EQ(zev.calls.back(), "Close");
    }
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(UpdateCheckTest, TheMissingPageMayBeTheBodysText) {
    LookUp(L"<h1>Error 404 not found</h1>");
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, AReadFailureClosesAndEndsTheCheck) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    zev.TakeCalls();
    zev.errors["GetData"] = 10054;
    check.ZevEvents().OnDataArrival(12);
    EXPECT_EQ(zev.TakeCalls(), (Calls{"GetData", "Close"}));
    EXPECT_EQ(check.Data().lookupBytes, 12) << "counted before it is read";
    EXPECT_EQ(check.Data().lookupBuffer, L"");
    EXPECT_FALSE(Busy());
}

struct LengthCase {
    const wchar_t* rest;
    std::int32_t length;
};

class ContentLength : public UpdateCheckTest, public testing::WithParamInterface<LengthCase> {};

TEST_P(ContentLength, IsTheLeadingDigitsOfSevenCharacters) {
    check.DocumentComplete(kPage);
    Arrive(L"Content-Length: " + std::wstring(GetParam().rest));
    EXPECT_EQ(check.Data().lookupLength, GetParam().length);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ContentLength,
    testing::Values(LengthCase{L"12\r\nServer: x\r\n\r\n", 12}, LengthCase{L"1234567\r\n\r\n", 1234567},
                    LengthCase{L"123456789\r\n\r\n", 1234567}, LengthCase{L"99999999999999\r\n\r\n", 9999999},
                    LengthCase{L"-5\r\nServer: x\r\n\r\n", 0}, LengthCase{L"+5\r\nServer: x\r\n\r\n", 0},
                    LengthCase{L"1e3\r\nServer: x\r\n\r\n", 1}, LengthCase{L"2.5\r\nServer: x\r\n\r\n", 2},
                    LengthCase{L" 12\r\nServer: x\r\n\r\n", 0}, LengthCase{L"", 0}, LengthCase{L"12", 12},
                    LengthCase{L"x", 0}, LengthCase{L"12\rServer", 12}, LengthCase{L"12\nServer", 12},
                    // At the header's end digits of the body join the number.
                    LengthCase{L"12\r\n\r\n3 and more", 123}, LengthCase{L"12\r\n\r\nbody", 12}));

TEST_F(UpdateCheckTest, ANulEndsTheNumber) {
    check.DocumentComplete(kPage);
    Arrive(
        std::wstring(L"Content-Length: 1\0"
                     L"2\r\n\r\n",
                     23));
    EXPECT_EQ(check.Data().lookupLength, 1);
}

TEST_F(UpdateCheckTest, HeaderBytesAreTakenOffTheCount) {
    check.DocumentComplete(kPage);
    // 24 characters up to the end of the header, which begins at position 21.
    Arrive(L"Content-Length: 1234\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupBytes, 4);
}

TEST_F(UpdateCheckTest, AHeaderWithoutItsEndTakesThreeOffTheCount) {
    check.DocumentComplete(kPage);
    Arrive(L"Content-Length: 1234\r\n");
    EXPECT_EQ(check.Data().lookupBytes, 22 - 3);
    Arrive(L"\r\nbody");
    EXPECT_EQ(check.Data().lookupBytes, 22 - 3 + 6);
    EXPECT_EQ(check.Data().lookupLength, 1234);
}

TEST_F(UpdateCheckTest, AHeaderBeforeTheChunkOfTheLengthStaysInTheCount) {
    check.DocumentComplete(kPage);
    Arrive(L"HTTP/1.1 200 OK\r\n");
    Arrive(L"Content-Length: 4\r\nA: b\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupBytes, 17 + 4);
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, AHeaderEndBeforeTheLengthOfTheSameChunkCounts) {
    check.DocumentComplete(kPage);
    Arrive(L"\r\n\r\nContent-Length: 9\r\n\r\n");
    EXPECT_EQ(check.Data().lookupBytes, 25 - 4);
}

TEST_F(UpdateCheckTest, ALengthSplitWithinItsNameIsNotSeen) {
    check.DocumentComplete(kPage);
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Len");
    Arrive(L"gth: 4\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupLength, 0);
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, TheNameOfTheLengthIsCaseSensitive) {
    check.DocumentComplete(kPage);
    Arrive(L"HTTP/1.1 200 OK\r\ncontent-length: 4\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupLength, 0);
    EXPECT_TRUE(Busy());
}

// By the numbered arithmetic a page cut in two completes exactly when the first piece holds the whole
// header, or when the second one holds the name of the length and the header's bytes before it happen to
// even out. Here they never do.
TEST_F(UpdateCheckTest, APageCutAnywhereCompletesExactlyWhenTheFirstPieceHoldsTheHeader) {
    const std::wstring page = Page(L"update.kestrelguard.example");
    const std::size_t headerSize = page.find(L"\r\n\r\n") + 4;
    for (std::size_t cut = 1; cut < page.size(); ++cut) {
        FakeWinsock first;
        FakeWinsock second;
        UpdateCheck one{With(first, second), Fresh()};
        one.DocumentComplete(kPage);
        one.ZevEvents().OnConnect();
        for (const std::wstring& piece : {page.substr(0, cut), page.substr(cut)}) {
            first.data = piece;
            one.ZevEvents().OnDataArrival(static_cast<std::int32_t>(piece.size()));
        }
        EXPECT_EQ(second.remoteHost == L"update.kestrelguard.example", cut >= headerSize) << cut;
        EXPECT_TRUE(one.Data().checkBusy) << cut;
        EXPECT_EQ(one.Data().lookupBuffer, page) << cut;
    }
}

TEST_F(UpdateCheckTest, APageByteByByteStaysBusy) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    const std::wstring page = Page(L"update.kestrelguard.example");
    for (const wchar_t byte : page) {
        Arrive(std::wstring(1, byte));
    }
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
    EXPECT_EQ(check.Data().lookupBuffer, page);
}

TEST_F(UpdateCheckTest, WithoutAHeaderEndTheAddressBeginsAtTheFourthCharacter) {
    check.DocumentComplete(kPage);
    // 18 bytes, no end of the header: 18 - 3 = 15.
    Arrive(L"Content-Length: 15");
    EXPECT_EQ(check.Data().updateServer, L"tent-Length: 15");
    EXPECT_EQ(zevPli.remoteHost, L"tent-Length: 15");
}

TEST_F(UpdateCheckTest, AnEmptyBodyLeavesAnEmptyServer) {
    zevPli.errors["Connect"] = 10049;
    LookUp(L"");
    EXPECT_EQ(zevPli.calls, (Calls{"Close", "RemoteHost", "RemotePort", "LocalPort", "Connect", "Close"}));
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, ASecondLookupAppends) {
    LookUp(L"one.example");
    const std::wstring first = check.Data().lookupBuffer;
    check.ZevPliEvents().OnError(10061, L"refused");
    EXPECT_FALSE(Busy());
    zevPli.TakeCalls();

    clock.now += 3601;
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(Page(L"two.example"));
    EXPECT_EQ(check.Data().lookupBuffer, first + Page(L"two.example"));
    EXPECT_EQ(check.Data().lookupBytes, 22) << "both bodies";
    EXPECT_EQ(zevPli.TakeCalls(), Calls());
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, ASecondLookupAfterOneWithoutDataCompletes) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnError(10061, L"refused");
    clock.now += 3601;
    LookUp();
    EXPECT_EQ(zevPli.remoteHost, L"update.kestrelguard.example");
}

TEST_F(UpdateCheckTest, AnEndlessHeaderIsNotCollectedForEver) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    const std::wstring line(4096, L'x');
    int chunks = 0;
    while (zev.calls.back() != "Close" && chunks < 10'000) {
        Arrive(line);
        ++chunks;
    }
    EXPECT_EQ(zev.calls.back(), "Close");
    EXPECT_LE(check.Data().lookupBuffer.size(), UpdateCheck::kTolerance);
    EXPECT_GT(check.Data().lookupBuffer.size(), UpdateCheck::kTolerance - 2 * line.size());
    EXPECT_TRUE(Busy()) << "a reply whose count never matches";
    EXPECT_TRUE(zevPli.calls.empty());
}

TEST_F(UpdateCheckTest, AnEndlessBodyIsNotCollectedForEver) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Length: 9999999\r\n\r\n");
    const std::wstring chunk(65'536, L'b');
    for (int chunks = 0; zev.calls.back() != "Close" && chunks < 1000; ++chunks) {
        Arrive(chunk);
    }
    EXPECT_EQ(zev.calls.back(), "Close");
    EXPECT_LE(check.Data().lookupBuffer.size(), UpdateCheck::kTolerance);
    EXPECT_TRUE(Busy());
}

// --- connecting to the update server

TEST_F(UpdateCheckTest, AFailingSecondConnectEndsTheCheck) {
    zevPli.errors["Connect"] = 10050;
    LookUp();
    EXPECT_EQ(zevPli.calls.back(), "Close");
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, EveryStepOfTheSecondConnectFailsOnItsOwn) {
    for (const char* const step : {"Close", "RemoteHost", "RemotePort", "LocalPort", "Connect"}) {
        zevPli.errors[step] = 40020;
    }
    LookUp();
    EXPECT_EQ(zevPli.calls, (Calls{"Close", "RemoteHost", "RemotePort", "LocalPort", "Connect", "Close"}));
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, OnlyAFailureOfConnectItselfEndsTheCheck) {
    for (const char* const step : {"Close", "RemoteHost", "RemotePort", "LocalPort"}) {
        zevPli.errors[step] = 40020;
    }
    LookUp();
    EXPECT_EQ(zevPli.calls, (Calls{"Close", "RemoteHost", "RemotePort", "LocalPort", "Connect"}));
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, TheTestSwitchLeadsToTheTestServer) {
    UpdateData data = Fresh();
    data.useTestServer = true;
    UpdateCheck other{With(zev, zevPli), data};
    other.ConnectUpdateServer();
    EXPECT_EQ(zevPli.remoteHost, maker::kTestServer);
    EXPECT_EQ(zevPli.remotePort, 26144);
    EXPECT_FALSE(check.Data().useTestServer);
}

TEST_F(UpdateCheckTest, AnErrorOfTheVersionQueryEndsTheCheck) {
    LookUp();
    zevPli.TakeCalls();
    check.ZevPliEvents().OnError(10061, L"refused");
    EXPECT_EQ(zevPli.TakeCalls(), Calls{"Close"});
    EXPECT_FALSE(Busy());
    EXPECT_FALSE(check.Data().updateOffered);
}

TEST_F(UpdateCheckTest, AVersionServerThatEndsWithoutAReplyEndsTheCheck) {
    LookUpAndConnect();
    check.ZevPliEvents().OnClose();
    EXPECT_FALSE(Busy());
}

// --- the report

TEST_F(UpdateCheckTest, TheReportIsExact) {
    locale.now = L"5/17/2004 3:05:09 PM";
    program.useCount = 1234567;
    LookUpAndConnect();
    EXPECT_EQ(
        zevPli.sent,
        L"ZEV_PRODAI:'/|KSG2.0.113:'/|XPPRO:'/|WORKBENCH:'/|5/17/2004 3:05:09 PM:'/|1234567:'/|10.1.2.3");
}

TEST_F(UpdateCheckTest, AReportThatCannotBeSentEndsTheCheckSilently) {
    for (const char* const step : {"LocalHostName", "LocalIP", "SendData"}) {
        FakeWinsock second;
        second.errors[step] = 10054;
        UpdateCheck other{With(zev, second), Fresh()};
        other.ConnectUpdateServer();
        other.ZevPliEvents().OnConnect();
        EXPECT_EQ(second.calls.back(), "Close") << step;
        EXPECT_FALSE(other.Data().checkBusy) << step;
        EXPECT_EQ(second.sent, step == std::string_view("SendData") ? L"" : second.sent);
    }
    EXPECT_TRUE(boxes.shown.empty());
}

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

// --- the Windows version

TEST_F(UpdateCheckTest, WinVersionFillsTheCode) {
    FakeVersion system;
    system.version = WindowsVersion{2, 5, 0, L"", 0, 1};
    UpdateCheck other{With(zev, zevPli), UpdateData{}};
    other.WinVersion(system);
    EXPECT_EQ(other.Data().windowsCode, L"00PRO");
}

TEST_F(UpdateCheckTest, WinVersionLeavesTheCodeWhenTheSystemRefuses) {
    UpdateCheck other{With(zev, zevPli), UpdateData{}};
    other.WinVersion(FakeVersion{});
    EXPECT_EQ(other.Data().windowsCode, L"");
    check.WinVersion(FakeVersion{});
    EXPECT_EQ(check.Data().windowsCode, L"XPPRO");
}

TEST_F(UpdateCheckTest, WinVersionGivesTheUnknownCode) {
    FakeVersion system;
    system.version = WindowsVersion{2, 10, 0, L"", 256, 1};
    UpdateCheck other{With(zev, zevPli), UpdateData{}};
    other.WinVersion(system);
    EXPECT_EQ(other.Data().windowsCode, L"02UNK");
}

}  // namespace
}  // namespace kestrelguard
