#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrelguard {

/// A row of a table that gives numbers their texts.
struct NumberedText {
    std::int32_t number;
    const wchar_t* text;
};

/// The text of the number; null when the table has none.
template <std::size_t rows>
constexpr const wchar_t* TextOf(const NumberedText (&table)[rows], std::int32_t number) {
    for (const NumberedText& row : table) {
        if (row.number == number) {
            return row.text;
        }
    }
    return nullptr;
}

}  // namespace kestrelguard
