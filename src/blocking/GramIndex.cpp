#include "blocking/GramIndex.h"

#include <cstring>

namespace kestrelguard {
namespace {

// A gram's hash. The multiplications spread its letters over the high bits, Spread takes those down to the
// low ones. The hash of a long gram goes on from the product of its first half, which is that of a short one.
constexpr std::uint32_t kFirstFactor = 0x9E3779B1U;
constexpr std::uint32_t kSecondFactor = 0x85EBCA6BU;

std::uint32_t Spread(std::uint32_t product) noexcept {
    return product ^ (product >> 15);
}

/// Up to four bytes as a number.
std::uint32_t Letters(const char* at, std::size_t width = 4) noexcept {
    std::uint32_t letters = 0;
    std::memcpy(&letters, at, width);
    return letters;
}

std::uint32_t Product(std::uint32_t letters) noexcept {
    return letters * kFirstFactor;
}
std::uint32_t ShortHash(std::uint32_t product) noexcept {
    return Spread(product);
}
std::uint32_t LongHash(std::uint32_t product, const char* at) noexcept {
    return Spread((product + Letters(at + 4)) * kSecondFactor);
}

/// The hash of a gram of any width up to 8 bytes.
std::uint32_t Hash(const char* at, std::size_t width) noexcept {
    return width == 8 ? LongHash(Product(Letters(at)), at)
                      : ShortHash(Product(Letters(at, width) + static_cast<std::uint32_t>(4 - width)));
}

}  // namespace

/// One search.
class GramIndex::Search {
 public:
    Search(const GramIndex& index, std::string_view searched)
        : m_index(index),
          m_filter(index.m_table),
          m_searched(searched),
          m_work(kLeastWork + searched.size() / kBytesForWork) {}

    Verdict Result() {
        const auto& rows = m_index.m_rowsOfWidth;
        const bool decided = (rows[8] == 0   ? rows[4] != 0 && AtEach<false, true>()
                              : rows[4] == 0 ? AtEach<true, false>()
                                             : AtEach<true, true>()) ||
                             (rows[3] != 0 && AtEach<3>()) || (rows[2] != 0 && AtEach<2>()) ||
                             (rows[1] != 0 && AtEach<1>());
        return decided ? m_verdict : Verdict::kNone;
    }

 private:
    static constexpr std::size_t kLeastWork = 64;
    static constexpr std::size_t kBytesForWork = 4;
    static constexpr std::size_t kBytesComparedForWork = 16;

    /// Looks up the grams of 4 and 8 bytes at each position. Answers whether something decides.
    template <bool Long, bool Short>
    bool AtEach() {
        constexpr std::size_t kWidth = Short ? kShortGram : kLongGram;
        if (m_searched.size() < kWidth) {
            return false;
        }
        const Filter filter = m_filter;
        const char* const end = m_searched.data() + (m_searched.size() - kWidth + 1);
        for (const char* at = m_searched.data(); at != end; ++at) {
            const std::uint32_t product = Product(Letters(at));
            const std::uint32_t shortHash = ShortHash(product);
            const std::uint32_t longHash = LongHash(product, at);
            const bool isShort = Short && filter.Passes(shortHash);
            const bool isLong = Long && filter.Passes(longHash);
            if (static_cast<unsigned>(isShort) | static_cast<unsigned>(isLong)) {
                if ((isShort && Compare(shortHash, at)) || (isLong && Compare(longHash, at))) {
                    return true;
                }
            }
        }
        return false;
    }

    /// The same for the grams of a lesser width.
    template <std::size_t Width>
    bool AtEach() {
        for (std::size_t at = 0; at + Width <= m_searched.size(); ++at) {
            const std::uint32_t hash = Hash(m_searched.data() + at, Width);
            if (m_filter.Passes(hash) && Compare(hash, m_searched.data() + at)) {
                return true;
            }
        }
        return false;
    }

