#include "UpdateFixture.h"

// The update check of the unchanged program, against a real web server and against servers that this file
// plays. The session's script tells where its files are.

namespace kestrelguard::testing {
namespace {

// --- the whole exchange, with a real web server

TEST_F(UpdateDesktopTest, ANewerVersionIsAnnouncedInOneQuietBox) {
    SetHosts(kRealWeb, kRealWeb);
    WriteBytes(SessionFile("access.log"), "");
    WriteBytes(SessionFile("web/kg/login/ZEVkg.htm"), std::string(kUpdateName) + "\r\n");
    Start();
    // Something that would be seen if it was started.
    ASSERT_TRUE(CopyFileW((OwnFolder() + L"\\standin_client.exe").c_str(),
                          m_folder.File(L"ZEVUpdate.exe").c_str(), FALSE));
    Loaded();
    Peer query = m_version.Accept();
    ASSERT_TRUE(query);
    EXPECT_EQ(
        "200|GET /kg/login/ZEVkg.htm HTTP/1.1|*/*|www.kestrelguard.example|Kestrelguard v2.0.113|"
        "Kestrelguard v2.0.113\n",
        ReadBytes(SessionFile("access.log")));

    const std::string report = query.ReceiveUntil("127.0.0.1");
    const std::vector<std::string> fields = Pieces(report, kSeparator);
    ASSERT_EQ(7U, fields.size()) << report;
    EXPECT_EQ("ZEV_PRODAI", fields[0]);
    EXPECT_EQ("KSG2.0.113", fields[1]);
    EXPECT_EQ(5U, fields[2].size());
    char host[256] = {};
    gethostname(host, sizeof host);
    EXPECT_EQ(host, fields[3]);
    EXPECT_NE(std::string::npos, fields[4].find_first_of("0123456789"));
    EXPECT_EQ("127.0.0.1", fields[6]);

    // Whatever is there when the notice stands was written for the reply.
    ASSERT_TRUE(DeleteFileW(m_folder.File(L"KestrelS.CFG").c_str()));
    ASSERT_TRUE(query.Send(std::string(kToken) + "2.0.99"));
    const MessageBoxSeen box = WaitMessageBox(Id());
    ASSERT_TRUE(box);
    // The use count that was reported is that of the settings.
    EXPECT_EQ("USE/:/:" + fields[5], m_folder.SettingsLine("USE"));
    EXPECT_EQ(L"Kestrelguard Update Available!", box.caption);
    EXPECT_EQ(L"There is a newer version of Kestrelguard available.\r\n\r\nUpdate to version 2.0.99 Now?",
              box.text);
    EXPECT_EQ(std::vector<std::wstring>{L"OK"}, box.buttons);
    EXPECT_TRUE(box.topmost);
    EXPECT_EQ(m_guard->Window(), GetWindow(box.window, GW_OWNER));
    EXPECT_TRUE(Responsive());

    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(Responsive());
    EXPECT_FALSE(Runs(L"ZEVUpdate.exe"));
    EXPECT_TRUE(Close());
    EXPECT_FALSE(Runs(L"ZEVUpdate.exe"));
}

TEST_F(UpdateDesktopTest, AMissingPageOfARealServerEndsTheCheckQuietly) {
    SetHosts(kRealWeb, kRealWeb);
    WriteBytes(SessionFile("access.log"), "");
    DeleteFileW(SessionFile("web/kg/login/ZEVkg.htm").c_str());
    Start();
    Loaded();
    EXPECT_TRUE(WaitUntil([] { return ReadBytes(SessionFile("access.log")).rfind("404|", 0) == 0; }));
    EXPECT_TRUE(Responsive());
    EXPECT_TRUE(Close());
    EXPECT_FALSE(m_version.Pending());
}

// --- when it starts

TEST_F(UpdateDesktopTest, OnlyPlainWebPagesStartOneLookup) {
    Start();
    for (const wchar_t* const address :
         {L"file:///C:/pages/start.htm", L"C:\\pages\\start.htm", L"about:blank",
          L"https://www.bank.example/", L"HTTP://WWW.SITE.EXAMPLE/"}) {
        Loaded(address);
        EXPECT_TRUE(Responsive());
    }
    EXPECT_FALSE(m_web.Pending());
    Loaded();
    Loaded();
    Peer lookup = AcceptLookup();
    ASSERT_TRUE(lookup);
    EXPECT_TRUE(lookup.Send("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\nServer: played\r\n\r\ngone"));
    EXPECT_TRUE(lookup.WaitEnded());
    // The check is over, but the hour is not.
    Loaded();
    EXPECT_TRUE(Close());
    EXPECT_FALSE(m_web.Pending());
    EXPECT_FALSE(m_version.Pending());
}

// --- the look-up's reply

TEST_F(UpdateDesktopTest, ASplitReplyCompletesAtItsLastByte) {
    Start();
    Loaded();
    Peer lookup = AcceptLookup();
    ASSERT_TRUE(lookup);
    const std::string page = Page("\r\n  " + std::string(kUpdateName) + "  \r\n");
    const std::size_t body = page.find("\r\n\r\n") + 4;
    ASSERT_TRUE(lookup.Send(page.substr(0, body)));
    for (std::size_t at = body; at + 1 < page.size(); ++at) {
        ASSERT_TRUE(lookup.Send(page.substr(at, 1)));
        EXPECT_TRUE(Responsive());
    }
    EXPECT_FALSE(m_version.Pending());
    ASSERT_TRUE(lookup.Send(page.substr(page.size() - 1)));
    EXPECT_TRUE(lookup.WaitEnded());
    EXPECT_TRUE(m_version.Accept());
    EXPECT_TRUE(Close());
}

// --- servers that are not there

TEST_F(UpdateDesktopTest, ARefusedLookupIsSilent) {
    SetHosts(kNobody, kRealWeb);
    Start();
    Loaded();
    EXPECT_TRUE(Responsive());
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Close());
}

TEST_F(UpdateDesktopTest, ARefusedVersionQueryIsSilent) {
    SetHosts(kPlayedWeb, kNobody);
    Start();
    Loaded();
    Peer lookup = AcceptLookup();
    ASSERT_TRUE(lookup);
    EXPECT_TRUE(lookup.Send(Page(kUpdateName)));
    EXPECT_TRUE(lookup.WaitEnded());
    EXPECT_TRUE(Responsive());
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Close());
}

