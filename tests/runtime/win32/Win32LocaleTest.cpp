#include "runtime/win32/Win32Locale.h"

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h.
#include <oleauto.h>

#include <string>

namespace kestrelguard {
namespace {

/// The present date and time as automation writes it.
std::wstring AutomationDateNow() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    DATE date = 0;
    SystemTimeToVariantTime(&now, &date);
    BSTR text = nullptr;
    if (FAILED(VarBstrFromDate(date, LOCALE_USER_DEFAULT, 0, &text))) {
        return {};
    }
    std::wstring result(text, SysStringLen(text));
    SysFreeString(text);
    return result;
}

TEST(Win32Locale, DateIsThePlatformsGeneralDate) {
    const Win32Locale locale;
    std::wstring before;
    std::wstring ours;
    std::wstring after;
    do {
        before = AutomationDateNow();
        ours = locale.GeneralDateNow();
        after = AutomationDateNow();
    } while (before != after);
    ASSERT_FALSE(before.empty());
    EXPECT_EQ(ours, before);
}

TEST(Win32Locale, SeparatorIsThePlatformsOwn) {
    const std::wstring separator = Win32Locale().ThousandsSeparator();
    wchar_t grouped[64] = {};
    ASSERT_NE(GetNumberFormatW(LOCALE_USER_DEFAULT, 0, L"1234567", nullptr, grouped, 64), 0);
    const std::wstring text = grouped;
    EXPECT_EQ(text.substr(text.find_first_not_of(L"0123456789"), separator.size()), separator);
}

}  // namespace
}  // namespace kestrelguard
