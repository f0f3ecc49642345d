#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "WatcherFixture.h"
#include "monitoring/win32/ComBrowser.h"

namespace kestrelguard {

using namespace fakes;

namespace {

using Keys = std::vector<std::wstring>;

TEST_F(WatcherTest, CreationWatchesAtOnceWithoutAList) {
    const auto a = desktop.Open(1);
    watcher = Create();
    EXPECT_EQ(1U, a->connections->Sinks());
    EXPECT_EQ(1U, desktop.shell->connections->Sinks());
    EXPECT_EQ(1, desktop.made);
    EXPECT_EQ(Keys{L"_1_"}, watcher->Keys());
}

TEST_F(WatcherTest, TheSecondRebuildFillsTheList) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    Watch();
    EXPECT_EQ(2, desktop.made);
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(a), Same(b)}), Listed());
    EXPECT_EQ(2, a->connections->advised);
    EXPECT_EQ(1, a->connections->unadvised);
    EXPECT_EQ(1U, desktop.shell->connections->Sinks());
    ExpectWatched({a, b});
    EXPECT_TRUE(events.names.empty());
}

TEST_F(WatcherTest, ANewWindowIsWatchedListedAndTold) {
    const auto a = desktop.Open(1);
    Watch();
    const auto folder = desktop.Open(2);  // a folder window is a window like any other
    std::size_t listedThen = 0;
    events.in = [&] { listedThen = Listed().size(); };
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
    EXPECT_EQ(Same(folder), events.browsers[0]);
    EXPECT_EQ(2U, listedThen);
    events.in = nullptr;
    ExpectWatched({a, folder});
    EXPECT_EQ(3, a->connections->advised);
    EXPECT_EQ(1, folder->connections->advised);
}

TEST_F(WatcherTest, AWithdrawnWindowRebuildsAndIsToldWithoutSayingWhich) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    Watch();
    desktop.Remove(a);
    std::size_t listedThen = 99;
    events.in = [&] { listedThen = Listed().size(); };
    EXPECT_EQ(S_OK, desktop.Revoked());
    EXPECT_EQ(Names{L"BrowserDestroyed"}, events.names);
    EXPECT_EQ(nullptr, events.browsers[0]);
    EXPECT_EQ(1U, listedThen);
    EXPECT_EQ(std::vector<IWebBrowser2*>{Same(b)}, Listed());
    EXPECT_EQ(0U, a->connections->Sinks());
    EXPECT_EQ(1U, a->References());
}

TEST_F(WatcherTest, CookiesMeanNothingAndOddAnnouncementsAreSurvived) {
    desktop.Open(1);
    Watch();
    desktop.Open(2);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, desktop.shell->Fire(200));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, desktop.shell->Fire(201, {Long(1), Long(2)}));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, desktop.shell->Fire(200, {Object(desktop.shell.Get())}));
    EXPECT_EQ(S_OK, desktop.shell->Fire(202, {Long(1)}));
    EXPECT_TRUE(events.names.empty());
    EXPECT_EQ(S_OK, desktop.shell->Fire(200, {Long(-77)}));
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
}

// Failures.

TEST_F(WatcherTest, WithoutAListOfWindowsThereIsNoWatcher) {
    desktop.makeFailure = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, NumberThrown([&] { Create(); }));
    desktop.makeFailure = S_OK;
    desktop.shell->connections->refusal = CONNECT_E_ADVISELIMIT;
    EXPECT_EQ(CONNECT_E_ADVISELIMIT, NumberThrown([&] { Create(); }));
    desktop.shell->connections->refusal = S_OK;
    desktop.shell->failure = E_NOTIMPL;
    EXPECT_EQ(E_NOTIMPL, NumberThrown([&] { Create(); }));
    EXPECT_EQ(0U, desktop.shell->connections->Sinks());
    EXPECT_EQ(1U, desktop.shell->References());
}

TEST_F(WatcherTest, AFailureBeforeTheFirstKeyGoesToTheCaller) {
    const auto a = desktop.Open(1);
    a->connections->refusal = E_ACCESSDENIED;
    EXPECT_EQ(E_ACCESSDENIED, NumberThrown([&] { Create(); }));
    a->connections->refusal = S_OK;
    a->failure = E_UNEXPECTED;
    EXPECT_EQ(E_UNEXPECTED, NumberThrown([&] { Create(); }));
    EXPECT_EQ(0U, a->connections->Sinks());
    desktop.shell->entries.insert(desktop.shell->entries.begin(),
                                  ComPtr<IDispatch>(MakeCom<Stranger>().Get()));
    EXPECT_EQ(E_NOINTERFACE, NumberThrown([&] { Create(); }));
    desktop.shell->failAfter = 0;
    EXPECT_EQ(E_FAIL, NumberThrown([&] { Create(); }));
    EXPECT_EQ(1U, desktop.shell->References());
}

