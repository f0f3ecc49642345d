#include "update/UpdateCheckFixture.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "runtime/Maker.h"

namespace kestrelguard {
namespace {

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

// --- the Windows version

TEST_F(UpdateCheckTest, WinVersionFillsTheCode) {
    const auto code = [this](const WindowsVersion& version) {
        FakeVersion system;
        system.version = version;
        UpdateCheck other{With(zev, zevPli), UpdateData{}};
        other.WinVersion(system);
        return other.Data().windowsCode;
    };
    EXPECT_EQ(code({2, 5, 0, L"", 0, 1}), L"00PRO");
    EXPECT_EQ(code({2, 10, 0, L"", 256, 1}), L"02UNK");
}

TEST_F(UpdateCheckTest, WinVersionLeavesTheCodeWhenTheSystemRefuses) {
    UpdateCheck other{With(zev, zevPli), UpdateData{}};
    other.WinVersion(FakeVersion{});
    EXPECT_EQ(other.Data().windowsCode, L"");
    check.WinVersion(FakeVersion{});
    EXPECT_EQ(check.Data().windowsCode, L"XPPRO");
}

}  // namespace
}  // namespace kestrelguard
