// Browsers of other processes.

#include "desktop/driver/Controls.h"
#include "tests/standin/StandInTest.h"

namespace kestrelguard::desktop {
namespace {

using namespace kestrelguard::testing;

class StandInProcessesTest : public StandInTest {};

TEST_F(StandInProcessesTest, ABrowserOfAnotherProcessTakesPart) {
    m_desktop.OpenBrowser();
    RemoteBrowser& remote = m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                                        {L"http://remote.example/", L"Far away"});
    EXPECT_EQ(2, m_desktop.ListSize());
    EXPECT_EQ("ok 2 of 2", m_client.Ask("attach"));
    EXPECT_EQ(1, remote.Sinks());
    m_client.Ask("cancel -1");
    EXPECT_TRUE(remote.FireNewWindow2().cancel);
    EXPECT_EQ(1, m_client.Count("browser1 251", 1));
    m_client.Ask("list");
    EXPECT_NE(-1, m_client.Program().WaitLine("window " + std::to_string(remote.Handle()) +
                                              " http://remote.example/|Far away|"));
    EXPECT_TRUE(remote.Close());
    EXPECT_EQ(1, m_desktop.ListSize());
    EXPECT_EQ(1, m_client.Count("list 201", 1));
}

TEST_F(StandInProcessesTest, AKilledBrowserProcessLeavesADeadEntry) {
    RemoteBrowser& remote = m_desktop.OpenRemoteBrowser(OwnFolder() + L"\\browser_host.exe",
                                                        {L"http://remote.example/", L"Far away"});
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    remote.Kill();
    EXPECT_EQ(-1, remote.Sinks());
    EXPECT_EQ(1, m_desktop.ListSize());
    EXPECT_EQ(0u, m_client.Ask("navigate http://a.example/").find("failed "));
    EXPECT_EQ(0, m_client.Count("list 201", 0));
    const Browser& living = m_desktop.OpenBrowser();
    // It can be walked over, but answers nothing.
    EXPECT_EQ("ok 2 count 2", m_client.Ask("list"));
    EXPECT_NE(-1, m_client.Program().WaitLine("window failed ||"));
    EXPECT_NE(-1, m_client.Program().WaitLine("window " + std::to_string(living.Handle()) + " "));
    m_desktop.Withdraw(remote.Cookie());
    EXPECT_EQ(1, m_client.Count("list 201", 1));
}

TEST_F(StandInProcessesTest, WinesOwnBrowserTakesPart) {
    const ComPtr<IWebBrowser2> browser = m_desktop.OpenWineBrowser();
    EXPECT_EQ("ok 1 of 1", m_client.Ask("attach"));
    SHANDLE_PTR handle = 0;
    ASSERT_EQ(S_OK, browser->get_HWND(&handle));
    EXPECT_NE(0, handle);
    m_client.Ask("navigate about:blank");
    EXPECT_NE("no event", m_client.Event("browser0 250"));
    browser->Quit();
}

}  // namespace
}  // namespace kestrelguard::desktop
