#pragma once

#include <exception>
#include <utility>

#include "runtime/OutOfSight.h"

namespace kestrelguard {

/// Runs steps that must all be done, whatever one of them throws, and tells the first failure at the end.
/// Nothing here needs memory: lack of memory in one step does not keep the next from being done.
class FirstFailure {
 public:
    template <class Step>
    void Try(Step&& step) noexcept {
        try {
            OutOfSight(step);
        } catch (...) {
            if (!m_failure) {
                m_failure = std::current_exception();
            }
        }
    }

    bool Any() const noexcept { return static_cast<bool>(m_failure); }
    /// Throws what the first failing step threw; nothing when none failed.
    void Rethrow() const {
        if (m_failure) {
            std::rethrow_exception(m_failure);
        }
    }

 private:
    std::exception_ptr m_failure;
};

/// Runs every step, one after the other, then throws what the first failing one threw.
template <class... Steps>
void AllSteps(Steps&&... steps) {
    FirstFailure failure;
    (failure.Try(std::forward<Steps>(steps)), ...);
    failure.Rethrow();
}

}  // namespace kestrelguard
