#include "runtime/win32/AnsiText.h"

#include <windows.h>

#include <climits>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

namespace {

int LengthOf(std::size_t size) {
    if (size > INT_MAX / 2) {
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    return static_cast<int>(size);
}

}  // namespace

std::string ToAnsi(std::wstring_view text) {
    std::string ansi;
    if (text.empty()) {
        return ansi;
    }
    const int length = LengthOf(text.size());
    ansi.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr)));
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, ansi.data(), LengthOf(ansi.size()), nullptr, nullptr);
    return ansi;
}

std::wstring FromAnsi(std::string_view text) {
    std::wstring wide;
    if (text.empty()) {
        return wide;
    }
    const int length = LengthOf(text.size());
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0)));
    MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), LengthOf(wide.size()));
    return wide;
}

}  // namespace kestrelguard
