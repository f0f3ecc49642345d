#include "controls/WinsockErrors.h"

#include <gtest/gtest.h>

namespace kestrelguard {
namespace {

TEST(WinsockErrors, EveryNumberHasAText) {
    EXPECT_EQ(WinsockErrorText(10061), L"The connection was refused");
    EXPECT_EQ(WinsockErrorText(11001), L"The host was not found");
    EXPECT_EQ(WinsockErrorText(40020), L"Invalid operation at current state");
    EXPECT_EQ(WinsockErrorText(12345), L"Socket error 12345");
}

TEST(WinsockErrors, ThrownAsTheyAreTold) {
    const RunTimeError error = WinsockError(10054);
    EXPECT_EQ(error.Number(), 10054);
    EXPECT_EQ(error.Description(), WinsockErrorText(10054));
}

}  // namespace
}  // namespace kestrelguard
