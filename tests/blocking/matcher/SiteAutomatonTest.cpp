#include "blocking/matcher/SiteAutomaton.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace kestrelguard {
namespace {

TEST(SiteAutomatonTest, FindsNothingWithoutTexts) {
    const SiteAutomaton automaton({});
    EXPECT_FALSE(automaton.AnyOccursIn(""));
    EXPECT_FALSE(automaton.AnyOccursIn("abc"));
}

TEST(SiteAutomatonTest, FindsATextInsideTheBeginningOfAnother) {
    const SiteAutomaton automaton({"abcd", "bc", "xbcx"});
    EXPECT_TRUE(automaton.AnyOccursIn("abc"));
    EXPECT_TRUE(automaton.AnyOccursIn("xxbc"));
    EXPECT_FALSE(automaton.AnyOccursIn("abdc"));
}

TEST(SiteAutomatonTest, TellsAllLettersApart) {
    std::string letters;
    for (int letter = 0; letter < 256; ++letter) {
        letters += static_cast<char>(letter);
    }
    std::vector<std::string> texts;
    for (const char letter : letters) {
        texts.push_back(std::string("q") + letter + letter);
    }
    const SiteAutomaton automaton({texts.begin(), texts.end()});
    EXPECT_FALSE(automaton.AnyOccursIn(letters));
    for (const char letter : letters) {
        EXPECT_TRUE(automaton.AnyOccursIn("qq" + std::string(2, letter)));
        if (letter != 'q') {
            EXPECT_FALSE(automaton.AnyOccursIn(std::string("q") + letter + "q"));
        }
    }
}

TEST(SiteAutomatonTest, AgreesWithThePlainDefinition) {
    std::mt19937 random(1);
    const auto text = [&](std::size_t length, unsigned letters) {
        std::string made;
        while (made.size() < length) {
            made += static_cast<char>('a' + random() % letters);
        }
        return made;
    };
    for (int list = 0; list < 400; ++list) {
        const unsigned letters = 1 + random() % 4;
        std::vector<std::string> texts;
        for (std::size_t left = random() % 40; left > 0; --left) {
            texts.push_back(text(1 + random() % 9, letters));
        }
        const SiteAutomaton automaton({texts.begin(), texts.end()});
        for (int search = 0; search < 30; ++search) {
            const std::string searched = text(random() % 40, letters);
            ASSERT_EQ(automaton.AnyOccursIn(searched),
                      std::any_of(texts.begin(), texts.end(), [&](const std::string& one) {
                          return searched.find(one) != std::string::npos;
                      }));
        }
    }
}

}  // namespace
}  // namespace kestrelguard
