#include "runtime/TextSet.h"

#include <functional>
#include <utility>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

namespace {

constexpr std::size_t kLeastSlots = 16;

}  // namespace

TextSet& TextSet::operator=(TextSet&& other) noexcept {
    m_letters = std::exchange(other.m_letters, {});
    m_places = std::exchange(other.m_places, {});
    m_slots = std::exchange(other.m_slots, {});
    m_count = std::exchange(other.m_count, 0);
    return *this;
}

void TextSet::Add(std::wstring_view text) {
    if (!TryAdd(text)) {
        throw RunTimeError(RunTimeError::kDuplicateKey);
    }
}

bool TextSet::TryAdd(std::wstring_view text) {
    const std::size_t hash = HashOf(text);
    if (Find(text, hash) != nullptr) {
        return false;
    }
    MakeRoom();
    const std::size_t begin = m_letters.size();
    m_letters.append(text);
    m_places.push_back({begin, text.size(), hash});  // there is room: this cannot fail
    Enter(m_slots, m_places.size() - 1, hash);
    ++m_count;
    return true;
}

void TextSet::Remove(std::wstring_view text) {
    const Place* const found = Find(text, HashOf(text));
    if (found == nullptr) {
        throw RunTimeError(RunTimeError::kInvalidCall);
    }
    // Its letters and its slot stay until room is needed.
    m_places[static_cast<std::size_t>(found - m_places.data())].length = kGone;
    --m_count;
}

std::size_t TextSet::HashOf(std::wstring_view text) noexcept {
    return std::hash<std::wstring_view>()(text);
}

const TextSet::Place* TextSet::Find(std::wstring_view text, std::size_t hash) const noexcept {
    if (m_slots.empty()) {
        return nullptr;
    }
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t slot = hash & mask; m_slots[slot] != 0; slot = (slot + 1) & mask) {
        const Place& place = m_places[m_slots[slot] - 1];
        if (place.hash == hash && place.length != kGone && TextAt(place) == text) {
            return &place;
        }
    }
    return nullptr;
}

void TextSet::MakeRoom() {
    if (2 * (m_places.size() + 1) <= m_slots.size()) {
        return;
    }
    // Half of the new table, or more, stays free: the next time comes after as many additions as there are
    // texts.
    std::size_t size = kLeastSlots;
    while (size < 4 * (m_count + 1)) {
        size *= 2;
    }
    std::vector<std::uint32_t> slots(size);
    std::vector<Place> places;
    places.reserve(size / 2);
    std::wstring letters;
    const bool gone = m_count < m_places.size();
    if (gone) {
        letters.reserve(m_letters.size());
    }
    for (Place place : m_places) {
        if (place.length != kGone) {
            if (gone) {
                const std::size_t begin = letters.size();
                letters.append(TextAt(place));
                place.begin = begin;
            }
            places.push_back(place);
            Enter(slots, places.size() - 1, place.hash);
        }
    }
    if (gone) {
        m_letters.swap(letters);
    }
    m_places.swap(places);
    m_slots.swap(slots);
}

void TextSet::Enter(std::vector<std::uint32_t>& slots, std::size_t place, std::size_t hash) noexcept {
    const std::size_t mask = slots.size() - 1;
    std::size_t slot = hash & mask;
    while (slots[slot] != 0) {
        slot = (slot + 1) & mask;
    }
    slots[slot] = static_cast<std::uint32_t>(place + 1);
}

}  // namespace kestrelguard
