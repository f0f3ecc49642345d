#pragma once

#include <windows.h>

namespace kestrelguard {

/// Lets microseconds pass without giving the processor away.
inline void SpinFor(int microseconds) {
    LARGE_INTEGER ticksASecond{};
    LARGE_INTEGER begin{};
    LARGE_INTEGER now{};
    QueryPerformanceFrequency(&ticksASecond);
    QueryPerformanceCounter(&begin);
    do {
        QueryPerformanceCounter(&now);
    } while ((now.QuadPart - begin.QuadPart) * 1'000'000 < microseconds * ticksASecond.QuadPart);
}

}  // namespace kestrelguard
