#pragma once

#include <new>
#include <utility>

#include "runtime/OutOfSight.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// Runs one step and drops its run-time error (lack of memory is one). Answers the error's number, 0 when
/// there was none.
template <class Step>
std::int32_t ErrorOf(Step&& step) {
    try {
        OutOfSight(step);
    } catch (const RunTimeError& error) {
        return error.Number();
    } catch (const std::bad_alloc&) {
        return RunTimeError::kOutOfMemory;
    }
    return 0;
}

/// "Errors ignored from here on": runs the steps one after the other; each may fail on its own, a failing
/// one is left where it failed and the next one runs.
template <class... Steps>
void ErrorsIgnored(Steps&&... steps) {
    (static_cast<void>(ErrorOf(std::forward<Steps>(steps))), ...);
}

}  // namespace kestrelguard
