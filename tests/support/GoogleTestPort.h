#pragma once

// GoogleTest's port for Windows wants std::mutex, which the win32 thread model of GCC 12 does not have, for a
// helper that only its own tests use. An empty stand-in lets it keep its native critical sections.
#define GTEST_HAS_NOTIFICATION_ 1

namespace testing::internal {
class Notification {
 public:
    void Notify() {}
    void WaitForNotification() {}
};
}  // namespace testing::internal
