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
    /// Makes room for one more row, and leaves out of the filter what was removed, when there is need of it.
    /// `hashOf` tells the hash of a row's gram; `next` gives, as a reference, the row that follows one.
    template <class HashOf, class Next>
    void Prepare(const HashOf& hashOf, const Next& next) {
        const std::size_t chains = ChainsFor(m_rows + 1);
        if (chains <= m_chains.size() && m_removed <= m_chains.size() / 2) {
            return;
        }
        GramTable fresh(chains);
        for (const Row first : m_chains) {
            for (Row row = first; row != kNone;) {
                const Row following = next(row);
                fresh.Put(hashOf(row), row, next(row));
                row = following;
            }
        }
        *this = std::move(fresh);
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

 private:
    /// A power of two: four chains a row, but no more than kPlenty unless there are as many rows. What lets
    /// fewer grams pass then costs more in fetches from memory than it saves in compares.
    static std::size_t ChainsFor(std::size_t rows) {
        constexpr std::size_t kPlenty = 65536;
        const std::size_t wanted = std::max(rows, std::min(4 * rows, kPlenty));
        std::size_t chains = 64;
        while (chains < wanted) {
            chains *= 2;
        }
        return chains;
    }

    explicit GramTable(std::size_t chains)
        : m_chains(chains, kNone),
          m_filter(chains, ~std::uint32_t{0}),
          m_mask(static_cast<std::uint32_t>(chains - 1)) {}

    // The chain is chosen by the low bits of a hash, the bits in the filter by the ten highest.
    static constexpr unsigned kBitsShift = 22;
    static constexpr std::array<std::uint32_t, 1024> kBits = [] {
        std::array<std::uint32_t, 1024> bits{};
        for (std::uint32_t at = 0; at < bits.size(); ++at) {
            const std::uint32_t first = at % 32;
            const std::uint32_t second = (first + 1 + at / 32 % 31) % 32;
            const std::uint32_t third = (first + 7 * second + at / 32 + 5) % 32;
            bits[at] = 1U << first | 1U << second | 1U << third;
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
