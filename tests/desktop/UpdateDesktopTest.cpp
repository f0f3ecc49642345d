#include "desktop/driver/Sockets.h"
//
#include <gtest/gtest.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/Desktop.h"
#include "desktop/driver/Controls.h"
#include "desktop/driver/Files.h"
#include "desktop/driver/Guard.h"
#include "desktop/driver/Windows.h"

// The update check of the unchanged program, against a real web server and against servers that this file
// plays. The session's script tells where its files are.
namespace kestrelguard::testing {
namespace {

constexpr char kWebName[] = "www.kestrelguard.example";
constexpr char kUpdateName[] = "update.kestrelguard.example";
/// Where the web server of the session is, and where the ones played here are.
constexpr char kRealWeb[] = "127.0.0.1";
constexpr char kPlayedWeb[] = "127.0.0.2";
constexpr char kNobody[] = "127.0.0.3";
constexpr char kNameServer[] = "127.0.0.9";

constexpr wchar_t kPage[] = L"http://www.site.example/";
constexpr char kToken[] = ":'/|ZEV_PRODLI";
constexpr char kSeparator[] = ":'/|";

constexpr char kRequest[] =
    "GET /kg/login/ZEVkg.htm HTTP/1.1\r\n"
    "Accept: */*\r\n"
    "Host: www.kestrelguard.example\r\n"
    "Referer: Kestrelguard v2.0.113\r\n"
    "User-Agent: Kestrelguard v2.0.113\r\n"
    "\r\n";

/// A file of the session, as Wine names it.
std::wstring SessionFile(const std::string& name) {
    const char* const folder = std::getenv("KESTRELGUARD_UPDATE_SESSION");
    std::string path = "Z:" + std::string(folder == nullptr ? "" : folder) + "/" + name;
    std::replace(path.begin(), path.end(), '/', '\\');
    return {path.begin(), path.end()};
}

std::string Page(const std::string& body) {
    return "HTTP/1.1 200 OK\r\nServer: played\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nContent-Type: text/html\r\n\r\n" + body;
}

std::vector<std::string> Pieces(const std::string& text, const std::string& separator) {
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    for (std::size_t at = text.find(separator); at != std::string::npos; at = text.find(separator, begin)) {
        pieces.push_back(text.substr(begin, at - begin));
        begin = at + separator.size();
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

/// The Windows version that Wine plays for the program alone.
class PlayedWindows {
 public:
    explicit PlayedWindows(const char* version) {
        HKEY key = nullptr;
        RegCreateKeyA(HKEY_CURRENT_USER, kKey, &key);
        RegSetValueExA(key, "Version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version),
                       static_cast<DWORD>(std::string_view(version).size()) + 1);
        RegCloseKey(key);
    }
    ~PlayedWindows() { RegDeleteKeyA(HKEY_CURRENT_USER, kKey); }
    PlayedWindows(const PlayedWindows&) = delete;
    PlayedWindows& operator=(const PlayedWindows&) = delete;

 private:
    static constexpr char kKey[] = "Software\\Wine\\AppDefaults\\kestrelguard.exe";
};

bool Runs(const wchar_t* program) {
    const Handle all(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(all.Get(), &entry); more != FALSE;
         more = Process32NextW(all.Get(), &entry)) {
        if (lstrcmpiW(entry.szExeFile, program) == 0) {
            return true;
        }
    }
    return false;
}

class UpdateDesktopTest : public ::testing::Test {
 protected:
    UpdateDesktopTest() { SetHosts(kPlayedWeb, kRealWeb); }

    static void SetHosts(const char* web, const char* update) {
        WriteBytes(SessionFile("hosts"), std::string("127.0.0.1 localhost\n") + web + " " + kWebName + "\n" +
                                             update + " " + kUpdateName + "\n");
    }

    /// Starts the program and waits until it watches the one browser.
    void Start() {
        m_browser = &m_desktop.OpenBrowser();
        m_guard = std::make_unique<Guard>(m_folder);
        ASSERT_TRUE(m_guard->WaitReady());
        ASSERT_TRUE(WaitUntil([&] { return m_browser->Sinks().connected == 1; }));
    }
    void Loaded(const wchar_t* address = kPage) {
        const desktop::EventResult result = m_browser->FireDocumentComplete(address);
        EXPECT_FALSE(result.timedOut);
        EXPECT_EQ(1, result.sinks);
        EXPECT_EQ(S_OK, result.hr);
    }
    DWORD Id() const { return m_guard->Program().Id(); }
    bool Responsive() const {
        LRESULT answer = 0;
        return m_guard->Program().Running() && Ask(m_guard->Window(), WM_NULL, 0, 0, answer, 2000);
    }
    /// Ends the program as a user does. Everything that has reached it is dealt with before.
    bool Close() { return m_guard->Close() && m_guard->Program().ExitCode() == 0; }
    std::size_t PrivateBytes() const {
        PROCESS_MEMORY_COUNTERS counters{};
        GetProcessMemoryInfo(m_guard->Program().Get(), &counters, sizeof counters);
        return counters.PagefileUsage;
    }
    MessageBoxSeen Notice() const { return FindMessageBox(Id()); }

    /// The look-up up to its request; an empty peer when there is none.
    Peer AcceptLookup() {
        Peer peer = m_web.Accept();
        if (peer) {
            EXPECT_EQ(kRequest, peer.ReceiveUntil("\r\n\r\n"));
        }
        return peer;
    }
    /// From the loaded page to the report of the version query.
    Peer AcceptQuery(std::string& report, const std::string& updateServer = kUpdateName) {
        Loaded();
        Peer lookup = AcceptLookup();
        EXPECT_TRUE(lookup.Send(Page(updateServer)));
        EXPECT_TRUE(lookup.WaitEnded());
        Peer query = m_version.Accept();
        report = query ? query.ReceiveUntil("127.0.0.1") : "";
        return query;
    }
    Peer AcceptQuery() {
        std::string report;
        return AcceptQuery(report);
    }
    /// Sends a version reply and its end; answers when the program has dealt with both.
    static void Reply(Peer& query, const std::string& text) {
        EXPECT_TRUE(query.Send(text));
        query.EndSending();
        EXPECT_TRUE(query.WaitEnded());
    }

    Network m_network;
    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    GuardFolder m_folder;
    Server m_web{kPlayedWeb, 80};
    Server m_version{kRealWeb, 26144};
    desktop::Browser* m_browser = nullptr;
    std::unique_ptr<Guard> m_guard;
};

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

    ASSERT_TRUE(query.Send(std::string(kToken) + "2.0.99"));
    const MessageBoxSeen box = WaitMessageBox(Id());
    ASSERT_TRUE(box);
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
    // The use count is that of the settings.
    EXPECT_EQ("USE/:/:" + fields[5], m_folder.SettingsLine("USE"));
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

struct Hostile {
    const char* name;
    std::string reply;
};

std::ostream& operator<<(std::ostream& out, const Hostile& hostile) {
    return out << hostile.name;
}

class HostileLookup : public UpdateDesktopTest, public ::testing::WithParamInterface<Hostile> {};

TEST_P(HostileLookup, LeadsNowhere) {
    Start();
    Loaded();
    Peer lookup = AcceptLookup();
    ASSERT_TRUE(lookup);
    EXPECT_TRUE(GetParam().reply.empty() || lookup.Send(GetParam().reply));
    EXPECT_TRUE(Responsive());
    lookup.HangUp();
    EXPECT_TRUE(Responsive());
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Close());
    EXPECT_FALSE(m_version.Pending());
}

INSTANTIATE_TEST_SUITE_P(
    Replies, HostileLookup,
    ::testing::Values(Hostile{"silent", ""}, Hostile{"half", "HTTP/1.1 200 OK\r\nContent-Le"},
                      Hostile{"overshoot", "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nA: b\r\n\r\n127.0.0.1"},
                      Hostile{"huge", "HTTP/1.1 200 OK\r\nContent-Length: 99999999999\r\n\r\n127.0.0.1"},
                      Hostile{"negative", "HTTP/1.1 200 OK\r\nContent-Length: -9\r\nA: b\r\n\r\n127.0.0.1"},
                      Hostile{"nuls", std::string(5000, '\0')},
                      Hostile{"nuls in the header", "HTTP/1.1 200 OK\r\nContent-Length: " +
                                                        std::string("\0009\0", 3) + "\r\n\r\n127.0.0.1"}),
    [](const ::testing::TestParamInfo<Hostile>& parameter) {
        return "Reply" + std::to_string(parameter.index);
    });

class HostileAddress : public UpdateDesktopTest, public ::testing::WithParamInterface<Hostile> {};

TEST_P(HostileAddress, IsNothingButANameThatNobodyHas) {
    Start();
    Loaded();
    Peer lookup = AcceptLookup();
    ASSERT_TRUE(lookup);
    EXPECT_TRUE(lookup.Send(Page(GetParam().reply)));
    EXPECT_TRUE(lookup.WaitEnded());
    EXPECT_TRUE(Responsive());
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Close());
    EXPECT_FALSE(m_version.Pending());
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, HostileAddress,
    ::testing::Values(Hostile{"formats", "%s%n%s%n"}, Hostile{"path", "..\\..\\windows\\system32"},
                      Hostile{"share", "\\\\127.0.0.1\\c$"}, Hostile{"command", "127.0.0.1 & notepad.exe"},
                      Hostile{"nul", std::string("127.0.0.1\0.example", 18)}, Hostile{"empty", ""},
                      Hostile{"long", std::string(100'000, 'a')}, Hostile{"html", "<html>127.0.0.1</html>"}),
    [](const ::testing::TestParamInfo<Hostile>& parameter) {
        return "Body" + std::to_string(parameter.index);
    });

/// Sends for as long as the program listens. Answers how much it took.
std::size_t Flood(Peer& peer, const std::string& text, std::size_t most) {
    std::size_t sent = 0;
    while (sent < most && peer.Send(text)) {
        sent += text.size();
    }
    return sent;
}

TEST_F(UpdateDesktopTest, AnEndlessHeaderIsCutOff) {
    Start();
    Loaded();
    Peer lookup = AcceptLookup();
    ASSERT_TRUE(lookup);
    const std::size_t before = PrivateBytes();
    ASSERT_TRUE(lookup.Send("HTTP/1.1 200 OK\r\n"));
    constexpr std::size_t kMost = 64 * 1024 * 1024;
    EXPECT_LT(Flood(lookup, "X-Filler: " + std::string(8000, 'x') + "\r\n", kMost), kMost);
    EXPECT_TRUE(Responsive());
    EXPECT_LT(PrivateBytes(), before + 16 * 1024 * 1024);
    EXPECT_TRUE(Close());
}

TEST_F(UpdateDesktopTest, AnEndlessBodyIsCutOff) {
    Start();
    Loaded();
    Peer lookup = AcceptLookup();
    ASSERT_TRUE(lookup);
    const std::size_t before = PrivateBytes();
    ASSERT_TRUE(lookup.Send("HTTP/1.1 200 OK\r\nContent-Length: 9999999\r\n\r\n"));
    constexpr std::size_t kMost = 64 * 1024 * 1024;
    EXPECT_LT(Flood(lookup, std::string(65'536, 'b'), kMost), kMost);
    EXPECT_TRUE(Responsive());
    EXPECT_LT(PrivateBytes(), before + 16 * 1024 * 1024);
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
    // Whatever was offered, there is no second check in this run.
    Loaded();
    EXPECT_TRUE(Close());
    EXPECT_FALSE(m_web.Pending());
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
    Reply(query, "HTTP/1.1 400 Bad Request\r\n\r\n:'/|ZEV_PRODLI9.9.9");
    EXPECT_FALSE(Notice());
    EXPECT_TRUE(Responsive());
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

TEST_F(UpdateDesktopTest, FormatsInAnOfferAreText) {
    Start();
    Peer query = AcceptQuery();
    ASSERT_TRUE(query);
    ASSERT_TRUE(query.Send(std::string(kToken) + "9%s%n%x &calc.exe ..\\"));
    const MessageBoxSeen box = WaitMessageBox(Id());
    ASSERT_TRUE(box);
    EXPECT_NE(std::wstring::npos, box.text.find(L"Update to version 9%s%n%x &calc.exe ..\\ Now?"))
        << box.text;
    EXPECT_TRUE(Dismiss(box));
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
