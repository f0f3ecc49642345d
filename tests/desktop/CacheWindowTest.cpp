// The cache window of the unchanged program, on real entries of the platform's cache.

#include <windows.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "DesktopTest.h"
#include "desktop/driver/CacheFiller.h"
#include "desktop/driver/StandInLibraries.h"

namespace kestrelguard::testing {
namespace {

using Texts = std::vector<std::wstring>;

class CacheWindowTest : public OneGuardTest {
 protected:
    static void SetUpTestSuite() { ASSERT_TRUE(BindToOwnWinInet()); }

    CacheWindowTest() { CacheFiller::Empty(); }
    ~CacheWindowTest() override {
        m_guard.reset();
        CacheFiller::Empty();
    }

    void Start(const wchar_t* button = L"Show Cache") {
        m_folder = std::make_unique<GuardFolder>(std::string("MIN/:/:n\r\n"));
        m_folder->Add(OwnFolder() + L"\\wininet.dll");
        m_guard = std::make_unique<Guard>(*m_folder);
        ASSERT_TRUE(m_guard->WaitReady());
        Show(button);
    }
    void Show(const wchar_t* button) {
        Click(m_guard->Button(button));
        m_window = WaitTop(m_guard->Program().Id(),
                           [](HWND top) { return TextOf(top) == kCacheCaption && IsWindowVisible(top); });
        ASSERT_NE(nullptr, m_window);
    }
    HWND Button(const wchar_t* caption) const { return FindInside(m_window, L"Button", caption); }
    HWND ByClass(const wchar_t* type, std::size_t index) const {
        std::vector<HWND> found;
        for (const HWND child : testing::Inside(m_window)) {
            if (lstrcmpiW(ClassOf(child).c_str(), type) == 0) {
                found.push_back(child);
            }
        }
        return found.at(index);
    }
    HWND Entries() const { return ByClass(L"ListBox", 0); }
    HWND Saved() const { return ByClass(L"ListBox", 1); }
    HWND FindField() const { return ByClass(L"Edit", 0); }
    /// The button beside the find field, whatever it is called at the moment.
    HWND FindButton() const { return GetDlgItem(m_window, IdOf(FindField()) + 1); }
    HWND Details() const { return ByClass(L"Static", 2); }
    MessageBoxSeen Box() const { return WaitMessageBox(m_guard->Program().Id()); }
    bool NoBox() const { return !FindMessageBox(m_guard->Program().Id()); }

    /// The box that a click on the find button brings up.
    std::wstring FindAndRead() {
        Click(FindButton());
        const MessageBoxSeen box = Box();
        EXPECT_EQ(L"Kestrelguard", box.caption);
        EXPECT_TRUE(Dismiss(box));
        return box.text;
    }
    RECT PlaceInWindow(HWND control) const {
        RECT place = RectOf(control);
        MapWindowPoints(nullptr, m_window, reinterpret_cast<POINT*>(&place), 2);
        return place;
    }

