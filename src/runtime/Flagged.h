#pragma once

#include <utility>

namespace kestrelguard {

/// Sets a flag for a scope. At its end the flag is what it was before, so scopes may lie in each other.
class Flagged {
 public:
    /// The flag outlives the scope.
    explicit Flagged(bool& flag) noexcept : m_flag(flag), m_before(std::exchange(flag, true)) {}
    ~Flagged() { m_flag = m_before; }
    Flagged(const Flagged&) = delete;
    Flagged& operator=(const Flagged&) = delete;

 private:
    bool& m_flag;
    bool m_before;
};

}  // namespace kestrelguard
