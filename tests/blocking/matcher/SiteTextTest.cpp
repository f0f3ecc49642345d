#include "blocking/matcher/SiteText.h"

#include <gtest/gtest.h>

#include "runtime/Text.h"

namespace kestrelguard {
namespace {

std::string BytesOf(std::wstring_view text) {
    std::string bytes;
    site_text::Append(bytes, text);
    return bytes;
}

TEST(SiteTextTest, EveryUnitComesBackAndHasBytesOfItsOwn) {
    for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
        const std::wstring text = {L'x', static_cast<wchar_t>(code), L'y'};
        ASSERT_EQ(site_text::TextOf(BytesOf(text)), text) << code;
    }
    if constexpr (sizeof(wchar_t) == 4) {
        for (const std::uint32_t code : {0x10000U, 0x1FFFFFU, 0x200000U, 0x3FFFFFFU, 0x4000000U, 0x7FFFFFFFU,
                                         0x80000000U, 0xFFFFFFFFU}) {
            const std::wstring text = {L'x', static_cast<wchar_t>(code), L'y'};
            ASSERT_EQ(site_text::TextOf(BytesOf(text)), text) << code;
        }
    }
}

TEST(SiteTextTest, TheBytesOfAUnitOccurInThoseOfAnotherOnlyWhenTheyAreEqual) {
    std::vector<std::string> units;
    for (const std::uint32_t code : {0x00U, 0x41U, 0x7FU, 0x80U, 0xBFU, 0xC0U, 0x7FFU, 0x800U, 0x1000U,
                                     0x20ACU, 0xD800U, 0xDFFFU, 0xFFFDU, 0xFFFFU}) {
        units.push_back(BytesOf(std::wstring(1, static_cast<wchar_t>(code))));
    }
    for (const std::string& one : units) {
        for (const std::string& other : units) {
            for (const std::string& third : units) {
                const auto at = (other + third).find(one);
                ASSERT_TRUE(at == std::string::npos || (at == 0 && one == other) ||
                            (at == other.size() && one == third));
            }
        }
    }
}

TEST(SiteTextTest, LowerCasesAsProgramTextIsLowerCased) {
    site_text::LowerCased lowerCased;
    for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
        const std::wstring text(3, static_cast<wchar_t>(code));
        ASSERT_EQ(lowerCased(text), BytesOf(LowerCase(text))) << code;
    }
    EXPECT_EQ(lowerCased(L""), "");
}

}  // namespace
}  // namespace kestrelguard