    HWND m_window = nullptr;
};

TEST_F(CacheWindowTest, EveryControlHasItsCaptionAndTip) {
    Start();
    const struct {
        const wchar_t* caption;
        const wchar_t* tip;
    } buttons[] = {
        {L"All Cache", L"Click here to show all your internet cache files."},
        {L"<- Find", L"Click here to find internet cache containing..."},
        {L"Cookies", L"Click here to show only cookies in your cache."},
        {L"<- Refresh", L"Click here to refresh the IE Cache..."},
        {L"<- Clear", L"Click here to clear the IE Cache NOW."},
        {L"<- Remove", L"To remove a cookie, select from the list on the right..."},
        {L"Save ->", L"To save a cookie, select from the list on the left..."},
    };
    for (const auto& button : buttons) {
        const HWND control = Button(button.caption);
        ASSERT_NE(nullptr, control) << std::string(button.caption, button.caption + wcslen(button.caption));
        EXPECT_EQ(button.tip, TipOf(m_window, control));
    }
    EXPECT_EQ(L"Type the text to find in the cache here.", TipOf(m_window, FindField()));
    EXPECT_NE(nullptr, FindInside(m_window, L"Static", L"Find Internet Cache Containing:"));
    EXPECT_NE(nullptr, FindInside(m_window, L"Static", L"IE Saved Cookies List"));
    EXPECT_NE(nullptr, FindInside(m_window, L"Static", L"Internet Explorer Cache 0 Files; 0 Cookies..."));
    EXPECT_EQ(nullptr, GetWindow(m_window, GW_OWNER));
}

TEST_F(CacheWindowTest, ThereIsOneWindowAndItsViewIsForgottenWhenItCloses) {
    CacheFiller::Add("http://a.example/", "a");
    CacheFiller::Add("Cookie:a@a.example/", "c");
    Start(L"Show Cookies");
    EXPECT_EQ((Texts{L"Cookie:a@a.example/"}), ListRows(Entries()));
    const HWND first = m_window;
    Show(L"Show Cache");
    EXPECT_EQ(first, m_window);
    PostMessageW(m_window, WM_CLOSE, 0, 0);
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(first); }));
    Show(L"Show Cache");
    EXPECT_EQ(2u, ListRows(Entries()).size());
    ClickAndWait(Button(L"Cookies"));
    EXPECT_EQ((Texts{L"Cookie:a@a.example/"}), ListRows(Entries()));
    ClickAndWait(Button(L"<- Refresh"));
    EXPECT_EQ((Texts{L"Cookie:a@a.example/"}), ListRows(Entries()));
    ClickAndWait(Button(L"All Cache"));
    EXPECT_EQ(2u, ListRows(Entries()).size());
}

TEST_F(CacheWindowTest, WhatTheMainWindowDoesToAnOpenWindow) {
    CacheFiller::Add("http://a.example/", "a");
    CacheFiller::Add("Cookie:a@a.example/", "c");
    Start(L"Show Cookies");
    // A cleaning lists everything that is left, in the view of the cookies, too.
    ClickAndWait(m_guard->Button(L"Clear Internet Explorer Cookies Now"));
    EXPECT_EQ((Texts{L"http://a.example/"}), ListRows(Entries()));
    // Shown again with the other button it keeps its list until the next refresh.
    ClickAndWait(Button(L"<- Refresh"));
    EXPECT_EQ(Texts{}, ListRows(Entries()));
    Show(L"Show Cache");
    EXPECT_EQ(Texts{}, ListRows(Entries()));
    ClickAndWait(Button(L"<- Refresh"));
    EXPECT_EQ((Texts{L"http://a.example/"}), ListRows(Entries()));
}

TEST_F(CacheWindowTest, TheDetailsFollowTheSelection) {
    const std::string address = "http://a.example/" + std::string(60, 'p');
    const std::string file = CacheFiller::Add(address, "a");
    const std::wstring name(file.begin(), file.end());
    ASSERT_GT(name.size(), 75U) << "nothing to cut";
    Start();
    const std::wstring details = TextOf(Details());
    EXPECT_EQ(L"Cache File: " + name.substr(0, 75) + L"...", details.substr(0, details.find(L"\r\n")));
    EXPECT_NE(std::wstring::npos, details.find(L"\r\nLast accessed: "));
    EXPECT_NE(std::wstring::npos, details.find(L"  |  Modified: No value.\r\nLoad complete: "));
    EXPECT_NE(std::wstring::npos, details.find(L"  |  Expires: No value.Accessed: "));
    SelectRow(Entries(), -1);
    EXPECT_EQ(std::wstring::npos, TextOf(Details()).find(name.substr(0, 20)));
    SelectRow(Entries(), 0);
    EXPECT_EQ(details, TextOf(Details()));
    INTERNET_CACHE_ENTRY_INFOA none{};
    none.dwStructSize = sizeof none;
    ASSERT_TRUE(
        SetUrlCacheEntryInfoA(address.c_str(), &none, CACHE_ENTRY_ACCTIME_FC | CACHE_ENTRY_SYNCTIME_FC));
    SelectRow(Entries(), 0);
    EXPECT_NE(std::wstring::npos, TextOf(Details()).find(L"\r\nLast accessed: No value.  |"));
    EXPECT_NE(std::wstring::npos, TextOf(Details()).find(L"\r\nLoad complete: No value.  |"));
}