    /// Whether a text of a chain decides; each has its gram at `at`, if it occurs.
    [[gnu::noinline]] bool Compare(std::uint32_t hash, const char* at) {
        const auto position = static_cast<std::size_t>(at - m_searched.data());
        for (Row row = m_index.m_table.Chain(hash); row != GramTable::kNone;
             row = m_index.m_filed[row].next) {
            const std::string_view text = m_index.m_texts[row];
            const std::size_t cost = 1 + text.size() / kBytesComparedForWork;
            if (m_work < cost) {
                m_verdict = Verdict::kTooMuchWork;
                return true;
            }
            m_work -= cost;
            const std::size_t gram = m_index.m_filed[row].gram;
            if (gram <= position && text.size() <= m_searched.size() - (position - gram) &&
                std::memcmp(m_searched.data() + (position - gram), text.data(), text.size()) == 0) {
                m_verdict = Verdict::kSome;
                return true;
            }
        }
        return false;
    }

    using Filter = GramTable::Filter;

    const GramIndex& m_index;
    const Filter m_filter;
    std::string_view m_searched;
    std::size_t m_work;
    Verdict m_verdict = Verdict::kNone;
};

/// The hash of the gram under which a row is filed.
std::uint32_t GramIndex::HashOf(Row row) const noexcept {
    const std::string_view text = m_texts[row];
    return Hash(text.data() + m_filed[row].gram, WidthFor(text.size()));
}

/// Where the gram of a text begins under which it is best filed: one that the filter has not seen yet, or
/// else the one with the shortest chain. The search begins in the middle: beginnings and ends ("http://",
/// ".com/") are what addresses share.
std::uint32_t GramIndex::LeastCrowded(std::string_view text) const noexcept {
    const std::size_t width = WidthFor(text.size());
    const std::size_t grams = text.size() - width + 1;
    std::size_t best = 0;
    unsigned leastRows = kManyRows;
    for (std::size_t gram = grams / 2, tried = 0; tried < grams && leastRows > 0; ++tried) {
        const unsigned rows = RowsUnder(Hash(text.data() + gram, width), leastRows);
        if (rows < leastRows) {
            best = gram;
            leastRows = rows;
        }
        gram = gram + 1 < grams ? gram + 1 : 0;
    }
    return static_cast<std::uint32_t>(best);
}

/// The length of the chain of a gram, counted up to `most`; 0 for a gram that the filter stops.
unsigned GramIndex::RowsUnder(std::uint32_t hash, unsigned most) const noexcept {
    if (!GramTable::Filter(m_table).Passes(hash)) {
        return 0;
    }
    unsigned rows = 0;
    for (Row row = m_table.Chain(hash); row != GramTable::kNone && rows < most; row = m_filed[row].next) {
        ++rows;
    }
    return rows;
}

void GramIndex::Add(Row row) {
    if (row >= m_filed.size()) {
        m_filed.resize(row + 1);
    }
    const auto next = [this](Row of) -> Row& { return m_filed[of].next; };
    m_table.Prepare([this](Row of) { return HashOf(of); }, next);
    m_filed[row].gram = LeastCrowded(m_texts[row]);
    m_table.Put(HashOf(row), row, m_filed[row].next);
    ++m_rowsOfWidth[WidthFor(m_texts[row].size())];
}

void GramIndex::Remove(Row row) noexcept {
    m_table.Take(HashOf(row), row, [this](Row of) -> Row& { return m_filed[of].next; });
    --m_rowsOfWidth[WidthFor(m_texts[row].size())];
}

void GramIndex::Clear() noexcept {
    m_filed = {};
    m_table = {};
    m_rowsOfWidth = {};
}

GramIndex::Verdict GramIndex::AnyOccursIn(std::string_view searched) const {
    return m_table.Empty() ? Verdict::kNone : Search(*this, searched).Result();
}

std::size_t GramIndex::MemoryBytes() const noexcept {
    return m_filed.capacity() * sizeof(Filed) + m_table.MemoryBytes();
}

}  // namespace kestrelguard
