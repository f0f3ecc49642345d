#include "runtime/Text.h"

namespace kestrelguard {

wchar_t LowerCase(wchar_t letter) noexcept {
    // A table of our own: the C library knows only ASCII here, and the "W" functions do nothing on
    // Windows 98.
    const auto code = static_cast<unsigned>(letter);
    if (code < 0x80) {
        return letter >= L'A' && letter <= L'Z' ? static_cast<wchar_t>(letter + 32) : letter;
    }
    const auto in = [code](unsigned first, unsigned last) { return code >= first && code <= last; };
    if ((in(0xC0, 0xDE) && code != 0xD7) || in(0x391, 0x3A1) || in(0x3A3, 0x3AB) || in(0x410, 0x42F)) {
        return static_cast<wchar_t>(code + 32);  // Latin-1, Greek, Cyrillic
    }
    if (in(0xFF21, 0xFF3A)) {
        return static_cast<wchar_t>(code + 32);  // full-width Latin
    }
    if (in(0x400, 0x40F)) {
        return static_cast<wchar_t>(code + 80);
    }
    if (in(0x2160, 0x216F)) {
        return static_cast<wchar_t>(code + 16);  // Roman numerals
    }
    if ((in(0x100, 0x137) && code != 0x130) || in(0x14A, 0x177)) {
        return static_cast<wchar_t>(code | 1);  // pairs, capital even
    }
    if (in(0x139, 0x148) || in(0x179, 0x17E)) {
        return static_cast<wchar_t>(code % 2 != 0 ? code + 1 : code);  // pairs, capital odd
    }
    switch (code) {
        case 0x130:
            return L'i';
        case 0x178:
            return 0xFF;
        case 0x1A0:
        case 0x1AF:
            return static_cast<wchar_t>(code + 1);  // Vietnamese horned letters
        case 0x386:
            return 0x3AC;
        case 0x388:
        case 0x389:
        case 0x38A:
            return static_cast<wchar_t>(code + 37);
        case 0x38C:
            return 0x3CC;
        case 0x38E:
        case 0x38F:
            return static_cast<wchar_t>(code + 63);
        case 0x490:
            return 0x491;
        default:
            return letter;
    }
}

std::wstring LowerCase(std::wstring_view text) {
    std::wstring lower(text);
    for (wchar_t& letter : lower) {
        letter = LowerCase(letter);
    }
    return lower;
}

std::wstring UpperCase(std::wstring_view text) {
    std::wstring upper(text);
    for (wchar_t& letter : upper) {
        if (letter >= L'a' && letter <= L'z') {
            letter = static_cast<wchar_t>(letter - 32);
        }
    }
    return upper;
}

std::wstring_view Trim(std::wstring_view text) noexcept {
    const auto first = text.find_first_not_of(L' ');
    if (first == std::wstring_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

std::vector<std::wstring_view> Split(std::wstring_view text, std::wstring_view separator) {
    std::vector<std::wstring_view> pieces;
    if (text.empty()) {
        return pieces;
    }
    std::size_t begin = 0;
    for (auto at = text.find(separator); at != std::wstring_view::npos; at = text.find(separator, begin)) {
        pieces.push_back(text.substr(begin, at - begin));
        begin = at + separator.size();
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

std::wstring Without(std::wstring_view text, std::wstring_view part) {
    std::wstring rest;
    for (const std::wstring_view piece : Split(text, part)) {
        rest += piece;
    }
    return rest;
}

}  // namespace kestrelguard
