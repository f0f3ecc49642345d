#include "blocking/matcher/TextStore.h"

namespace kestrelguard {

TextStore::Row TextStore::Add(std::string_view text) {
    if (m_unusedBytes > m_bytes.size() / 2) {
        Pack();
    }
    const Place place = {static_cast<std::uint32_t>(m_bytes.size()), static_cast<std::uint32_t>(text.size())};
    Row row = m_free;
    if (row == kNone) {
        row = Slots();
        m_places.push_back({kNone, 0});
        m_free = row;
    }
    m_bytes.append(text);
    m_free = m_places[row].begin;
    m_places[row] = place;
    ++m_count;
    return row;
}

void TextStore::Remove(Row row) noexcept {
    m_unusedBytes += m_places[row].length;
    m_places[row] = {m_free, 0};
    m_free = row;
    --m_count;
}

void TextStore::Pack() {
    std::string packed;
    packed.reserve(m_bytes.size() - m_unusedBytes);
    for (Place& place : m_places) {
        if (place.length > 0) {
            const std::size_t begin = packed.size();
            packed.append(m_bytes, place.begin, place.length);
            place.begin = static_cast<std::uint32_t>(begin);
        }
    }
    m_bytes.swap(packed);
    m_unusedBytes = 0;
}

std::size_t TextStore::MemoryBytes() const noexcept {
    return m_bytes.capacity() + m_places.capacity() * sizeof(Place);
}

}  // namespace kestrelguard
