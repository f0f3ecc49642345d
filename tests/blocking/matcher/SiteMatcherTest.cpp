#include "blocking/matcher/SiteMatcher.h"

#include <gtest/gtest.h>

#include <random>

#include "blocking/SiteListOracle.h"

namespace kestrelguard {
namespace {

using namespace std::literals;

/// Texts of random letters out of a small alphabet.
class RandomTexts {
 public:
    RandomTexts(std::wstring alphabet, unsigned seed) : m_alphabet(std::move(alphabet)), m_random(seed) {}

    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    std::wstring Of(std::size_t length) {
        std::wstring text;
        while (text.size() < length) {
            text += m_alphabet[Below(m_alphabet.size())];
        }
        return text;
    }

 private:
    std::wstring m_alphabet;
    std::mt19937 m_random;
};

TEST(SiteMatcherTest, AnswersNoWithoutAnyText) {
    const SiteMatcher matcher;
    EXPECT_FALSE(matcher.AnyOccursIn(L""));
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://casino/"));
}

TEST(SiteMatcherTest, AnEmptyTextOccursInEveryAddressUntilTheLastIsRemoved) {
    SiteMatcher matcher;
    const SiteMatcher::Row first = matcher.Add(L"");
    const SiteMatcher::Row second = matcher.Add(L"");
    EXPECT_TRUE(matcher.AnyOccursIn(L""));
    matcher.Remove(first);
    EXPECT_TRUE(matcher.AnyOccursIn(L"x"));
    EXPECT_EQ(matcher.Text(second), L"");
    matcher.Remove(second);
    EXPECT_FALSE(matcher.AnyOccursIn(L"x"));
}

TEST(SiteMatcherTest, EqualTextsAreTakenBackOneByOne) {
    SiteMatcher matcher;
    const SiteMatcher::Row first = matcher.Add(L"casino");
    const SiteMatcher::Row second = matcher.Add(L"casino");
    matcher.Remove(first);
    EXPECT_TRUE(matcher.AnyOccursIn(L"http://casino/"));
    EXPECT_EQ(matcher.Text(second), L"casino");
    matcher.Remove(second);
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://casino/"));
}

/// A text occurs at the beginning, in the middle and at the end; one letter less, or another, does not.
TEST(SiteMatcherTest, FindsTextsOfEveryLengthAtEveryPlace) {
    const std::wstring letters = L"abcdefghijklmnopqrstuvwxyz0123456789";
    for (const std::size_t others : {0, 1, 50}) {
        for (std::size_t length = 1; length <= 24; ++length) {
            SiteMatcher matcher;
            for (std::size_t other = 0; other < others; ++other) {
                matcher.Add(L"#" + std::wstring(1 + other % 20, L'+') + std::to_wstring(other));
            }
            const std::wstring text = letters.substr(3, length);
            matcher.Add(text);
            for (std::size_t before = 0; before < 12; ++before) {
                for (std::size_t behind = 0; behind < 12; ++behind) {
                    const std::wstring address =
                        std::wstring(before, L'-') + text + std::wstring(behind, L'-');
                    ASSERT_TRUE(matcher.AnyOccursIn(address)) << length << ' ' << before << ' ' << behind;
                    std::wstring changed = address;
                    changed[before + length / 2] = L'!';
                    ASSERT_FALSE(matcher.AnyOccursIn(changed)) << length << ' ' << before << ' ' << behind;
                    std::wstring lacking = address;
                    lacking.erase(before + length - 1, 1);
                    ASSERT_FALSE(matcher.AnyOccursIn(lacking)) << length << ' ' << before << ' ' << behind;
                }
            }
        }
    }
}

TEST(SiteMatcherTest, TheAddressIsLowerCasedTheTextsAreNot) {
    SiteMatcher matcher;
    matcher.Add(L"Casino-Royal");
    matcher.Add(L"B");
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://Casino-Royal/B"));
    matcher.Add(L"casino-royal");
    EXPECT_TRUE(matcher.AnyOccursIn(L"http://CASINO-Royal/"));
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://b/"));
}

TEST(SiteMatcherTest, CharactersOutsideAsciiAndNulAreCharactersLikeOthers) {
    SiteMatcher matcher;
    matcher.Add(L"gr\u00fc\u00dfe");
    matcher.Add(L"\u20ac");
    matcher.Add(L"a\0b"s);
    EXPECT_TRUE(matcher.AnyOccursIn(L"http://GR\u00dc\u00dfE/"));
    EXPECT_TRUE(matcher.AnyOccursIn(L"5\u20ac"));
    EXPECT_TRUE(matcher.AnyOccursIn(L"xA\0Bx"s));
    EXPECT_FALSE(matcher.AnyOccursIn(L"ab"));
    EXPECT_FALSE(matcher.AnyOccursIn(L"gr\u00fc\u00dee"));
    // Parts of the bytes of other characters are no characters.
    EXPECT_FALSE(matcher.AnyOccursIn(L"\u20ad\u30ac\u00ac\u0082"));
}

TEST(SiteMatcherTest, AnAddressThatIsMuchLongerThanAllBeforeIsSearchedWhole) {
    SiteMatcher matcher;
    matcher.Add(L"needle");
    matcher.Add(L"another needle");
    EXPECT_FALSE(matcher.AnyOccursIn(L"x"));
    EXPECT_TRUE(matcher.AnyOccursIn(std::wstring(1000000, L'x') + L"needle"));
    EXPECT_FALSE(matcher.AnyOccursIn(std::wstring(1000000, L'\u20ac') + L"needl"));
}

TEST(SiteMatcherTest, ManyEqualTextsAreNoHarm) {
    SiteMatcher matcher;
    std::vector<SiteMatcher::Row> rows;
    for (int row = 0; row < 5000; ++row) {
        rows.push_back(matcher.Add(L"www.casino.example"));
    }
    EXPECT_TRUE(matcher.AnyOccursIn(L"http://www.casino.example/"));
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://www.casino.exampl/www.casin.example/ww.casino.example"));
    for (const SiteMatcher::Row row : rows) {
        EXPECT_EQ(matcher.Text(row), L"www.casino.example");
        matcher.Remove(row);
    }
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://www.casino.example/"));
}

/// Where texts are much alike the automaton decides, and no longer than they are held.
TEST(SiteMatcherTest, HandsHardListsToTheAutomaton) {
    RandomTexts texts(L"ab", 1);
    SiteMatcher matcher;
    std::vector<std::wstring> added;
    std::vector<SiteMatcher::Row> rows;
    for (int row = 0; row < 2000; ++row) {
        added.push_back(texts.Of(24));
        rows.push_back(matcher.Add(added.back()));
    }
    const std::size_t index = matcher.MemoryBytes();
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://www.example.com/index.html"));
    EXPECT_EQ(matcher.MemoryBytes(), index) << "an easy address needs no automaton";
    EXPECT_FALSE(matcher.AnyOccursIn(L"c" + texts.Of(20) + L"c" + std::wstring(2000, L'a')));
    EXPECT_GT(matcher.MemoryBytes(), index);
    EXPECT_TRUE(matcher.AnyOccursIn(texts.Of(500) + added[700] + texts.Of(500)));
    const SiteMatcher::Row more = matcher.Add(L"abcab");
    EXPECT_TRUE(matcher.AnyOccursIn(std::wstring(2000, L'a') + L"abcab"));
    matcher.Remove(more);
    EXPECT_FALSE(matcher.AnyOccursIn(std::wstring(2000, L'a') + L"abcab"));
    for (const SiteMatcher::Row row : rows) {
        matcher.Remove(row);
    }
    EXPECT_FALSE(matcher.AnyOccursIn(added[700]));
}

TEST(SiteMatcherTest, RemovedTextsLeaveNoMemoryBehindThatGrows) {
    SiteMatcher matcher;
    std::size_t mostEarly = 0;
    std::size_t mostLate = 0;
    std::vector<SiteMatcher::Row> rows;
    for (int number = 0; number < 60000; ++number) {
        rows.push_back(matcher.Add(L"www.site-" + std::to_wstring(number) + L".example"));
        if (rows.size() > 300) {
            matcher.Remove(rows[rows.size() - 301]);
        }
        std::size_t& most = number < 20000 ? mostEarly : mostLate;
        most = std::max(most, matcher.MemoryBytes());
    }
    EXPECT_LE(mostLate, mostEarly);
    EXPECT_TRUE(matcher.AnyOccursIn(L"http://www.site-59700.example/"));
    EXPECT_FALSE(matcher.AnyOccursIn(L"http://www.site-59699.example/"));
}

struct Alphabet {
    const char* name;
    std::wstring letters;
};

class SiteMatcherRandomTest : public testing::TestWithParam<Alphabet> {};

TEST_P(SiteMatcherRandomTest, AgreesWithThePlainDefinition) {
    RandomTexts random(GetParam().letters, 20040517);
    for (int list = 0; list < 36; ++list) {
        SiteListOracle oracle;
        const std::size_t most = std::size_t{1} << (list % 12);  // 1 to 2048 rows
        const std::size_t longest = 1 + random.Below(list % 3 == 0 ? 6 : 40);
        const std::size_t operations = 3 * most;
        for (std::size_t operation = 0; operation < operations; ++operation) {
            const std::size_t choice = random.Below(100);
            if (choice < 60 && oracle.Rows().size() < most) {
                oracle.Append(random.Of(random.Below(40) == 0 ? random.Below(longest + 1) : longest));
            } else if (choice < 64 && !oracle.Rows().empty()) {
                oracle.Append(oracle.Rows()[random.Below(oracle.Rows().size())]);
            } else if (choice < 84) {
                oracle.Remove(random.Below(1000000));
            } else if (choice < 85 && random.Below(200) == 0) {
                oracle.Clear();
            } else if (choice == 99 || most < 64) {
                std::wstring address = random.Of(random.Below(120));
                if (random.Below(2) == 0 && !oracle.Rows().empty()) {
                    address +=
                        oracle.Rows()[random.Below(oracle.Rows().size())] + random.Of(random.Below(12));
                    address.erase(random.Below(address.size() + 1), random.Below(2));
                }
                ASSERT_TRUE(oracle.AgreesOn(address)) << "list " << list << ", operation " << operation;
            }
        }
        ASSERT_TRUE(oracle.AgreesOnRows()) << "list " << list;
    }
}

INSTANTIATE_TEST_SUITE_P(Alphabets, SiteMatcherRandomTest,
                         testing::Values(Alphabet{"One", L"a"}, Alphabet{"Two", L"ab"},
                                         Alphabet{"Capitals", L"abAB"}, Alphabet{"Nul", L"a\0"s},
                                         Alphabet{"Latin", L"a\u00e9\u00c9\u00ff\u00d7"},
                                         Alphabet{"Mixed", L"iI\u0130\u0131\u20ac\u0178\u00ff\uffff"},
                                         Alphabet{"Surrogates", L"a\xd83d\xde00"s},
                                         Alphabet{"ManyBytes",
                                                  {L'a', wchar_t(0x7ff), wchar_t(0x800), wchar_t(0x10ffff),
                                                   wchar_t(-1), wchar_t(0x4000000)}},
                                         Alphabet{"Addresses", L"abcdefghijklmnopqrstuvwxyz0123456789.-/:"}),
                         [](const testing::TestParamInfo<Alphabet>& alphabet) {
                             return std::string(alphabet.param.name);
                         });

}  // namespace
}  // namespace kestrelguard
