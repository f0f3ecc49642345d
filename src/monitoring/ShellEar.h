#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "monitoring/WatchedDesktop.h"

namespace kestrelguard {

/// What one connection to the shell tells, passed on to the watch that has the connection, as long as there
/// is one.
template <class Watch>
class ShellEar final : public ShellListener {
 public:
    explicit ShellEar(std::weak_ptr<Watch> watch) : m_watch(std::move(watch)) {}

    void PassTo(std::weak_ptr<Watch> watch) noexcept { m_watch = std::move(watch); }
    void Deafen() noexcept { m_watch.reset(); }

    /// The other connection has told of a revocation that this one may tell again.
    void ExpectRepetition() noexcept { ++m_repetitions; }
    bool TakeRepetition() noexcept { return m_repetitions > 0 && m_repetitions-- > 0; }

    void WindowRegistered() override {
        if (const auto watch = m_watch.lock()) {
            watch->HearRegistered();
        }
    }
    void WindowRevoked() override {
        if (const auto watch = m_watch.lock()) {
            watch->HearRevoked(*this);
        }
    }
    void Reminded() override {
        if (const auto watch = m_watch.lock()) {
            watch->HearReminder();
        }
    }

 private:
    std::weak_ptr<Watch> m_watch;
    std::uint32_t m_repetitions = 0;
};

}  // namespace kestrelguard
