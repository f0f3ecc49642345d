// The controls of both windows by numbers, at whatever resolution the session has: none outside its window,
// none over another, no text cut.

#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "desktop/Desktop.h"
#include "desktop/driver/CacheFiller.h"
#include "desktop/driver/StandInLibraries.h"
#include "tests/desktop/RunningGuard.h"

namespace kestrelguard::testing {
namespace {

constexpr wchar_t kCacheCaption[] = L"Kestrelguard v2.0 - IE Cache Details and Advanced Configuration";
constexpr wchar_t kFindLabel[] = L"Find Internet Cache Containing:";
constexpr std::wstring_view kDetailsStart = L"Cache File: ";

/// The cache names its folders as it likes, with wide letters and narrow ones. The room that the details need
/// is measured for one name of the length that is shown.
std::wstring WithUsualFile(std::wstring text) {
    if (text.starts_with(kDetailsStart)) {
        const std::wstring_view file =
            L"C:\\Documents and Settings\\User\\Local Settings\\Temporary Internet Files\\Cont...";
        text.replace(kDetailsStart.size(), text.find(L'\r') - kDetailsStart.size(), file);
    }
    return text;
}

std::string Narrow(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

LONG Width(const RECT& rect) {
    return rect.right - rect.left;
}
LONG Height(const RECT& rect) {
    return rect.bottom - rect.top;
}

class LayoutTest : public ::testing::Test {
 protected:
    LayoutTest() : m_screen(GetDC(nullptr)), m_dpi(GetDeviceCaps(m_screen, LOGPIXELSX)) {}
    ~LayoutTest() override { ReleaseDC(nullptr, m_screen); }

    int Scaled(int at96) const { return MulDiv(at96, m_dpi, 96); }

    /// The windows that lie directly in another one, in the order of creation.
    static std::vector<HWND> Children(HWND parent) {
        std::vector<HWND> children;
        for (const HWND window : Inside(parent)) {
            if (GetParent(window) == parent) {
                children.push_back(window);
            }
        }
        return children;
    }
    static std::string Name(HWND control) {
        return Narrow(ClassOf(control)) + " " + std::to_string(IdOf(control)) + " \"" +
               Narrow(TextOf(control)) + "\"";
    }
    static LONG Style(HWND control) { return GetWindowLongW(control, GWL_STYLE); }
    static bool IsA(HWND control, const wchar_t* type) {
        return lstrcmpiW(ClassOf(control).c_str(), type) == 0;
    }
    /// The settings pages take each other's place.
    static bool IsPage(HWND control) { return IsA(control, L"KestrelguardPage"); }

    /// The room that a text needs in a control's own font; broken into lines where it is given a width.
    SIZE Needed(HWND control, const std::wstring& text, int width = 0) {
        const LOGFONTW look = m_guard->Inside().FontOf(control);
        EXPECT_NE(0, look.lfHeight) << Name(control) << " has no font";
        const HFONT font = CreateFontIndirectW(&look);
        const HGDIOBJ before = SelectObject(m_screen, font);
        RECT room = {0, 0, width, 0};
        DrawTextW(m_screen, text.c_str(), -1, &room,
                  DT_CALCRECT | DT_NOPREFIX | (width > 0 ? DT_WORDBREAK : DT_LEFT));
        SelectObject(m_screen, before);
        DeleteObject(font);
        return {room.right, room.bottom};
    }

    /// How far the controls of a window may reach under its frame.
    virtual SIZE UnderFrame(HWND /*parent*/) const { return {0, 0}; }

    /// Everything inside a window is inside, and apart.
    void ExpectApart(HWND parent) const {
        RECT client{};
        GetClientRect(parent, &client);
        MapWindowPoints(parent, nullptr, reinterpret_cast<POINT*>(&client), 2);
        const SIZE underFrame = UnderFrame(parent);
        client.right += underFrame.cx;
        client.bottom += underFrame.cy;
        const std::vector<HWND> controls = Children(parent);
        for (std::size_t i = 0; i < controls.size(); ++i) {
            const RECT box = RectOf(controls[i]);
            EXPECT_GT(Width(box), 0) << Name(controls[i]);
            EXPECT_GT(Height(box), 0) << Name(controls[i]);
            EXPECT_TRUE(box.left >= client.left && box.top >= client.top && box.right <= client.right &&
                        box.bottom <= client.bottom)
                << Name(controls[i]) << " reaches out of its window";
            for (std::size_t j = i + 1; j < controls.size(); ++j) {
                RECT other = RectOf(controls[j]);
                if (IsPage(controls[i]) && IsPage(controls[j])) {
                    continue;
                }
                if (TextOf(controls[i]) == kFindLabel && IsA(controls[j], L"Edit")) {
                    // The rules let the field begin 125 twips before the end of its label; ExpectTexts looks
                    // whether the label's words end earlier.
                    other.left += MulDiv(125, m_dpi, 1440) + 1;
                }
                RECT common{};
                EXPECT_FALSE(IntersectRect(&common, &box, &other))
                    << Name(controls[i]) << " and " << Name(controls[j]) << " overlap by " << Width(common)
                    << "x" << Height(common);
            }
        }
    }

    /// The room for a control's text, and what the text needs.
    void ExpectTexts(HWND parent) {
        for (const HWND control : Children(parent)) {
            const std::wstring text = WithUsualFile(TextOf(control));
            RECT room{};
            GetClientRect(control, &room);
            SIZE needed{};
            if (IsA(control, L"Static") && !text.empty()) {
                if (text == kFindLabel) {
                    room.right -= MulDiv(125, m_dpi, 1440) + 1;
                }
                const bool breaks = (Style(control) & SS_TYPEMASK) != SS_LEFTNOWORDWRAP;
                needed = Needed(control, text, breaks ? room.right : 0);
            } else if (IsA(control, L"Button") && text != L"Check1") {  // kept: a box without a visible text
                const LONG type = Style(control) & BS_TYPEMASK;
                if (type == BS_AUTOCHECKBOX || type == BS_AUTORADIOBUTTON) {
                    room.right -= Scaled(18);  // the box and its gap
                    needed = Needed(control, text,
                                    (Style(control) & BS_MULTILINE) != 0 ? static_cast<int>(room.right) : 0);
                } else {
                    InflateRect(&room, -Scaled(4), -Scaled(3));  // the edges
                    room = {0, 0, Width(room), Height(room)};
                    needed = Needed(control, text);
                }
            } else if (IsA(control, L"Edit")) {
                needed = Needed(control, text.empty() ? L"Ag" : text);
                needed.cx += Scaled(4);
            } else if (IsA(control, L"ComboBox")) {
                room.right -= GetSystemMetrics(SM_CXVSCROLL) + Scaled(8);
                for (const std::wstring& row : DropDownRows(control)) {
                    const SIZE one = Needed(control, row);
                    needed = {std::max(needed.cx, one.cx), std::max(needed.cy, one.cy + 4)};
                }
            } else if (IsA(control, WC_TABCONTROLW)) {
                ExpectTabs(control);
            }
            EXPECT_LE(needed.cx, room.right) << Name(control) << " is cut in its width";
            EXPECT_LE(needed.cy, room.bottom) << Name(control) << " is cut in its height";
        }
    }

    void ExpectTabs(HWND tabs) {
        EXPECT_EQ(nullptr, FindInside(tabs, UPDOWN_CLASSW)) << "the tabs have to be scrolled";
        RECT strip{};
        GetClientRect(tabs, &strip);
        const std::vector<std::wstring> texts = TabTexts(tabs);
        ASSERT_EQ(3u, texts.size());
        for (std::size_t tab = 0; tab < texts.size(); ++tab) {
            const RemoteBlock block(tabs, sizeof(RECT));
            ASSERT_TRUE(Ask(tabs, TCM_GETITEMRECT, tab, block.Address()));
            RECT place{};
            block.Read(&place, sizeof place);
            const SIZE needed = Needed(tabs, texts[tab]);
            EXPECT_LE(needed.cx + Scaled(6), Width(place)) << Narrow(texts[tab]);
            EXPECT_LE(needed.cy + Scaled(2), Height(place)) << Narrow(texts[tab]);
            EXPECT_LE(place.right, strip.right) << Narrow(texts[tab]);
            EXPECT_LE(place.bottom, strip.bottom) << Narrow(texts[tab]);
        }
    }

    HDC m_screen;
    const int m_dpi;
    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    std::unique_ptr<GuardFolder> m_folder;
    std::unique_ptr<Guard> m_guard;
};

TEST_F(LayoutTest, TheMainWindow) {
    m_guard = std::make_unique<RunningGuard>("MIN/:/:n\r\nPST/:/:2147483647\r\n");
    const HWND form = m_guard->Window();
    ASSERT_EQ(L"2,147,483,647", m_guard->Total());
    ExpectApart(form);
    ExpectTexts(form);
    int pages = 0;
    for (const HWND page : Children(form)) {
        if (IsPage(page)) {
            ++pages;
            ExpectApart(page);
            ExpectTexts(page);
        }
    }
    EXPECT_EQ(3, pages);
}

/// The title bar begins on the screen, outside the task bar, where it can be taken hold of; where the screen
/// has room for all of the window it lies there whole.
void ExpectTitleBarOnScreen(HWND window) {
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    const RECT place = RectOf(window);
    EXPECT_GE(place.left, work.left);
    EXPECT_GE(place.top, work.top);
    EXPECT_LT(place.left, work.right);
    EXPECT_LT(place.top, work.bottom);
    if (Width(place) <= Width(work)) {
        EXPECT_LE(place.right, work.right);
    }
    if (Height(place) <= Height(work)) {
        EXPECT_LE(place.bottom, work.bottom);
    }
}

TEST_F(LayoutTest, TheMainWindowsTitleBarIsOnTheScreen) {
    m_guard = std::make_unique<RunningGuard>("MIN/:/:n\r\n");
    ExpectTitleBarOnScreen(m_guard->Window());
}

class CacheLayoutTest : public LayoutTest {
 protected:
    static void SetUpTestSuite() { ASSERT_TRUE(BindToOwnWinInet()); }
    CacheLayoutTest() {
        CacheFiller::Empty();
        CacheFiller::Add("http://garden.example/a-page-with-a-long-name-as-many-pages-have-them.html", "a");
        m_folder = std::make_unique<GuardFolder>(std::string("MIN/:/:n\r\n"));
        m_folder->Add(OwnFolder() + L"\\wininet.dll");
        m_guard = std::make_unique<Guard>(*m_folder);
        m_guard->WaitReady();
        Click(m_guard->Button(L"Show Cache"));
        m_window = WaitTop(m_guard->Program().Id(),
                           [](HWND top) { return TextOf(top) == kCacheCaption && IsWindowVisible(top); });
    }
    ~CacheLayoutTest() override {
        m_guard.reset();
        CacheFiller::Empty();
    }

    int ToPixels(int twips) const { return MulDiv(twips, m_dpi, 1440); }
    /// The rules count in the whole window, and leave its frame 150 twips in width and 410 in height. What a
    /// thicker frame (that of Windows XP and later) has more, lies over the controls.
    SIZE UnderFrame(HWND parent) const override {
        if (parent != m_window) {
            return {0, 0};
        }
        RECT client{};
        GetClientRect(parent, &client);
        const RECT outer = RectOf(parent);
        return {More(Width(outer) - Width(client), 150), More(Height(outer) - Height(client), 410)};
    }
    /// What pixels are more than twips; a pixel is added, since place and size of a control are rounded each.
    LONG More(LONG pixels, LONG twips) const {
        const LONG more = pixels - twips * m_dpi / 1440;
        return more > 0 ? more + 1 : 0;
    }
    /// Gives the window a size and answers the one that it has then.
    std::pair<int, int> Resize(int width, int height) const {
        SetWindowPos(m_window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        const RECT outer = RectOf(m_window);
        return {Width(outer), Height(outer)};
    }
    int ListWidth() const { return static_cast<int>(Width(RectOf(FindInside(m_window, L"ListBox")))); }

    HWND m_window = nullptr;
};

TEST_F(CacheLayoutTest, EveryWidthFromTheSmallestOn) {
    ASSERT_NE(nullptr, m_window);
    ASSERT_EQ(1u, ListRows(FindInside(m_window, L"ListBox")).size());
    ExpectApart(m_window);
    ExpectTexts(m_window);
    const int height = ToPixels(4890) + 1;
    for (int width = ToPixels(10425) + 1; width <= ToPixels(10640) + 1; width += Scaled(1)) {
        ASSERT_EQ((std::pair{width, height}), Resize(width, height));
        SCOPED_TRACE(width);
        ExpectApart(m_window);
    }
    Resize(ToPixels(10425) + 1, height);
    ExpectTexts(m_window);
    Resize(ToPixels(15000), ToPixels(9000));
    ExpectApart(m_window);
    ExpectTexts(m_window);
}

TEST_F(CacheLayoutTest, ItsTitleBarIsOnTheScreen) {
    ASSERT_NE(nullptr, m_window);
    ExpectTitleBarOnScreen(m_window);
}

TEST_F(CacheLayoutTest, ItSnapsBackOnceAndStaysThere) {
    ASSERT_NE(nullptr, m_window);
    // As many whole pixels as the smallest size has: a twip more would be too large to snap back.
    const std::pair smallest{10425 * m_dpi / 1440, 4890 * m_dpi / 1440};
    EXPECT_EQ(smallest, Resize(smallest.first + 200, smallest.second));
    EXPECT_EQ(ToPixels(6060), ListWidth());
    EXPECT_EQ(smallest, Resize(smallest.first, smallest.second + 200));
    EXPECT_EQ(ToPixels(6060), ListWidth());
    EXPECT_EQ(smallest, Resize(100, 100));
    EXPECT_EQ(ToPixels(6060), ListWidth());
    const std::pair larger{smallest.first + 1, smallest.second + 1};
    EXPECT_EQ(larger, Resize(larger.first, larger.second));
    EXPECT_EQ(ToPixels(MulDiv(larger.first, 1440, m_dpi) - 4600), ListWidth());
}

}  // namespace
}  // namespace kestrelguard::testing
