#include "UpdateFixture.h"

// Web servers that answer with what nobody should believe.

namespace kestrelguard::testing {
namespace {

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

}  // namespace
}  // namespace kestrelguard::testing
