#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "blocking/matcher/GramTable.h"
#include "blocking/matcher/TextStore.h"

namespace kestrelguard {

/// Finds out whether any of many texts occurs in a searched one.
///
/// Each text is filed under one gram out of it: of 8 bytes, the one with the shortest chain; of 4 bytes for a
/// text of 4 to 7; all of a shorter text. A search looks up the gram at each position of the searched text
/// and compares the texts that are filed there. Adding takes time in proportion to the bytes of the text;
/// removing takes that of a walk along one chain.
class GramIndex {
 public:
    using Row = TextStore::Row;

    /// `texts` holds what is filed and nothing else, and outlives the index.
    explicit GramIndex(const TextStore& texts) : m_texts(texts) {}

    /// Files a text, right after it was added to the texts.
    void Add(Row row);
    /// Takes a text out, right before it is removed from the texts.
    void Remove(Row row) noexcept;
    void Clear() noexcept;

    enum class Verdict { kNone, kSome, kTooMuchWork };
    /// Gives up with kTooMuchWork when comparing takes longer than the length of the searched text accounts
    /// for: long chains of texts that are much alike.
    Verdict AnyOccursIn(std::string_view searched) const;

    std::size_t MemoryBytes() const noexcept;

 private:
    struct Filed {
        std::uint32_t gram = 0;  // where it begins in the text
        Row next = 0;            // in its chain
    };
    class Search;

    static constexpr std::size_t kLongGram = 8;
    static constexpr std::size_t kShortGram = 4;

    /// A chain of so many rows is as bad as a longer one: a search will not walk to its end.
    static constexpr unsigned kManyRows = 32;

    /// The width of the grams that texts of a length are filed under.
    static constexpr std::size_t WidthFor(std::size_t length) {
        return length >= kLongGram ? kLongGram : length >= kShortGram ? kShortGram : length;
    }
    std::uint32_t HashOf(Row row) const noexcept;
    /// With a place for one row besides.
    void MakeTableAnew(Row besides);
    std::uint32_t LeastCrowded(std::string_view text) const noexcept;
    unsigned RowsUnder(std::uint32_t hash, unsigned most) const noexcept;

    const TextStore& m_texts;
    std::vector<Filed> m_filed;  // by row
    GramTable m_table;
    std::array<std::size_t, kLongGram + 1> m_rowsOfWidth{};
};

}  // namespace kestrelguard
