#include "blocking/CountedTexts.h"

#include <algorithm>
#include <cstring>

namespace kestrelguard {

CountedTexts::Added CountedTexts::Add(std::string_view text) {
    const std::uint32_t hash = Hash(text);
    const Row known = Find(text, hash);
    if (known != kNone) {
        ++m_entries[known].count;
        return {known, false};
    }
    constexpr std::size_t kFullFifths = 4;
    if (m_count >= m_tags.size() / 5 * kFullFifths) {
        GrowPlaces();
    }
    MakeRoom(text.size());
    const std::size_t begin = m_bytes.size();
    m_bytes.append(text);
    Row row = m_free;
    if (row != kNone) {
        m_free = m_entries[row].begin;
    } else {
        row = Slots();
        try {
            m_entries.emplace_back();
        } catch (...) {
            m_bytes.resize(begin);
            throw;
        }
    }
    m_entries[row] = {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(text.size()), 1};
    TakePlace(hash, row);
    ++m_count;
    return {row, true};
}

void CountedTexts::Remove(Row row) noexcept {
    Entry& entry = m_entries[row];
    if (--entry.count > 0) {
        return;
    }
    std::size_t place = PlaceOf(Hash((*this)[row]));
    while (m_rows[place] != row) {
        place = NextPlace(place);
    }
    EmptyPlace(place);
    m_unusedBytes += entry.length;
    entry = {m_free, 0, 0};
    m_free = row;
    --m_count;
}

void CountedTexts::Clear() noexcept {
    *this = CountedTexts();
}

std::uint32_t CountedTexts::Hash(std::string_view text) noexcept {
    constexpr std::size_t kStep = sizeof(std::uint32_t);
    auto hash = static_cast<std::uint32_t>(text.size());
    while (!text.empty()) {
        std::uint32_t letters = 0;
        std::memcpy(&letters, text.data(), std::min(kStep, text.size()));
        text.remove_prefix(std::min(kStep, text.size()));
        hash = (hash ^ letters) * 0x9E3779B1U;
        hash ^= hash >> 15;
    }
    return hash;
}

CountedTexts::Row CountedTexts::Find(std::string_view text, std::uint32_t hash) const noexcept {
    if (m_tags.empty()) {
        return kNone;
    }
    const Tag tag = TagOf(hash);
    for (std::size_t place = PlaceOf(hash); m_tags[place] != 0; place = NextPlace(place)) {
        if (m_tags[place] == tag && (*this)[m_rows[place]] == text) {
            return m_rows[place];
        }
    }
    return kNone;
}

void CountedTexts::TakePlace(std::uint32_t hash, Row row) noexcept {
    std::size_t place = PlaceOf(hash);
    while (m_tags[place] != 0) {
        place = NextPlace(place);
    }
    m_tags[place] = TagOf(hash);
    m_rows[place] = row;
}

/// Empties a place and lets the texts behind it move up, so that each still stands where a search passes.
void CountedTexts::EmptyPlace(std::size_t place) noexcept {
    for (std::size_t behind = NextPlace(place); m_tags[behind] != 0; behind = NextPlace(behind)) {
        const std::size_t mask = m_tags.size() - 1;
        const std::size_t walked = (behind - PlaceOf(Hash((*this)[m_rows[behind]]))) & mask;
        if (walked >= ((behind - place) & mask)) {
            m_tags[place] = m_tags[behind];
            m_rows[place] = m_rows[behind];
            place = behind;
        }
    }
    m_tags[place] = 0;
}

void CountedTexts::GrowPlaces() {
    constexpr std::size_t kLeastPlaces = 64;
    const std::size_t places = std::max(kLeastPlaces, 2 * m_tags.size());
    std::vector<Tag> tags(places);
    std::vector<Row> rows(places);
    m_tags.swap(tags);
    m_rows.swap(rows);
    for (Row row = 0; row < Slots(); ++row) {
        if (Holds(row)) {
            TakePlace(Hash((*this)[row]), row);
        }
    }
}

/// Makes room for more bytes; where enough lie unused between the texts, by moving those together.
void CountedTexts::MakeRoom(std::size_t bytes) {
    constexpr std::size_t kWorthwhile = 8;  // as a part of all bytes
    if (m_bytes.capacity() - m_bytes.size() >= bytes ||
        m_unusedBytes < m_bytes.size() / kWorthwhile + bytes) {
        return;  // or the string grows by itself
    }
    std::string packed;
    packed.reserve(m_bytes.capacity());
    for (Entry& entry : m_entries) {
        if (entry.count > 0) {
            const std::size_t begin = packed.size();
            packed.append(m_bytes, entry.begin, entry.length);
            entry.begin = static_cast<std::uint32_t>(begin);
        }
    }
    m_bytes.swap(packed);
    m_unusedBytes = 0;
}

std::size_t CountedTexts::MemoryBytes() const noexcept {
    return m_bytes.capacity() + m_entries.capacity() * sizeof(Entry) + m_tags.capacity() * sizeof(Tag) +
           m_rows.capacity() * sizeof(Row);
}

}  // namespace kestrelguard
