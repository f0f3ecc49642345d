#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kestrelguard {

/// Files rows under the hash of a gram, that is of some bytes in a row. Rows whose grams fall together form a
/// chain; the table knows the first row of each, its owner knows who follows whom.
///
/// A filter of 32 bits a chain comes before the chains; a filed gram clears three of them. It stays near the
/// processor, and lets a gram that was never filed pass in less than one case of a hundred.
class GramTable {
 public:
    using Row = std::uint32_t;
    static constexpr Row kNone = ~Row{0};

    /// The part that a search reads at every position.
    class Filter {
     public:
        explicit Filter(const GramTable& table) : m_words(table.m_filter.data()), m_mask(table.m_mask) {}
        bool Passes(std::uint32_t hash) const noexcept {
            return (m_words[hash & m_mask] & kBits[hash >> kBitsShift]) == 0;
        }

     private:
        const std::uint32_t* m_words;
        std::uint32_t m_mask;
    };

    bool Empty() const noexcept { return m_rows == 0; }
    Row Chain(std::uint32_t hash) const noexcept { return m_chains[hash & m_mask]; }
    std::size_t Rows() const noexcept { return m_rows; }
    /// Whether it should be made anew before one more row is filed: it has too few chains for that, or its
    /// filter lets too much pass that was removed.
    bool IsWorn() const noexcept {
        return ChainsFor(m_rows + 1) > m_chains.size() || m_removed > m_chains.size() / 2;
    }

    /// Files a row in front of its chain; `next` is told who follows it.
    void Put(std::uint32_t hash, Row row, Row& next) noexcept {
        const std::uint32_t at = hash & m_mask;
        next = m_chains[at];
        m_chains[at] = row;
        m_filter[at] &= ~kBits[hash >> kBitsShift];
        ++m_rows;
    }

    /// Takes a row out of its chain.
    template <class Next>
    void Take(std::uint32_t hash, Row row, const Next& next) noexcept {
        const std::uint32_t at = hash & m_mask;
        Row* link = &m_chains[at];
        while (*link != row) {
            link = &next(*link);
        }
        *link = next(row);
        --m_rows;
        ++m_removed;
    }

    std::size_t MemoryBytes() const noexcept {
        return m_chains.capacity() * sizeof(Row) + m_filter.capacity() * sizeof(std::uint32_t);
    }

    GramTable() = default;
    /// With room for so many rows.
    explicit GramTable(std::size_t rows)
        : m_chains(ChainsFor(rows), kNone),
          m_filter(m_chains.size(), ~std::uint32_t{0}),
          m_mask(static_cast<std::uint32_t>(m_chains.size() - 1)) {}

 private:
    /// A power of two: four chains a row, but no more than kPlenty unless there are as many rows. Beyond
    /// that the table outgrows the processor's caches, and fetches cost more than the compares they save.
    static std::size_t ChainsFor(std::size_t rows) {
        constexpr std::size_t kPlenty = 65536;
        const std::size_t wanted = std::max(rows, std::min(4 * rows, kPlenty));
        std::size_t chains = 64;
        while (chains < wanted) {
            chains *= 2;
        }
        return chains;
    }

    // The chain is chosen by the low bits of a hash, the bits in the filter by the ten highest.
    static constexpr unsigned kBitsShift = 22;
    /// Three bits each, as far apart as the place in the table says.
    static constexpr std::array<std::uint32_t, 1024> kBits = [] {
        std::array<std::uint32_t, 1024> bits{};
        for (std::uint32_t at = 0; at < bits.size(); ++at) {
            const std::uint32_t first = at % 32;
            const std::uint32_t step = 1 + at / 32 % 15;
            bits[at] = 1U << first | 1U << (first + step) % 32 | 1U << (first + 2 * step) % 32;
        }
        return bits;
    }();

    std::vector<Row> m_chains;
    std::vector<std::uint32_t> m_filter;
    std::uint32_t m_mask = 0;
    std::size_t m_rows = 0;
    std::size_t m_removed = 0;
};

}  // namespace kestrelguard
