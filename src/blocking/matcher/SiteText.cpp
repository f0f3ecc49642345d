#include "blocking/matcher/SiteText.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "runtime/Text.h"

namespace kestrelguard::site_text {
namespace {

/// The most bytes of one unit: three where a unit has 16 bits, seven where it has 32.
constexpr std::size_t kMostBytes = sizeof(wchar_t) == 2 ? 3 : 7;
constexpr unsigned kBitsOfRest = 6;

std::uint32_t CodeOf(wchar_t unit) {
    return static_cast<std::uint32_t>(unit);
}

constexpr std::uint32_t kAsciiEnd = 0x80;

/// Writes the bytes of a unit outside ASCII and answers the place behind them: a lead byte that has a one for
/// every byte, then a zero, then what the rest leaves of the code.
char* WriteBytes(char* to, std::uint64_t code) {
    unsigned rest = 1;
    while ((code >> (kBitsOfRest * rest)) >= (0x40U >> rest)) {
        ++rest;
    }
    const unsigned ones = (0xFF00U >> (rest + 1)) & 0xFF;
    *to++ = static_cast<char>(ones | (code >> (kBitsOfRest * rest)));
    while (rest > 0) {
        --rest;
        *to++ = static_cast<char>(0x80U | ((code >> (kBitsOfRest * rest)) & 0x3F));
    }
    return to;
}

char* Write(char* to, wchar_t unit) {
    const std::uint32_t code = CodeOf(unit);
    if (code >= kAsciiEnd) {
        return WriteBytes(to, code);
    }
    *to = static_cast<char>(code);
    return to + 1;
}

constexpr std::array<char, kAsciiEnd> LowerCaseTable() {
    std::array<char, kAsciiEnd> table{};
    for (unsigned code = 0; code < table.size(); ++code) {
        const bool capital = code >= 'A' && code <= 'Z';
        table[code] = static_cast<char>(capital ? code + ('a' - 'A') : code);
    }
    return table;
}
constexpr std::array<char, kAsciiEnd> kLowerCase = LowerCaseTable();

}  // namespace

void Append(std::string& bytes, std::wstring_view text) {
    const std::size_t begin = bytes.size();
    bytes.resize(begin + kMostBytes * text.size());
    char* to = bytes.data() + begin;
    for (const wchar_t unit : text) {
        to = Write(to, unit);
    }
    bytes.resize(static_cast<std::size_t>(to - bytes.data()));
}

std::wstring TextOf(std::string_view bytes) {
    std::wstring text;
    AppendTextOf(bytes, text);
    return text;
}

void AppendTextOf(std::string_view bytes, std::wstring& text) {
    const auto ascii = [](char byte) { return static_cast<unsigned char>(byte) < kAsciiEnd; };
    for (auto at = bytes.begin(); at != bytes.end();) {
        const auto end = std::find_if_not(at, bytes.end(), ascii);
        // The library's append would make a text of its own from bytes first.
        const std::size_t length = text.size();
        text.resize(length + static_cast<std::size_t>(end - at));
        std::copy(at, end, text.data() + length);
        at = end;
        if (at == bytes.end()) {
            return;
        }
        const auto lead = static_cast<unsigned char>(*at++);
        unsigned ones = 0;
        while ((lead & (0x80U >> ones)) != 0) {
            ++ones;
        }
        std::uint64_t code = lead & (0x7FU >> ones);
        for (unsigned rest = 1; rest < ones; ++rest) {
            code = code << kBitsOfRest | (static_cast<unsigned char>(*at++) & 0x3FU);
        }
        text += static_cast<wchar_t>(code);
    }
}

std::string_view LowerCased::operator()(std::wstring_view text) {
    if (m_buffer.size() < kMostBytes * text.size()) {
        m_buffer.resize(2 * kMostBytes * text.size());
    }
    char* to = m_buffer.data();
    for (const wchar_t unit : text) {
        const std::uint32_t code = CodeOf(unit);
        if (code < kAsciiEnd) {
            *to++ = kLowerCase[code];
        } else {
            to = Write(to, LowerCase(unit));
        }
    }
    return {m_buffer.data(), static_cast<std::size_t>(to - m_buffer.data())};
}

}  // namespace kestrelguard::site_text