TEST_F(UpdateDesktopTest, ANameServerThatNeverAnswersHoldsNothingUp) {
    // It hears the question and says nothing.
    Socket nameServer(socket(AF_INET, SOCK_DGRAM, 0));
    const sockaddr_in address = AddressOf(kNameServer, 53);
    ASSERT_EQ(0, bind(nameServer.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
    WriteBytes(SessionFile("hosts"), "127.0.0.1 localhost\n");
    Start();
    const DWORD start = GetTickCount();
    Loaded();
    EXPECT_LT(GetTickCount() - start, 2000U);
    u_long asked = 0;
    EXPECT_TRUE(WaitUntil([&] {
        ioctlsocket(nameServer.Get(), FIONREAD, &asked);
        return asked > 0;
    }));
    EXPECT_TRUE(Responsive());
    const DWORD end = GetTickCount();
    EXPECT_TRUE(Close());
    EXPECT_LT(GetTickCount() - end, 10'000U);
}

// --- the version reply

struct Offer {
    const char* version;
    bool shown;
};

std::ostream& operator<<(std::ostream& out, const Offer& offer) {
    return out << offer.version;
}

class Offers : public UpdateDesktopTest, public ::testing::WithParamInterface<Offer> {};

TEST_P(Offers, AreComparedAsPlainText) {
    Start();
    Peer query = AcceptQuery();
    ASSERT_TRUE(query);
    ASSERT_TRUE(query.Send(std::string(kToken) + GetParam().version));
    if (GetParam().shown) {
        const MessageBoxSeen box = WaitMessageBox(Id());
        EXPECT_TRUE(box);
        EXPECT_TRUE(Dismiss(box));
    } else {
        query.EndSending();
        EXPECT_TRUE(query.WaitEnded());
        EXPECT_FALSE(Notice());
    }
    EXPECT_TRUE(Close());
}

INSTANTIATE_TEST_SUITE_P(Versions, Offers,
                         ::testing::Values(Offer{"2.0.113", false}, Offer{" 2.0.113 ", false},
                                           Offer{"2.0.99", true}, Offer{"2.0.112", false},
                                           Offer{"10.0", false}),
                         [](const ::testing::TestParamInfo<Offer>& parameter) {
                             return "Version" + std::to_string(parameter.index);
                         });

TEST_F(UpdateDesktopTest, AForeignReplyIsIgnored) {
    Start();
    Peer query = AcceptQuery();
    ASSERT_TRUE(query);
    ASSERT_TRUE(DeleteFileW(m_folder.File(L"KestrelS.CFG").c_str()));
    Reply(query, "HTTP/1.1 400 Bad Request\r\n\r\n:'/|ZEV_PRODLI9.9.9");
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Responsive());
    EXPECT_FALSE(FileExists(m_folder.File(L"KestrelS.CFG"))) << "the settings are not written for it";
    EXPECT_TRUE(Close());
}

TEST_F(UpdateDesktopTest, AVersionServerThatHangsUpIsSilent) {
    Start();
    Peer query = AcceptQuery();
    ASSERT_TRUE(query);
    Reply(query, "");
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Close());
}

TEST_F(UpdateDesktopTest, AnOfferOfAMegabyteShowsAShortNotice) {
    Start();
    const std::size_t before = PrivateBytes();
    Peer query = AcceptQuery();
    ASSERT_TRUE(query);
    Flood(query, kToken + std::string(1024 * 1024, '9'), 2 * 1024 * 1024);
    const MessageBoxSeen box = WaitMessageBox(Id());
    ASSERT_TRUE(box);
    EXPECT_EQ(L"There is a newer version of Kestrelguard available.\r\n\r\nUpdate to version " +
                  std::wstring(64, L'9') + L" Now?",
              box.text);
    EXPECT_TRUE(Responsive());
    EXPECT_LT(PrivateBytes(), before + 16 * 1024 * 1024);
    // What follows piles up no further box.
    Flood(query, kToken + std::string("9"), 1);
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(Responsive());
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Close());
}

