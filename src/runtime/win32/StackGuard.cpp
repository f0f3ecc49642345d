#include <windows.h>

#include <cstdint>

// What -fstack-protector calls. The compiler's own library for it would bring functions of the system for
// cryptography that nothing else here needs; a number that differs from run to run does.

extern "C" {

// NOLINTNEXTLINE(bugprone-reserved-identifier,cppcoreguidelines-avoid-non-const-global-variables)
std::uintptr_t __stack_chk_guard = 0xFF0A0D00;

/// A function has written beyond its own part of the stack: nothing on it can be trusted, so nothing is told.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
[[noreturn]] void __stack_chk_fail() {
    constexpr UINT kStackBufferOverrun = 0xC0000409;
    TerminateProcess(GetCurrentProcess(), kStackBufferOverrun);
    for (;;) {
    }
}

}  // extern "C"

namespace {

/// Before all other constructors. The lowest byte stays 0, so that no copied text can contain the number.
[[gnu::constructor(101), gnu::no_stack_protector]] void ChooseGuard() {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    std::uintptr_t guard = static_cast<std::uintptr_t>(counter.LowPart) * 0x9E3779B1U;
    guard ^= GetTickCount() ^ (GetCurrentProcessId() << 16U) ^ reinterpret_cast<std::uintptr_t>(&counter);
    __stack_chk_guard = (guard * 0x85EBCA6BU) << 8U;
}

}  // namespace
