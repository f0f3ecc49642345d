#include "blocking/matcher/GramIndex.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace kestrelguard {
namespace {

class GramIndexTest : public testing::Test {
 protected:
    TextStore texts;
    GramIndex index{texts};

    TextStore::Row Add(const std::string& text) {
        const TextStore::Row row = texts.Add(text);
        index.Add(row);
        return row;
    }
    void Remove(TextStore::Row row) {
        index.Remove(row);
        texts.Remove(row);
    }
    GramIndex::Verdict Search(const std::string& searched) const {
        // What lies behind the searched text is none of it.
        const std::string longer = searched + "!!!!!!!!";
        return index.AnyOccursIn(std::string_view(longer).substr(0, searched.size()));
    }
};

TEST_F(GramIndexTest, FindsTextsOfEveryWidthBesideEachOther) {
    const std::vector<std::string> all = {"a", "bc", "def", "ghij", "klmnopq", "rstuvwxy", "0123456789"};
    std::vector<TextStore::Row> rows;
    for (const std::string& text : all) {
        EXPECT_EQ(Search("--" + text + "--"), GramIndex::Verdict::kNone) << text;
        rows.push_back(Add(text));
        EXPECT_EQ(Search(text), GramIndex::Verdict::kSome) << text;
        EXPECT_EQ(Search("--" + text + "--"), GramIndex::Verdict::kSome) << text;
    }
    for (std::size_t text = 0; text < all.size(); ++text) {
        Remove(rows[text]);
        EXPECT_EQ(Search(all[text]), GramIndex::Verdict::kNone) << all[text];
        for (std::size_t other = text + 1; other < all.size(); ++other) {
            EXPECT_EQ(Search(all[other]), GramIndex::Verdict::kSome) << all[other];
        }
    }
}

TEST_F(GramIndexTest, DoesNotTakeTheBytesBehindTheSearchedText) {
    Add("a!!!!!!!");
    Add("a!!!");
    Add("a!");
    EXPECT_EQ(Search("a"), GramIndex::Verdict::kNone);
    EXPECT_EQ(Search("xxxxxxxxa"), GramIndex::Verdict::kNone);
}

TEST_F(GramIndexTest, GivesUpOnLongChainsOfTextsThatAreMuchAlike) {
    std::mt19937 random(3);
    for (int row = 0; row < 3000; ++row) {
        std::string text;
        while (text.size() < 24) {
            text += static_cast<char>('a' + random() % 2);
        }
        Add(text);
    }
    EXPECT_EQ(Search(std::string(1000, 'a') + "b" + std::string(1000, 'a')),
              GramIndex::Verdict::kTooMuchWork);
    EXPECT_EQ(Search("http://www.example.com/"), GramIndex::Verdict::kNone);
}

TEST_F(GramIndexTest, GivesUpOnAFewTextsThatAreVeryLong) {
    for (char last = 'b'; last <= 'z'; ++last) {
        Add(std::string(5000, 'a') + last);
    }
    EXPECT_EQ(Search(std::string(20000, 'a')), GramIndex::Verdict::kTooMuchWork);
}

/// An ordinary list of names never comes near the limit, even when addresses are made of its rows' parts.
TEST_F(GramIndexTest, DoesNotGiveUpOnOrdinaryLists) {
    std::mt19937 random(5);
    const auto name = [&] {
        std::string made;
        for (std::size_t left = 6 + random() % 8; left > 0; --left) {
            made += static_cast<char>('a' + random() % 26);
        }
        return made;
    };
    std::vector<std::string> names;
    for (int row = 0; row < 5000; ++row) {
        names.push_back(name());
        Add("http://www." + names.back() + ".com/index.html");
    }
    for (const std::string& one : names) {
        EXPECT_EQ(Search("http://www." + one + ".org/index.html?http://www.com/"), GramIndex::Verdict::kNone);
        EXPECT_EQ(Search("http://www." + one + ".com/index.html"), GramIndex::Verdict::kSome);
    }
}

}  // namespace
}  // namespace kestrelguard