TEST_F(UpdateDesktopTest, FormatsAndCommandsInAnOfferAreText) {
    Start();
    ASSERT_TRUE(m_guard->Inside().RecordCalls());
    ASSERT_TRUE(m_guard->Inside().RecordLibraries());
    Peer query = AcceptQuery();
    ASSERT_TRUE(query);
    ASSERT_TRUE(query.Send(std::string(kToken) + "9%s%n%x &calc.exe ..\\"));
    const MessageBoxSeen box = WaitMessageBox(Id());
    ASSERT_TRUE(box);
    EXPECT_NE(std::wstring::npos, box.text.find(L"Update to version 9%s%n%x &calc.exe ..\\ Now?"))
        << box.text;
    EXPECT_TRUE(Dismiss(box));
    EXPECT_TRUE(Responsive());
    EXPECT_TRUE(m_guard->Inside().ExecuteCalls().empty()) << "nothing is opened";
    EXPECT_TRUE(m_guard->Inside().LibraryCalls().empty());
    EXPECT_TRUE(Close());
}

TEST_F(UpdateDesktopTest, TheProgramEndsUnderTheNotice) {
    Start();
    Peer query = AcceptQuery();
    ASSERT_TRUE(query);
    ASSERT_TRUE(query.Send(std::string(kToken) + "9"));
    ASSERT_TRUE(WaitMessageBox(Id()));
    EXPECT_TRUE(Close());
}

// --- the Windows version

struct Windows {
    const char* wine;
    const char* code;
};

std::ostream& operator<<(std::ostream& out, const Windows& windows) {
    return out << windows.wine;
}

class WindowsVersions : public UpdateDesktopTest, public ::testing::WithParamInterface<Windows> {};

TEST_P(WindowsVersions, HaveTheirCodes) {
    const PlayedWindows played(GetParam().wine);
    Start();
    std::string report;
    Peer query = AcceptQuery(report);
    ASSERT_TRUE(query);
    const std::vector<std::string> fields = Pieces(report, kSeparator);
    ASSERT_EQ(7U, fields.size()) << report;
    EXPECT_EQ(GetParam().code, fields[2]);
    EXPECT_TRUE(Close());
}

INSTANTIATE_TEST_SUITE_P(Played, WindowsVersions,
                         ::testing::Values(Windows{"win98", "98SEC"}, Windows{"winme", "WINME"},
                                           Windows{"nt40", "NTV40"}, Windows{"win2k", "00PRO"},
                                           Windows{"winxp", "XPPRO"}, Windows{"win7", "02UNK"},
                                           Windows{"win10", "02UNK"}),
                         [](const ::testing::TestParamInfo<Windows>& parameter) {
                             return std::string(parameter.param.wine);
                         });

}  // namespace
}  // namespace kestrelguard::testing