TEST_F(CacheWindowTest, FindSearchesFromTheTopAndGoesOn) {
    for (const char* address :
         {"http://one.example/x", "http://two.example/", "http://three.example/x", "http://four.example/"}) {
        CacheFiller::Add(address, "a");
    }
    Start();
    const Texts rows = ListRows(Entries());
    ASSERT_EQ(4u, rows.size());
    std::vector<int> matches;
    for (int row = 0; row < 4; ++row) {
        if (rows[static_cast<std::size_t>(row)].ends_with(L"/x")) {
            matches.push_back(row);
        }
    }
    ASSERT_EQ(2u, matches.size());
    TypeText(FindField(), L"/x");
    const auto find = [&] {
        Click(FindButton());
        // A match in the last row tells that there are no more.
        MessageBoxSeen box;
        WaitUntil([&] {
            box = FindMessageBox(m_guard->Program().Id());
            return box || TextOf(FindButton()) == L"<- F. Again ";
        });
        if (box) {
            EXPECT_EQ(L" No more matches for \"/x\" ...", box.text);
            Dismiss(box);
        }
    };
    find();
    EXPECT_EQ(matches[0], SelectedRow(Entries()));
    EXPECT_EQ(L"<- F. Again ", TextOf(FindButton()));
    EXPECT_EQ(L" Find \"/x\" Again...", TipOf(m_window, FindButton()));
    ClickAndWait(FindButton());
    if (const MessageBoxSeen box = FindMessageBox(m_guard->Program().Id())) {
        Dismiss(box);
    }
    EXPECT_TRUE(WaitUntil([&] { return SelectedRow(Entries()) == matches[1]; }));
    // A new text starts from the top.
    TypeText(FindField(), L"http://");
    ClickAndWait(FindButton());
    EXPECT_EQ(0, SelectedRow(Entries()));
    EXPECT_TRUE(NoBox());
    // An emptied field brings the caption back.
    TypeText(FindField(), L"");
    EXPECT_EQ(L"<- Find", TextOf(FindButton()));
    EXPECT_EQ(L" Find Internet Cache...", TipOf(m_window, FindButton()));
}

TEST_F(CacheWindowTest, WithoutAMatchABoxSaysSo) {
    CacheFiller::Add("http://one.example/", "a");
    Start();
    TypeText(FindField(), L"ONE");
    EXPECT_EQ(L" No matches for \"ONE\" found...", FindAndRead());
    EXPECT_EQ(L"<- Find ", TextOf(FindButton()));
    EXPECT_EQ(L" Click here to find internet cache containing...", TipOf(m_window, FindButton()));
    TypeText(FindField(), L"one");
    EXPECT_EQ(L" No more matches for \"one\" ...", FindAndRead());
    EXPECT_EQ(L"<- F. Again ", TextOf(FindButton()));
}

TEST_F(CacheWindowTest, FindAgainWithoutAFurtherMatchDoesNothing) {
    CacheFiller::Add("http://one.example/", "a");
    CacheFiller::Add("http://two.example/", "b");
    Start();
    const Texts rows = ListRows(Entries());
    ASSERT_EQ(2u, rows.size());
    TypeText(FindField(), rows[0]);
    ClickAndWait(FindButton());
    EXPECT_EQ(0, SelectedRow(Entries()));
    EXPECT_EQ(L"<- F. Again ", TextOf(FindButton()));
    const std::wstring tip = L" Find \"" + rows[0] + L"\" Again...";
    EXPECT_EQ(tip, TipOf(m_window, FindButton()));
    // A search from the top would select the first row again.
    SelectRow(Entries(), 1);
    for (int click = 1; click <= 2; ++click) {
        ClickAndWait(FindButton());
        EXPECT_TRUE(NoBox()) << click;
        EXPECT_EQ(1, SelectedRow(Entries())) << click;
        EXPECT_EQ(L"<- F. Again ", TextOf(FindButton())) << click;
        EXPECT_EQ(tip, TipOf(m_window, FindButton())) << click;
    }
}

