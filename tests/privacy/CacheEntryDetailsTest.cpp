#include "privacy/CacheEntryDetails.h"

#include <gtest/gtest.h>

namespace kestrelguard {
namespace {

const CacheTime kSome{2003, L"5/6/2003", L"7:08 PM"};
const CacheTime kEmpty{1601, L"1/1/1601", L"12:00 AM"};

TEST(CacheEntryDetails, HasThreeLines) {
    EXPECT_EQ(CacheEntryDetailsText({L"C:\\cache\\a.gif", kSome, kSome, kSome, kSome, 1234}, L","),
              L"Cache File: C:\\cache\\a.gif...\r\n"
              L"Last accessed: 5/6/2003 7:08 PM  |  Modified: 5/6/2003 7:08 PM\r\n"
              L"Load complete: 5/6/2003 7:08 PM  |  Expires: 5/6/2003 7:08 PMAccessed: 1,234");
}

TEST(CacheEntryDetails, AnEmptyTimeHasNoValue) {
    EXPECT_EQ(CacheEntryDetailsText({L"a", kEmpty, kEmpty, kEmpty, kEmpty, 1}, L","),
              L"Cache File: a...\r\n"
              L"Last accessed: No value.  |  Modified: No value.\r\n"
              L"Load complete: No value.  |  Expires: No value.Accessed: 1");
}

TEST(CacheEntryDetails, CutsTheFileNameAt75Characters) {
    const std::wstring name = std::wstring(75, L'n') + L"cut";
    const std::wstring text = CacheEntryDetailsText({name, kSome, kSome, kSome, kSome, 1}, L",");
    EXPECT_EQ(text.substr(0, text.find(L"\r\n")), L"Cache File: " + std::wstring(75, L'n') + L"...");
}

TEST(CacheEntryDetails, ARateOfZeroIsEmpty) {
    const std::wstring text = CacheEntryDetailsText({L"a", kSome, kSome, kSome, kSome, 0}, L",");
    EXPECT_TRUE(text.ends_with(L"Accessed: "));
}

}  // namespace
}  // namespace kestrelguard
