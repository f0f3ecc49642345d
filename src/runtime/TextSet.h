#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrelguard {

/// Texts, each under itself as key, in the order of their addition: `siteSet`, `titleKeywordSet`,
/// `SavedCookies`. Texts are compared exactly, case included. They lie one behind the other in one block:
/// there may be a hundred thousand, and a block of memory for each would cost more than all that is done with
/// them.
class TextSet {
    /// Where a text lies.
    struct Place {
        std::size_t begin;
        std::size_t length;  ///< kGone after its removal
        std::size_t hash;
    };
    static constexpr std::size_t kGone = ~std::size_t{0};

 public:
    /// Walks the texts, first to last. Good until the next change.
    class const_iterator {
     public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::wstring;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = std::wstring;

        const_iterator(const TextSet& set, std::size_t at) : m_set(&set), m_at(at) { SkipGone(); }
        std::wstring operator*() const { return std::wstring(m_set->TextAt(m_set->m_places[m_at])); }
        const_iterator& operator++() {
            ++m_at;
            SkipGone();
            return *this;
        }
        bool operator==(const const_iterator& other) const { return m_at == other.m_at; }

     private:
        void SkipGone() {
            while (m_at < m_set->m_places.size() && m_set->m_places[m_at].length == kGone) {
                ++m_at;
            }
        }
        const TextSet* m_set;
        std::size_t m_at;
    };

    TextSet() = default;
    TextSet(const TextSet&) = delete;
    TextSet& operator=(const TextSet&) = delete;
    TextSet(TextSet&& other) noexcept { *this = std::move(other); }
    TextSet& operator=(TextSet&& other) noexcept;
    ~TextSet() = default;

    /// Appends the text, which is no part of the set's own. Throws kDuplicateKey when it is there. What
    /// throws leaves the set as it was.
    void Add(std::wstring_view text);
    /// Appends the text unless it is there. Answers whether it did.
    bool TryAdd(std::wstring_view text);
    /// Throws kInvalidCall when it is not there.
    void Remove(std::wstring_view text);
    bool Contains(std::wstring_view text) const noexcept { return Find(text, HashOf(text)) != nullptr; }

    std::size_t Count() const noexcept { return m_count; }
    bool Empty() const noexcept { return m_count == 0; }
    void Clear() noexcept { *this = TextSet(); }

    const_iterator begin() const { return {*this, 0}; }
    const_iterator end() const { return {*this, m_places.size()}; }

 private:
    static std::size_t HashOf(std::wstring_view text) noexcept;
    std::wstring_view TextAt(const Place& place) const noexcept {
        return {m_letters.data() + place.begin, place.length};
    }
    /// Null when it is not there.
    const Place* Find(std::wstring_view text, std::size_t hash) const noexcept;
    void MakeRoom();
    static void Enter(std::vector<std::uint32_t>& slots, std::size_t place, std::size_t hash) noexcept;

    std::wstring m_letters;
    std::vector<Place> m_places;
    /// A table by hash, at most half full: 0, or the number of a place plus 1, gone ones included. Its size
    /// is a power of two.
    std::vector<std::uint32_t> m_slots;
    std::size_t m_count = 0;
};

}  // namespace kestrelguard