TEST_F(WatcherTest, AnEntryWithoutAnObjectEndsTheWalk) {
    const auto a = desktop.Open(1);
    desktop.shell->entries.emplace_back(nullptr);
    const auto b = desktop.Open(2);
    Watch();
    EXPECT_EQ(std::vector<IWebBrowser2*>{Same(a)}, Listed());
    EXPECT_EQ(0U, b->connections->Sinks());
    // Announcements look no further, either.
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_TRUE(events.names.empty());
}

TEST_F(WatcherTest, AnObjectThatIsNoBrowserIsPassedOver) {
    const auto a = desktop.Open(1);
    desktop.shell->entries.emplace_back(MakeCom<Stranger>().Get());
    const auto b = desktop.Open(2);
    Watch();
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(a), Same(b)}), Listed());
    const auto c = desktop.Open(3);
    desktop.Registered();
    EXPECT_EQ(Same(c), events.browsers.at(0));
    ExpectWatched({a, b, c});
}

TEST_F(WatcherTest, ABrowserThatDiedWithoutAWordIsSurvived) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    Watch();
    const HRESULT gone = HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    a->failure = gone;
    a->connections->unadviseFailure = gone;
    a->connections->refusal = gone;
    desktop.Remove(a);
    EXPECT_EQ(S_OK, desktop.Revoked());
    EXPECT_EQ(Names{L"BrowserDestroyed"}, events.names);
    ExpectWatched({b});
}

// Costs.

TEST_F(WatcherTest, AnAnnouncementReadsEachHandleOnce) {
    constexpr int kWindows = 50;
    std::vector<ComPtr<FakeBrowser>> browsers;
    browsers.reserve(kWindows + 1);
    for (int i = 0; i < kWindows; ++i) {
        browsers.push_back(desktop.Open(100 + i));
    }
    Watch();
    browsers.push_back(desktop.Open(1000));
    for (const auto& browser : browsers) {
        browser->handleReads = 0;
        browser->connections->advised = 0;
    }
    desktop.Registered();
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
    for (const auto& browser : browsers) {
        EXPECT_EQ(1, browser->handleReads) << browser->handle;
        EXPECT_EQ(1, browser->connections->advised) << browser->handle;
    }
}

TEST_F(WatcherTest, TheHandleOfAListedWindowIsKnownWithoutAskingIt) {
    const auto a = desktop.Open(1);
    const ComBrowser browser(a.Get());
    EXPECT_EQ(1, browser.KnownHandle());
    EXPECT_EQ(1, a->handleReads);
    Watch();
    const auto expectKnown = [&] {
        const int before = a->handleReads;
        EXPECT_EQ(1, browser.KnownHandle());
        EXPECT_EQ(before, a->handleReads);
    };
    expectKnown();
    const auto b = desktop.Open(2);
    // The announcement reads the handles through the windows as they were known before it.
    EXPECT_EQ(S_OK, desktop.Registered());
    expectKnown();
    desktop.Remove(b);
    EXPECT_EQ(S_OK, desktop.Revoked());
    expectKnown();
    watcher->Close();
    const int before = a->handleReads;
    EXPECT_EQ(1, browser.KnownHandle());
    EXPECT_EQ(before + 1, a->handleReads);
}

TEST_F(WatcherTest, AThousandWindowsLeaveNothingBehind) {
    // Small numbers may be windows of the system, and those are asked whether they answer.
    constexpr LONG kNoWindows = 0x7ABC0000;
    const auto first = desktop.Open(1);
    Watch();
    for (LONG i = 0; i < 1000; ++i) {
        const auto browser = desktop.Open(kNoWindows + i);
        desktop.Registered();
        ASSERT_EQ(1U, browser->connections->Sinks());
        desktop.Remove(browser);
        desktop.Revoked();
        ASSERT_EQ(0U, browser->connections->Sinks());
        ASSERT_EQ(1U, browser->References());
        ASSERT_EQ(1U, browser->connections->unadvised);
    }
    EXPECT_EQ(2000U, events.names.size());
    EXPECT_EQ(1U, first->connections->Sinks());
    EXPECT_EQ(1U, desktop.shell->connections->Sinks());
    EXPECT_EQ(1, list->Count());
}

