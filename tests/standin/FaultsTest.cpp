// One call of a client goes wrong.

#include <algorithm>

#include "tests/standin/StandInTest.h"

namespace kestrelguard::desktop {
namespace {

class FaultsTest : public StandInTest {
 protected:
    ~FaultsTest() override { Faults::Here().Disarm(); }

    /// The number of the first call of that name in a walk over the list.
    int PositionOf(const std::string& name) {
        Faults::Here().Arm();
        EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
        const std::vector<std::string> calls = Faults::Here().Calls();
        const auto found = std::find(calls.begin(), calls.end(), name);
        EXPECT_NE(calls.end(), found) << ::testing::PrintToString(calls);
        return static_cast<int>(found - calls.begin());
    }
};

TEST_F(FaultsTest, EveryCallIsCounted) {
    m_desktop.OpenBrowser();
    m_client.Ask("list");
    Faults::Here().Arm();
    m_client.Ask("attach");
    // How often the platform asks for an interface is its own affair.
    std::vector<std::string> calls = Faults::Here().Calls();
    const auto twice = std::unique(calls.begin(), calls.end(), [](const auto& one, const auto& other) {
        return one == other && one.ends_with("Connect");
    });
    calls.erase(twice, calls.end());
    EXPECT_EQ((std::vector<std::string>{"List.Connect", "FindConnectionPoint", "Advise", "List._NewEnum",
                                        "Enumeration.Next", "Enumeration.Next", "Connect",
                                        "FindConnectionPoint", "Advise"}),
              calls);
    Faults::Here().Arm();
    m_client.Ask("list");
    EXPECT_EQ((std::vector<std::string>{"List.Count", "List._NewEnum", "Enumeration.Next", "Enumeration.Next",
                                        "HWND", "LocationURL", "LocationName", "StatusText"}),
              Faults::Here().Calls());
    Faults::Here().Disarm();
    m_client.Ask("list");
    EXPECT_EQ(8u, Faults::Here().Calls().size());
}

TEST_F(FaultsTest, OneCallFailsAndNoOther) {
    const Browser& browser = m_desktop.OpenBrowser();
    Fault fault;
    fault.answer = E_FAIL;
    Faults::Here().Arm(PositionOf("List._NewEnum"), fault);
    EXPECT_EQ("failed 80004005", m_client.Ask("list"));
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    Faults::Here().Arm(PositionOf("HWND"), fault);
    const int from = static_cast<int>(m_client.Program().Lines().size());
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    EXPECT_EQ(from, m_client.Program().WaitLine("window failed http://www.home.example/|Home|", from));
    EXPECT_FALSE(browser.Ended());
}

TEST_F(FaultsTest, OneCallWaitsWhileOthersComeIn) {
    Browser& browser = m_desktop.OpenBrowser();
    m_client.Ask("attach");
    int sinks = 0;
    Fault fault;
    fault.before = [&] { sinks = browser.FireNewWindow2().sinks; };
    Faults::Here().Arm(PositionOf("LocationName"), fault);
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    EXPECT_EQ(1, sinks);
    EXPECT_EQ(1, m_client.Count("browser0 251", 1));
}

TEST_F(FaultsTest, OneCallCutsTheClientOff) {
    const Browser& browser = m_desktop.OpenBrowser();
    const std::string handle = std::to_string(browser.Handle());
    Fault fault;
    fault.disconnects = true;
    Faults::Here().Arm(PositionOf("LocationURL"), fault);
    const int from = static_cast<int>(m_client.Program().Lines().size());
    EXPECT_EQ("ok 1 count 1", m_client.Ask("list"));
    EXPECT_EQ(from, m_client.Program().WaitLine("window " + handle + " ||", from));
    EXPECT_TRUE(browser.Ended());
    // The list is gone for this client, but not for the next one.
    m_desktop.Withdraw(browser.Cookie());
    m_desktop.OpenBrowser();
    Faults::Here().Arm(PositionOf("List.Count"), fault);
    m_client.Ask("list");
    EXPECT_EQ(0u, m_client.Ask("list").find("failed "));
    Client another;
    EXPECT_EQ("ok 1 count 1", another.Ask("list"));
}

}  // namespace
}  // namespace kestrelguard::desktop
