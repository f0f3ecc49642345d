#pragma once

#include "desktop/driver/Sockets.h"
//
#include <gtest/gtest.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/Desktop.h"
#include "desktop/driver/Controls.h"
#include "desktop/driver/Files.h"
#include "desktop/driver/Guard.h"
#include "desktop/driver/Windows.h"

namespace kestrelguard::testing {

inline constexpr char kWebName[] = "www.kestrelguard.example";
inline constexpr char kUpdateName[] = "update.kestrelguard.example";
/// Where the web server of the session is, and where the ones played here are.
inline constexpr char kRealWeb[] = "127.0.0.1";
inline constexpr char kPlayedWeb[] = "127.0.0.2";
inline constexpr char kNobody[] = "127.0.0.3";
inline constexpr char kNameServer[] = "127.0.0.9";

inline constexpr wchar_t kPage[] = L"http://www.site.example/";
inline constexpr char kToken[] = ":'/|ZEV_PRODLI";
inline constexpr char kSeparator[] = ":'/|";

inline constexpr char kRequest[] =
    "GET /kg/login/ZEVkg.htm HTTP/1.1\r\n"
    "Accept: */*\r\n"
    "Host: www.kestrelguard.example\r\n"
    "Referer: Kestrelguard v2.0.113\r\n"
    "User-Agent: Kestrelguard v2.0.113\r\n"
    "\r\n";

/// A file of the session, as Wine names it.
inline std::wstring SessionFile(const std::string& name) {
    const char* const folder = std::getenv("KESTRELGUARD_UPDATE_SESSION");
    std::string path = "Z:" + std::string(folder == nullptr ? "" : folder) + "/" + name;
    std::replace(path.begin(), path.end(), '/', '\\');
    return {path.begin(), path.end()};
}

inline std::string Page(const std::string& body) {
    return "HTTP/1.1 200 OK\r\nServer: played\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nContent-Type: text/html\r\n\r\n" + body;
}

inline std::vector<std::string> Pieces(const std::string& text, const std::string& separator) {
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

inline bool Runs(const wchar_t* program) {
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

/// Sends for as long as the program listens. Answers how much it took.
inline std::size_t Flood(Peer& peer, const std::string& text, std::size_t most) {
    std::size_t sent = 0;
    while (sent < most && peer.Send(text)) {
        sent += text.size();
    }
    return sent;
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

}  // namespace kestrelguard::testing
