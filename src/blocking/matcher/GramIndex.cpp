#include "blocking/matcher/GramIndex.h"

#include <cstring>
#include <utility>

namespace kestrelguard {
namespace {

/// The prime next to 2^32 divided by the golden ratio: its multiples lie evenly in the range.
constexpr std::uint32_t kSpreading = 0x9E3779B1U;

/// Up to four bytes as a number.
std::uint32_t Letters(const char* at, std::size_t width) noexcept {
    std::uint32_t letters = 0;
    std::memcpy(&letters, at, width);
    return letters;
}

/// The hash of a gram of 1 to 4 or of 8 bytes. The multiplications bring its letters to the high bits, the
/// shift brings those down to the low ones, too.
std::uint32_t Hash(const char* at, std::size_t width) noexcept {
    const std::uint32_t product = width == 8 ? (Letters(at, 4) * kSpreading + Letters(at + 4, 4)) * kSpreading
                                             : Letters(at, width) * kSpreading;
    return product ^ (product >> 15);
}

}  // namespace

/// One search.
class GramIndex::Search {
 public:
    Search(const GramIndex& index, std::string_view searched)
        : m_index(index), m_searched(searched), m_unitsLeft(kLeastUnits + searched.size() / kBytesForUnit) {}

    Verdict Result() {
        const auto& rows = m_index.m_rowsOfWidth;
        const bool decided = (rows[8] != 0 && AtEach<8>()) || (rows[4] != 0 && AtEach<4>()) ||
                             (rows[3] != 0 && AtEach<3>()) || (rows[2] != 0 && AtEach<2>()) ||
                             (rows[1] != 0 && AtEach<1>());
        return decided ? m_verdict : Verdict::kNone;
    }

 private:
    // What may be compared, in units of one text of a chain and kBytesOfUnit bytes of it: one for every
    // kBytesForUnit bytes that are searched, and some for short addresses. Addresses searched for 100,000
    // ordinary names take three on average and 22 at most.
    static constexpr std::size_t kBytesForUnit = 4;
    static constexpr std::size_t kLeastUnits = 64;
    static constexpr std::size_t kBytesOfUnit = 16;

    /// Looks up the gram of a width at each position. Answers whether something decides.
    template <std::size_t Width>
    bool AtEach() {
        if (m_searched.size() < Width) {
            return false;
        }
        const GramTable::Filter filter(m_index.m_table);
        const char* const end = m_searched.data() + (m_searched.size() - Width + 1);
        for (const char* at = m_searched.data(); at != end; ++at) {
            const std::uint32_t hash = Hash(at, Width);
            if (filter.Passes(hash) && Compare(hash, static_cast<std::size_t>(at - m_searched.data()))) {
                return true;
            }
        }
        return false;
    }

    /// Whether a text of a chain decides; each has its gram at the position, if it occurs.
    bool Compare(std::uint32_t hash, std::size_t position) {
        for (Row row = m_index.m_table.Chain(hash); row != GramTable::kNone;
             row = m_index.m_filed[row].next) {
            const std::string_view text = m_index.m_texts[row];
            const std::size_t cost = 1 + text.size() / kBytesOfUnit;
            if (m_unitsLeft < cost) {
                m_verdict = Verdict::kTooMuchWork;
                return true;
            }
            m_unitsLeft -= cost;
            const std::size_t gram = m_index.m_filed[row].gram;
            if (gram <= position && text.size() <= m_searched.size() - (position - gram) &&
                std::memcmp(m_searched.data() + (position - gram), text.data(), text.size()) == 0) {
                m_verdict = Verdict::kSome;
                return true;
            }
        }
        return false;
    }

    const GramIndex& m_index;
    std::string_view m_searched;
    std::size_t m_unitsLeft;
    Verdict m_verdict = Verdict::kNone;
};

/// The hash of the gram under which a row is filed.
std::uint32_t GramIndex::HashOf(Row row) const noexcept {
    const std::string_view text = m_texts[row];
    return Hash(text.data() + m_filed[row].gram, WidthFor(text.size()));
}

/// Where the gram of a text begins under which it is best filed: the first that the filter has not seen yet,
/// or else the one with the shortest chain. The search begins in the middle: beginnings and ends ("http://",
/// ".com/") are what texts and addresses share.
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
    if (m_table.IsWorn()) {
        MakeTableAnew(row);
    }
    m_filed[row].gram = LeastCrowded(m_texts[row]);
    m_table.Put(HashOf(row), row, m_filed[row].next);
    ++m_rowsOfWidth[WidthFor(m_texts[row].size())];
}

/// Row by row, as they lie in memory: the way along the chains is longer (docs/matcher.md).
void GramIndex::MakeTableAnew(Row besides) {
    GramTable table(m_table.Rows() + 1);
    for (Row row = 0; row < m_texts.Slots(); ++row) {
        if (m_texts.Holds(row) && row != besides) {
            table.Put(HashOf(row), row, m_filed[row].next);
        }
    }
    m_table = std::move(table);
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
