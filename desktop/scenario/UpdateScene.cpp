// The update check: two servers that the scene plays, and the notice. The session's host names must lead the
// maker's two names here (desktop/scenario/hosts), and ports 80 and 26144 must be free: a session with a
// network of its own.

#include "desktop/driver/Sockets.h"
//
#include "desktop/scenario/Scenario.h"

namespace kestrelguard::desktop::scenario {

namespace {

constexpr wchar_t kNews[] = L"http://www.news.example/";
constexpr char kPage[] =
    "HTTP/1.1 200 OK\r\n"
    "Content-Length: 27\r\n"
    "Content-Type: text/html\r\n"
    "\r\n"
    "update.kestrelguard.example";

}  // namespace

void PlayUpdate(Stage& stage) {
    Transcript& say = stage.transcript;
    const testing::Network network;
    const testing::Server web("127.0.0.1", 80);
    const testing::Server versions("127.0.0.1", 26144);

    say.Step(L"A browser window is open, and kestrelguard.exe watches it.");
    Browser& browser = stage.desktop.OpenBrowser(PageAt(kNews, L"The Morning News"));
    const auto guard = StartGuard(stage);

    say.Step(L"A page from the disk has been loaded: nothing is asked.");
    browser.FireDocumentComplete(L"file:///C:/start.htm");
    say.Expect(!web.Pending(), L"the maker's web server hears nothing");

    say.Step(L"A page of the web has been loaded: the maker's web server is asked for the update server.");
    browser.FireDocumentComplete(kNews);
    testing::Peer lookup = web.Accept();
    const std::string request = lookup.ReceiveUntil("\r\n\r\n");
    ShowLines(say, L"the request", LinesOf(request));
    say.Expect(request.rfind("GET /kg/login/ZEVkg.htm HTTP/1.1\r\n", 0) == 0, L"it asks for the right page");
    lookup.Send(kPage);
    say.Expect(lookup.WaitEnded(), L"with the last byte of the answer the program hangs up");

    say.Step(L"The update server gets one message.");
    testing::Peer query = versions.Accept();
    const std::string report = query.ReceiveUntil("127.0.0.1");
    ShowLines(say, L"the message", LinesOf(report));
    say.Expect(report.rfind("ZEV_PRODAI:'/|KSG2.0.113:'/|", 0) == 0, L"it names the program and its version");

    say.Step(L"It offers version 2.0.99, which counts as newer than 2.0.113.");
    query.Send(":'/|ZEV_PRODLI2.0.99");
    const testing::MessageBoxSeen box = testing::WaitMessageBox(guard->Program().Id());
    ShowLines(say, box.caption, LinesOf(std::string(box.text.begin(), box.text.end())));
    say.Expect(box.buttons == std::vector<std::wstring>{L"OK"}, L"its one button is OK");
    say.Picture(L"update");
    const RECT part = testing::RectOf(box.window);
    say.Picture(L"update-notice", &part);
    testing::Dismiss(box);

    say.Step(L"Another page has been loaded: nothing more is asked in this run.");
    browser.FireDocumentComplete(kNews);
    say.Expect(!web.Pending(), L"the maker's web server hears nothing");
    say.Expect(guard->Close(), L"the program has ended");
}

}  // namespace kestrelguard::desktop::scenario
