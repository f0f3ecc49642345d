#pragma once

#include <cstdint>
#include <new>

#include "runtime/RunTimeError.h"

/// How a test lets one call out of many fail.
namespace kestrelguard {

/// Lets one call out of many fail. Hand the same object to all fakes of a test, count the calls of a good
/// run, then let each of them fail in turn.
class Faults {
 public:
    /// The call of that position, counted from 0, throws `number` (kOutOfMemory from the allocator too when
    /// number is 0).
    void FailAt(int position, std::int32_t number) {
        m_failAt = position;
        m_number = number;
        m_calls = 0;
    }
    int Calls() const { return m_calls; }
    bool Hit() const { return m_failAt >= 0 && m_calls > m_failAt; }

    void Call() {
        if (m_calls++ == m_failAt) {
            if (m_number == 0) {
                throw std::bad_alloc();
            }
            throw RunTimeError(m_number);
        }
    }

 private:
    int m_failAt = -1;
    std::int32_t m_number = 0;
    int m_calls = 0;
};

/// Lets all these fakes fail by the same plan; null for none.
template <class... Fakes>
void LetFail(Faults* faults, Fakes&... fakes) {
    ((fakes.faults = faults), ...);
}

/// What every fake has: its optional Faults.
class Fallible {
 public:
    Faults* faults = nullptr;

 protected:
    ~Fallible() = default;
    void Call() const {
        if (faults != nullptr) {
            faults->Call();
        }
    }
};

}  // namespace kestrelguard