TEST_F(CacheWindowTest, FindingInAnEmptyListHasNoMatches) {
    Start();
    TypeText(FindField(), L"one");
    EXPECT_EQ(L" No matches for \"one\" found...", FindAndRead());
}

TEST_F(CacheWindowTest, ADoubleClickDeletesAfterAQuestion) {
    const std::string address = "http://one.example/" + std::string(60, 'a');
    const std::string file = CacheFiller::Add(address, "a");
    Start();
    ASSERT_EQ(1u, ListRows(Entries()).size());
    const auto doubleClick = [&] {
        PostMessageW(m_window, WM_COMMAND, MAKEWPARAM(IdOf(Entries()), LBN_DBLCLK),
                     reinterpret_cast<LPARAM>(Entries()));
    };
    doubleClick();
    MessageBoxSeen box = Box();
    EXPECT_EQ(L"Kestrelguard - Confirm Cache Deletion!", box.caption);
    EXPECT_EQ(L"Delete this Internet Explorer Cache Entry now?\r\n" +
                  std::wstring(address.begin(), address.begin() + 50) + L"...",
              box.text);
    EXPECT_EQ(2u, box.buttons.size());
    EXPECT_TRUE(Dismiss(box, IDNO));
    EXPECT_TRUE(kestrelguard::FileExists(file));
    doubleClick();
    EXPECT_TRUE(Dismiss(Box(), IDYES));
    EXPECT_TRUE(WaitUntil([&] { return ListRows(Entries()).empty(); }));
    EXPECT_FALSE(kestrelguard::FileExists(file));
}

TEST_F(CacheWindowTest, AnEntryThatIsGoneIsToldWithTheSystemsText) {
    CacheFiller::Add("http://one.example/", "a");
    Start();
    CacheFiller::Empty();
    PostMessageW(m_window, WM_COMMAND, MAKEWPARAM(IdOf(Entries()), LBN_DBLCLK),
                 reinterpret_cast<LPARAM>(Entries()));
    EXPECT_TRUE(Dismiss(Box(), IDYES));
    MessageBoxSeen box;
    ASSERT_TRUE(WaitUntil([&] {
        box = FindMessageBox(m_guard->Program().Id());
        return box && box.buttons.size() == 1;
    }));
    EXPECT_TRUE(box.text.starts_with(L"2 ")) << "ERROR_FILE_NOT_FOUND";
    EXPECT_GT(box.text.size(), 5u);
    EXPECT_TRUE(Dismiss(box));
    EXPECT_EQ(1u, ListRows(Entries()).size());
}

TEST_F(CacheWindowTest, ClearAsksInBothViewsAndSparesSavedCookies) {
    CacheFiller::Add("http://one.example/", "a");
    CacheFiller::Add("Cookie:a@a.example/", "c");
    CacheFiller::Add("Cookie:b@b.example/", "c");
    Start(L"Show Cookies");
    ASSERT_EQ(2u, ListRows(Entries()).size());
    const Texts cookies = ListRows(Entries());
    SelectRow(Entries(), 0);
    ClickAndWait(Button(L"Save ->"));
    ASSERT_EQ((Texts{cookies[0]}), ListRows(Saved()));

    Click(Button(L"<- Clear"));
    MessageBoxSeen box = Box();
    EXPECT_EQ(L"Kestrelguard - Confirm Cookies Deletion!", box.caption);
    EXPECT_EQ(L"Are you sure you want to delete your unsaved internet Cookies?", box.text);
    EXPECT_TRUE(Dismiss(box, IDNO));
    EXPECT_EQ(2u, ListRows(Entries()).size());
    Click(Button(L"<- Clear"));
    EXPECT_TRUE(Dismiss(Box(), IDYES));
    EXPECT_TRUE(WaitUntil([&] { return ListRows(Entries()) == Texts{cookies[0]}; }));

    ClickAndWait(Button(L"All Cache"));
    EXPECT_EQ(2u, ListRows(Entries()).size());
    Click(Button(L"<- Clear"));
    box = Box();
    EXPECT_EQ(L"Kestrelguard - Confirm Cache Deletion!", box.caption);
    EXPECT_EQ(L"Are you sure you want to delete your temporary internet files?", box.text);
    EXPECT_TRUE(Dismiss(box, IDYES));
    EXPECT_TRUE(WaitUntil([&] { return ListRows(Entries()) == Texts{cookies[0]}; }));
}

