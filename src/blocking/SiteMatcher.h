#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelguard {

/// Answers whether any of many texts occurs in a lower-cased address.
class SiteMatcher {
 public:
    /// Names a text that was added; equal texts may share a name.
    using Row = std::uint32_t;

    Row Add(std::wstring_view text);
    /// Takes back one addition.
    void Remove(Row row);
    void Clear() noexcept;
    std::wstring Text(Row row) const { return m_texts[row].text; }

    bool AnyOccursIn(std::wstring_view address) const;

 private:
    struct Entry {
        std::wstring text;
        bool live = false;
    };
    std::vector<Entry> m_texts;
};

}  // namespace kestrelguard
