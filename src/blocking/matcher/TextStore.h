#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelguard {

/// Texts, none of them empty, packed one behind the other. Adding and removing take time in proportion to the
/// text, averaged over many.
class TextStore {
 public:
    /// Names a text for as long as it is held.
    using Row = std::uint32_t;

    Row Add(std::string_view text);
    void Remove(Row row) noexcept;
    void Clear() noexcept { *this = TextStore(); }

    /// A text that is held; valid until the next change.
    std::string_view operator[](Row row) const noexcept {
        return {m_bytes.data() + m_places[row].begin, m_places[row].length};
    }
    bool Holds(Row row) const noexcept { return m_places[row].length > 0; }
    /// All rows are below this.
    Row Slots() const noexcept { return static_cast<Row>(m_places.size()); }
    std::size_t Count() const noexcept { return m_count; }

    std::size_t MemoryBytes() const noexcept;

 private:
    static constexpr Row kNone = ~Row{0};

    struct Place {
        std::uint32_t begin;   // in m_bytes; the next free place in a free one
        std::uint32_t length;  // 0 in a free place
    };
    void Pack();

    std::string m_bytes;
    std::vector<Place> m_places;
    Row m_free = kNone;
    std::size_t m_count = 0;
    std::size_t m_unusedBytes = 0;
};

}  // namespace kestrelguard
