#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelguard {

/// Texts, equal ones held once and counted, packed one behind the other. Adding and removing take time in
/// proportion to the text, averaged over many, however many there are.
class CountedTexts {
 public:
    /// Names a text for as long as it is held.
    using Row = std::uint32_t;
    static constexpr Row kNone = ~Row{0};

    struct Added {
        Row row;
        bool isNew;
    };
    Added Add(std::string_view text);

    /// Takes back one addition.
    void Remove(Row row) noexcept;
    /// Whether one Remove more makes an end of the text.
    bool IsLast(Row row) const noexcept { return m_entries[row].count == 1; }
    void Clear() noexcept;

    /// A text that is held; valid until the next change.
    std::string_view operator[](Row row) const noexcept {
        return {m_bytes.data() + m_entries[row].begin, m_entries[row].length};
    }
    bool Holds(Row row) const noexcept { return m_entries[row].count > 0; }
    /// All rows are below this.
    Row Slots() const noexcept { return static_cast<Row>(m_entries.size()); }
    /// How many different texts are held.
    std::size_t Count() const noexcept { return m_count; }

    std::size_t MemoryBytes() const noexcept;

 private:
    struct Entry {
        std::uint32_t begin = 0;  // in m_bytes; the next free entry in a free one
        std::uint32_t length = 0;
        std::uint32_t count = 0;  // 0 in a free entry
    };
    /// A part of a text's hash that is never 0. 0 marks a free place of the hash table.
    using Tag = std::uint16_t;

    static std::uint32_t Hash(std::string_view text) noexcept;
    static Tag TagOf(std::uint32_t hash) noexcept { return static_cast<Tag>(hash >> 16 | 1); }
    std::size_t PlaceOf(std::uint32_t hash) const noexcept { return hash & (m_tags.size() - 1); }
    std::size_t NextPlace(std::size_t place) const noexcept { return (place + 1) & (m_tags.size() - 1); }
    Row Find(std::string_view text, std::uint32_t hash) const noexcept;
    void TakePlace(std::uint32_t hash, Row row) noexcept;
    void EmptyPlace(std::size_t place) noexcept;
    void GrowPlaces();
    void MakeRoom(std::size_t bytes);

    std::string m_bytes;
    std::vector<Entry> m_entries;
    // The hash table: a text stands at the first free place from that of its hash on. The tags, which are all
    // that most searches read, stand by themselves and so stay near the processor.
    std::vector<Tag> m_tags;
    std::vector<Row> m_rows;
    Row m_free = kNone;
    std::size_t m_count = 0;
    std::size_t m_unusedBytes = 0;
};

}  // namespace kestrelguard
