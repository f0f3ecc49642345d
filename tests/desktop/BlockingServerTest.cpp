// The site filter between Wine's own browser and a real web server: what is blocked is never asked for. Run
// by BlockingSession.sh, which starts the server.

#include <cstdlib>

#include "DesktopTest.h"

namespace kestrelguard::testing {
namespace {

using desktop::Bstr;
using desktop::Variant;

constexpr wchar_t kSiteBox[] = L"Prevent the Following Internet Sites from loading in Internet Explorer...";

std::wstring Environment(const wchar_t* name) {
    const wchar_t* const value = _wgetenv(name);
    return value == nullptr ? std::wstring() : value;
}

class BlockingServerTest : public ::testing::Test {
 protected:
    void SetUp() override {
        ASSERT_FALSE(m_site.empty()) << "run this by BlockingSession.sh";
        m_guard = std::make_unique<Guard>(m_folder);
        ASSERT_TRUE(m_guard->WaitReady());
        m_browser = m_desktop.OpenWineBrowser();
        // It has no title of its own, and so no node for one.
        ASSERT_TRUE(WaitUntil([&] { return TreeShows(L"URL : "); })) << "the browser is not watched";
    }
    void TearDown() override {
        if (m_browser) {
            m_browser->Quit();
        }
    }

    void Navigate(const std::wstring& path) {
        Bstr url(m_site + path);
        Variant omitted = Variant::Omitted();
        EXPECT_EQ(S_OK, m_browser->Navigate(url.Get(), &omitted, &omitted, &omitted, &omitted));
    }
    bool Requested(const std::string& path) const {
        return ReadBytes(m_log).find("GET " + path + " ") != std::string::npos;
    }
    bool TreeShows(const std::wstring& node) const {
        const std::vector<std::wstring> lines = m_guard->TreeLines();
        return !lines.empty() && lines.back() == L"    " + node;
    }
    bool TreeShowsAddress(const std::wstring& path) const { return TreeShows(L"URL : " + m_site + path); }

    const std::wstring m_site = Environment(L"KESTRELGUARD_SITE");
    const std::wstring m_log = Environment(L"KESTRELGUARD_SITE_LOG");
    desktop::Apartment m_apartment;
    StandInDesktop m_desktop;
    GuardFolder m_folder{"SS1/:/:y/:/:casino -banners\r\n"};
    std::unique_ptr<Guard> m_guard;
    desktop::ComPtr<IWebBrowser2> m_browser;
};

TEST_F(BlockingServerTest, ABlockedAddressIsNeverRequestedAndAnAllowedOneIs) {
    Navigate(L"/knitting/1.html");
    ASSERT_TRUE(WaitUntil([&] { return Requested("/knitting/1.html"); }))
        << "the browser loads nothing at all";

    Navigate(L"/city/Casino.html");
    ASSERT_TRUE(WaitUntil([&] { return TreeShowsAddress(L"/city/Casino.html"); }));
    Navigate(L"/knitting/?from=banners");
    ASSERT_TRUE(WaitUntil([&] { return TreeShowsAddress(L"/knitting/?from=banners"); }));
    // What comes later has been asked for: what came before would have been, too.
    Navigate(L"/knitting/2.html");
    ASSERT_TRUE(WaitUntil([&] { return Requested("/knitting/2.html"); }));
    EXPECT_FALSE(Requested("/city/Casino.html"));
    EXPECT_FALSE(Requested("/knitting/?from=banners"));

    // With the filter off the same address is loaded.
    ClickAndWait(m_guard->Button(kSiteBox));
    Navigate(L"/city/Casino.html");
    EXPECT_TRUE(WaitUntil([&] { return Requested("/city/Casino.html"); }));
}

}  // namespace
}  // namespace kestrelguard::testing
