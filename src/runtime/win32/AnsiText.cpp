#include "runtime/win32/AnsiText.h"

#include <windows.h>

#include <algorithm>
#include <climits>
#include <type_traits>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

namespace {

int LengthOf(std::size_t size) {
    if (size > INT_MAX / 2) {
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    return static_cast<int>(size);
}

/// Every code page of the system holds the 7-bit characters in their own places. Addresses consist of them;
/// asking the system for each costs a walk over the cache more than everything else that it does.
template <class Letter>
bool SevenBit(std::basic_string_view<Letter> text) {
    return std::all_of(text.begin(), text.end(), [](Letter letter) {
        return static_cast<std::make_unsigned_t<Letter>>(letter) < 0x80;
    });
}

char Narrow(wchar_t letter) {
    return static_cast<char>(letter);
}

}  // namespace

std::string ToAnsi(std::wstring_view text) {
    std::string ansi;
    if (SevenBit(text)) {
        ansi.resize(text.size());
        std::transform(text.begin(), text.end(), ansi.begin(), Narrow);
        return ansi;
    }
    const int length = LengthOf(text.size());
    ansi.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr)));
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, ansi.data(), LengthOf(ansi.size()), nullptr, nullptr);
    return ansi;
}

AnsiArgument::AnsiArgument(std::wstring_view text) {
    if (text.size() < m_short.size()) {
        unsigned all = 0;
        const auto end = std::transform(text.begin(), text.end(), m_short.begin(), [&all](wchar_t letter) {
            all |= letter;
            return static_cast<char>(letter);
        });
        if (all < 0x80) {
            *end = '\0';
            return;
        }
    }
    m_text = ToAnsi(text);
}

std::wstring FromAnsi(std::string_view text) {
    std::wstring wide;
    if (SevenBit(text)) {
        wide.resize(text.size());
        std::copy(text.begin(), text.end(), wide.begin());
        return wide;
    }
    const int length = LengthOf(text.size());
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0)));
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), LengthOf(wide.size()));
    return wide;
}

}  // namespace kestrelguard
