#pragma once

#include <cstdint>
#include <string>

namespace kestrelguard {

/// Tells that an enumeration goes in circles, as that of a damaged index does.
///
/// It keeps the address of one entry and compares the following ones with it; the kept address is renewed
/// after 16, 32, 64, ... entries. In a circle of n entries it comes back once every n. In an orderly
/// enumeration an address may come back when an entry is replaced during the walk, but not sixteen times.
/// Costs one comparison an entry, whatever their number.
class CircleDetector {
 public:
    static constexpr std::uint32_t kReturns = 16;

    /// Takes the next entry's address. True when the enumeration goes in circles.
    bool Next(const std::wstring& address) {
        if (address == m_kept && ++m_returns >= kReturns) {
            return true;
        }
        if (++m_since >= m_limit) {
            m_kept = address;
            m_returns = 0;
            m_since = 0;
            m_limit *= 2;
        }
        return false;
    }

 private:
    std::wstring m_kept;
    std::uint32_t m_returns = 0;
    std::uint64_t m_since = 0;
    std::uint64_t m_limit = 16;
};

}  // namespace kestrelguard
