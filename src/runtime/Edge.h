#pragma once

#include <exception>
#include <new>

#include "runtime/OutOfSight.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// Runs what an edge (window procedure, COM method, timer or socket callback) was called for. Whatever
/// leaves it as an exception is handed to `report` as a run-time error; nothing gets past.
template <class Action, class Report>
void AtEdge(Action&& action, Report&& report) noexcept {
    const auto told = [&report](const RunTimeError& error) noexcept {
        try {
            report(error);
        } catch (...) {
            // Even telling failed: there is nobody left to tell.
            return;
        }
    };
    try {
        try {
            OutOfSight(action);
        } catch (const RunTimeError& error) {
            told(error);
        } catch (const std::bad_alloc&) {
            told(RunTimeError(RunTimeError::kOutOfMemory));
        } catch (...) {
            told(RunTimeError(RunTimeError::kInvalidCall));
        }
    } catch (...) {
        // No memory even for the error's own text.
        return;
    }
}

}  // namespace kestrelguard