TEST_F(CacheWindowTest, ACleaningDuringTheQuestionDoesNotLoseTheRow) {
    CacheFiller::Add("http://one.example/", "a");
    CacheFiller::Add("http://two.example/", "b");
    CacheFiller::Add("Cookie:a@a.example/", "c");
    Start();
    Texts pages = ListRows(Entries());
    ASSERT_EQ(3u, pages.size());
    std::erase(pages, L"Cookie:a@a.example/");
    const Texts rows = ListRows(Entries());
    // After a cleaning the first row is selected: another one is asked about.
    const std::wstring asked = pages.back();
    SelectRow(Entries(), static_cast<int>(std::find(rows.begin(), rows.end(), asked) - rows.begin()));
    PostMessageW(Entries(), WM_KEYDOWN, VK_DELETE, 0);
    const MessageBoxSeen box = Box();
    EXPECT_NE(std::wstring::npos, box.text.find(asked));
    Click(m_guard->Button(L"Clear Internet Explorer Cookies Now"));
    ASSERT_TRUE(WaitUntil([&] { return ListRows(Entries()) == pages; }));
    EXPECT_TRUE(Dismiss(box, IDYES));
    EXPECT_TRUE(WaitUntil([&] { return ListRows(Entries()) == Texts{pages.front()}; }));
    EXPECT_EQ(1u, CacheFiller::Addresses().size());
}

TEST_F(CacheWindowTest, ItsSizeFollowsTheRules) {
    Start();
    // 96 dpi: 15 twips a pixel.
    const auto size = [&](int width, int height) {
        SetWindowPos(m_window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        const RECT outer = RectOf(m_window);
        return std::pair<LONG, LONG>(outer.right - outer.left, outer.bottom - outer.top);
    };
    const std::pair<LONG, LONG> smallest(695, 326);
    EXPECT_EQ(smallest, size(695, 600));
    EXPECT_EQ(smallest, size(900, 326));
    EXPECT_EQ(smallest, size(300, 200));
    EXPECT_EQ(404, PlaceInWindow(Entries()).right - PlaceInWindow(Entries()).left);
    EXPECT_EQ((std::pair<LONG, LONG>(900, 600)), size(900, 600));
    const RECT list = PlaceInWindow(Entries());
    EXPECT_EQ((13500 - 4600 + 7) / 15, list.right - list.left);
    const RECT refresh = PlaceInWindow(Button(L"<- Refresh"));
    EXPECT_EQ((13500 - 4600 + 135 + 7) / 15, refresh.left);
    const RECT find = PlaceInWindow(FindButton());
    EXPECT_EQ(refresh.left, find.left);
    EXPECT_EQ((9000 - 780) / 15, find.top);
    EXPECT_EQ((9000 - 740 + 7) / 15, PlaceInWindow(Saved()).bottom - PlaceInWindow(Saved()).top);
    EXPECT_EQ(smallest, size(695, 326));
}

TEST_F(CacheWindowTest, EscClosesAndDelAsks) {
    CacheFiller::Add("http://one.example/", "a");
    Start();
    PostMessageW(Entries(), WM_KEYDOWN, VK_DELETE, 0);
    const MessageBoxSeen box = Box();
    EXPECT_EQ(L"Kestrelguard - Confirm Cache Deletion!", box.caption);
    EXPECT_TRUE(Dismiss(box, IDNO));
    PostMessageW(Entries(), WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_TRUE(WaitUntil([&] { return !IsWindow(m_window); }));
    EXPECT_TRUE(m_guard->Program().Running());
}

TEST_F(CacheWindowTest, ExitFromTheMenuClosesItWithAQuestionOpen) {
    CacheFiller::Add("http://one.example/", "a");
    Start();
    Click(Button(L"<- Clear"));
    ASSERT_TRUE(Box());
    PostMessageW(m_guard->Window(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(m_guard->Program().WaitGone());
    EXPECT_EQ(0u, m_guard->Program().ExitCode());
}

}  // namespace
}  // namespace kestrelguard::testing