TEST_F(WatcherTest, ClosingReleasesEverything) {
    const auto a = desktop.Open(1);
    Watch();
    watcher->Close();
    EXPECT_EQ(0U, a->connections->Sinks());
    EXPECT_EQ(0U, desktop.shell->connections->Sinks());
    watcher->AddRef();
    EXPECT_EQ(1U, watcher->Release());
    // The list stays as it is.
    EXPECT_EQ(1, list->Count());
    a->Fire(106);
    EXPECT_TRUE(events.names.empty());
}

// Calls that come in during others.

TEST_F(WatcherTest, AnAnnouncementDuringARebuildLeadsToOneMoreAfterIt) {
    const auto a = desktop.Open(1);
    Watch();
    const auto b = desktop.Open(2);
    ComPtr<FakeBrowser> c;
    // While b's rebuild connects to a, c opens: the walk under way does not know it.
    a->connections->beforeAdvise.At(0, [&] {
        c = desktop.Open(3);
        EXPECT_EQ(S_OK, desktop.Registered());
        EXPECT_TRUE(events.names.empty());
    });
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_EQ((Names{L"BrowserCreated", L"BrowserCreated"}), events.names);
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(b), Same(c)}), events.browsers);
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(a), Same(b), Same(c)}), Listed());
    EXPECT_EQ(4, desktop.made);
    ExpectWatched({a, b, c});
}

TEST_F(WatcherTest, ARebuildInsideABrowsersEventIsSurvived) {
    const auto a = desktop.Open(1);
    Watch();
    ComPtr<FakeBrowser> b;
    events.in = [&] {
        if (!b) {
            b = desktop.Open(2);
            desktop.Registered();
        }
    };
    VARIANT_BOOL cancel = VARIANT_FALSE;
    IDispatch* window = nullptr;
    EXPECT_EQ(S_OK, a->Fire(251, {ObjectRef(&window), BoolRef(&cancel)}));
    events.in = nullptr;
    EXPECT_EQ((Names{L"NewWindow", L"BrowserCreated"}), events.names);
    ExpectWatched({a, b});
}

struct Moment {
    const char* name;
    std::function<void(FakeDesktop&, FakeBrowser&, Hook)> set;
};
class WatcherClosedTest : public WatcherTest, public testing::WithParamInterface<Moment> {};

TEST_P(WatcherClosedTest, ClosingInTheMiddleOfARebuildEndsItQuietly) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    Watch();
    const auto c = desktop.Open(3);
    bool closed = false;
    GetParam().set(desktop, *a, [&] {
        closed = true;
        const auto held = std::move(watcher);
        held->Close();
    });
    EXPECT_EQ(S_OK, desktop.Registered());
    ASSERT_TRUE(closed);
    EXPECT_TRUE(events.names.empty());
    for (const auto& browser : {a, b, c}) {
        EXPECT_EQ(0U, browser->connections->Sinks());
    }
    EXPECT_EQ(0U, desktop.shell->connections->Sinks());
    EXPECT_EQ(1U, desktop.shell->References());
}

INSTANTIATE_TEST_SUITE_P(
    Moments, WatcherClosedTest,
    testing::Values(
        Moment{"SearchWalk", [](FakeDesktop& desktop, FakeBrowser&,
                                Hook hook) { desktop.shell->beforeWalk.At(0, std::move(hook)); }},
        Moment{"SearchHandle", [](FakeDesktop&, FakeBrowser& browser,
                                  Hook hook) { browser.beforeHandle.At(0, std::move(hook)); }},
        Moment{"ShellUnadvise",
               [](FakeDesktop& desktop, FakeBrowser&, Hook hook) {
                   desktop.shell->connections->beforeUnadvise.At(0, std::move(hook));
               }},
        Moment{"SinkUnadvise", [](FakeDesktop&, FakeBrowser& browser,
                                  Hook hook) { browser.connections->beforeUnadvise.At(0, std::move(hook)); }},
        Moment{"Make", [](FakeDesktop& desktop, FakeBrowser&,
                          Hook hook) { desktop.beforeMake.At(0, std::move(hook)); }},
        Moment{"ShellAdvise",
               [](FakeDesktop& desktop, FakeBrowser&, Hook hook) {
                   desktop.shell->connections->beforeAdvise.At(0, std::move(hook));
               }},
        Moment{"RebuildWalk", [](FakeDesktop& desktop, FakeBrowser&,
                                 Hook hook) { desktop.shell->beforeWalk.At(1, std::move(hook)); }},
        Moment{"SinkAdvise", [](FakeDesktop&, FakeBrowser& browser,
                                Hook hook) { browser.connections->beforeAdvise.At(0, std::move(hook)); }}),
    [](const auto& moment) { return std::string(moment.param.name); });

}  // namespace

}  // namespace kestrelguard
