#include "desktop/Pages.h"

#include <gtest/gtest.h>

namespace kestrelguard::desktop {
namespace {

std::wstring TextOf(const Page& page) {
    std::wstring text;
    for (const desktop::Run& run : page.runs) {
        text += run.text + (run.lineBreak ? L"\n" : L"");
    }
    return text;
}

TEST(PagesTest, AboutAddressesShowTheirTitleAndText) {
    const Page page = LoadPage(
        L"about:<html><head><title>A - B</title></head><body><a href=http://x.example/>Name&#153;</a> says: "
        L"<b><i>word</i></b><BR><B>http://y.example/ at noon</b></body></html>");
    EXPECT_EQ(L"A - B", page.title);
    EXPECT_EQ(L"Name\x2122 says: word\nhttp://y.example/ at noon", TextOf(page));
    ASSERT_EQ(4u, page.runs.size());
    EXPECT_EQ(L"http://x.example/", page.runs[0].link);
    EXPECT_FALSE(page.runs[0].newWindow);
    EXPECT_TRUE(page.runs[2].bold);
    EXPECT_TRUE(page.runs[2].italic);
    EXPECT_TRUE(page.runs[3].bold);
    EXPECT_FALSE(page.runs[3].italic);
}

TEST(PagesTest, AddressesAreMadeWhole) {
    EXPECT_EQ(L"http://www.home.example/", CompleteAddress(L" www.home.example "));
    EXPECT_EQ(L"http://a.example/b?c", CompleteAddress(L"http://a.example/b?c"));
    EXPECT_EQ(L"https://a.example/", CompleteAddress(L"https://a.example"));
    EXPECT_EQ(L"about:blank", CompleteAddress(L"about:blank"));
    EXPECT_EQ(L"", CompleteAddress(L"  "));
}

TEST(PagesTest, TheHomePageHasLinksOfBothKinds) {
    const Page page = LoadPage(kHomePage);
    EXPECT_EQ(L"Home", page.title);
    int links = 0;
    int newWindows = 0;
    int buttons = 0;
    for (const desktop::Run& run : page.runs) {
        links += !run.link.empty() && !run.newWindow;
        newWindows += run.newWindow && !run.button;
        buttons += run.button;
    }
    EXPECT_LT(0, links);
    EXPECT_LT(0, newWindows);
    EXPECT_LT(0, buttons);
}

TEST(PagesTest, SomePagesOpenWindowsByThemselves) {
    EXPECT_EQ(2u, LoadPage(L"http://popups.example/").popups.size());
}

TEST(PagesTest, UnknownAddressesNameTheirHost) {
    EXPECT_EQ(L"unknown.example", LoadPage(L"http://unknown.example/a/b").title);
}

TEST(PagesTest, BrokenTextIsSurvived) {
    EXPECT_EQ(L"a", TextOf(ParseHtml(L"a<")));
    EXPECT_EQ(L"&#; &unknown; &", TextOf(ParseHtml(L"&#; &unknown; &")));
    EXPECT_TRUE(ParseHtml(L"<a href=>").runs.empty());
}

}  // namespace
}  // namespace kestrelguard::desktop
