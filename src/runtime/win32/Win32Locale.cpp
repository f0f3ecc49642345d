#include "runtime/win32/Win32Locale.h"

#include <windows.h>

#include <array>

#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

/// The text that a platform call puts into a buffer, in the system code page (LOCALE_USE_CP_ACP: not in that
/// of the user's language, which may be another); it answers the text's size with its final NUL.
template <class Call>
std::wstring TextFrom(Call call) {
    std::array<char, 256> buffer{};
    const int size = call(buffer.data(), static_cast<int>(buffer.size()));
    if (size <= 0) {
        throw RunTimeError(RunTimeError::kInvalidCall);
    }
    return FromAnsi({buffer.data(), static_cast<std::size_t>(size - 1)});
}

}  // namespace

std::wstring Win32Locale::GeneralDateNow() const {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const std::wstring date = TextFrom([&](char* text, int size) {
        return GetDateFormatA(LOCALE_USER_DEFAULT, DATE_SHORTDATE | LOCALE_USE_CP_ACP, &now, nullptr, text,
                              size);
    });
    const std::wstring time = TextFrom([&](char* text, int size) {
        return GetTimeFormatA(LOCALE_USER_DEFAULT, LOCALE_USE_CP_ACP, &now, nullptr, text, size);
    });
    return date + L" " + time;
}

std::wstring Win32Locale::ThousandsSeparator() const {
    return TextFrom([](char* text, int size) {
        return GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_STHOUSAND | LOCALE_USE_CP_ACP, text, size);
    });
}

}  // namespace kestrelguard
