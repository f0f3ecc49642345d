#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace kestrelguard {
namespace {

/// Starts this program again to run the one disabled test below, and answers its exit code.
DWORD ExitCodeOfOverrun() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string command = std::string("\"") + path +
                          "\" --gtest_also_run_disabled_tests --gtest_filter=StackGuard.DISABLED_Overrun";
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                        &process)) {
        return 0;
    }
    DWORD code = 0;
    if (WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process.hProcess, &code);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

/// Writes that many bytes into a buffer of 16.
[[gnu::noinline]] char Write(unsigned count) {
    char buffer[16] = {};
    volatile char* const at = buffer;
    for (unsigned index = 0; index < count; ++index) {
        at[index] = 'x';
    }
    return buffer[0];
}

TEST(StackGuard, DISABLED_Overrun) {
    Write(64);
}

TEST(StackGuard, EndsAProgramThatWritesBeyondABuffer) {
    EXPECT_EQ(Write(16), 'x');
    EXPECT_EQ(ExitCodeOfOverrun(), 0xC0000409U);
}

}  // namespace
}  // namespace kestrelguard
