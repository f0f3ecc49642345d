#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "FakeDesktop.h"
#include "RecordingEvents.h"
#include "monitoring/win32/cBrowserEvents.h"

namespace kestrelguard {

using namespace fakes;

namespace {

using Keys = std::vector<std::wstring>;

class WatcherTest : public testing::Test {
 protected:
    ~WatcherTest() override {
        if (watcher) {
            watcher->Close();
        }
    }
    /// A watcher as its owner keeps it: with a list and a listener.
    void Watch() {
        watcher = cBrowserEvents::Create(desktop.Maker());
        watcher->Connect(events);
        watcher->SetBrowsers(list);
        watcher->LoadBrowsers();
    }
    std::vector<IWebBrowser2*> Listed() const {
        std::vector<IWebBrowser2*> listed;
        for (std::int32_t i = 1; i <= list->Count(); ++i) {
            listed.push_back(list->Item(i).Get());
        }
        return listed;
    }
    static IWebBrowser2* Same(const ComPtr<FakeBrowser>& browser) { return browser.Get(); }
    /// Whether each browser has one sink, and its events reach the listener under its own name.
    void ExpectWatched(const std::vector<ComPtr<FakeBrowser>>& browsers) {
        for (const auto& browser : browsers) {
            EXPECT_EQ(1U, browser->connections->Sinks()) << browser->handle;
            const std::size_t before = events.names.size();
            EXPECT_EQ(S_OK, browser->Fire(106));
            ASSERT_EQ(before + 1, events.names.size()) << browser->handle;
            EXPECT_EQ(Same(browser), events.browsers.back());
            events.names.pop_back();
            events.browsers.pop_back();
        }
    }
    template <class Action>
    static std::int32_t NumberThrown(Action&& action) {
        try {
            action();
        } catch (const RunTimeError& error) {
            return error.Number();
        }
        return 0;
    }

    const ComApartment apartment;
    FakeDesktop desktop;
    RecordingEvents events;
    const ComPtr<cBrowsers> list = MakeCom<cBrowsers>();
    ComPtr<cBrowserEvents> watcher;
};

TEST_F(WatcherTest, CreationWatchesAtOnceWithoutAList) {
    const auto a = desktop.Open(1);
    watcher = cBrowserEvents::Create(desktop.Maker());
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

TEST_F(WatcherTest, SharedHandlesGetCountedKeys) {
    for (const LONG handle : {655412, 655412, 7, 655412, -5, -5}) {
        desktop.Open(handle);
    }
    Watch();
    EXPECT_EQ((Keys{L"_655412_", L"_655412_1", L"_7_", L"_655412_2", L"_-5_", L"_-5_1"}), watcher->Keys());
    EXPECT_EQ(6, list->Count());
}

TEST_F(WatcherTest, ManySharedHandlesCountOn) {
    Keys keys{L"_9_"};
    desktop.Open(9);
    for (int i = 1; i <= 30; ++i) {
        desktop.Open(9);
        keys.push_back(L"_9_" + std::to_wstring(i));
    }
    Watch();
    EXPECT_EQ(keys, watcher->Keys());
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

TEST_F(WatcherTest, AnAnnouncementWithoutANewWindowDoesNothing) {
    const auto a = desktop.Open(1);
    Watch();
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_TRUE(events.names.empty());
    EXPECT_EQ(2, a->connections->advised);
    EXPECT_EQ(2, desktop.made);
}

TEST_F(WatcherTest, TheFirstNewWindowOfTheListIsTold) {
    const auto a = desktop.Open(1);
    Watch();
    const auto b = desktop.Open(2);
    const auto c = desktop.Open(3);
    desktop.Registered();
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
    EXPECT_EQ(Same(b), events.browsers[0]);
    // The rebuild knows the other one now, so its own announcement finds nothing new.
    desktop.Registered();
    EXPECT_EQ(1U, events.names.size());
    ExpectWatched({a, b, c});
}

TEST_F(WatcherTest, AWindowThatSharesAKnownHandleIsNotNew) {
    desktop.Open(1);
    Watch();
    const auto twin = desktop.Open(1);
    desktop.Registered();
    EXPECT_TRUE(events.names.empty());
    EXPECT_EQ(0U, twin->connections->Sinks());
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

TEST_F(WatcherTest, AWithdrawalRebuildsEvenWhenNothingChanged) {
    const auto a = desktop.Open(1);
    Watch();
    desktop.Revoked();
    EXPECT_EQ(Names{L"BrowserDestroyed"}, events.names);
    EXPECT_EQ(3, a->connections->advised);
}

TEST_F(WatcherTest, TheLastWindowMayGo) {
    const auto a = desktop.Open(1);
    Watch();
    desktop.Remove(a);
    desktop.Revoked();
    EXPECT_EQ(0, list->Count());
    EXPECT_TRUE(watcher->Keys().empty());
    desktop.Open(2);
    desktop.Registered();
    EXPECT_EQ((Names{L"BrowserDestroyed", L"BrowserCreated"}), events.names);
    EXPECT_EQ(1, list->Count());
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

// The events' arguments.

TEST_F(WatcherTest, EventsCarryTheBrowserAndTheDeliveredReferences) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    Watch();
    const auto frame = MakeCom<Stranger>();
    VARIANT url = Of(VT_EMPTY), flags = Of(VT_EMPTY), target = Of(VT_EMPTY), post = Of(VT_EMPTY),
            headers = Of(VT_EMPTY);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    IDispatch* window = nullptr;
    const Bstr title(std::wstring(L"ti\0tle", 6));

    b->Fire(250, {Object(frame.Get()), Ref(&url), Ref(&flags), Ref(&target), Ref(&post), Ref(&headers),
                  BoolRef(&cancel)});
    EXPECT_EQ(frame.Get(), events.disp);
    EXPECT_EQ((std::vector<VARIANT*>{&url, &flags, &target, &post, &headers}), events.variants);
    EXPECT_EQ(&cancel, events.cancel);

    a->Fire(259, {Object(frame.Get()), Ref(&url)});
    EXPECT_EQ(frame.Get(), events.disp);
    EXPECT_EQ(std::vector<VARIANT*>{&url}, events.variants);
    a->Fire(106);
    a->Fire(104);
    events.cancel = nullptr;
    a->Fire(270, {BoolRef(&cancel)});
    EXPECT_EQ(&cancel, events.cancel);
    a->Fire(252, {Object(frame.Get()), Ref(&url)});
    b->Fire(251, {ObjectRef(&window), BoolRef(&cancel)});
    EXPECT_EQ(&window, events.dispRef);
    EXPECT_EQ(&cancel, events.cancel);
    a->Fire(258, {Bool(true)});
    EXPECT_EQ(std::vector<LONG>{VARIANT_TRUE}, events.numbers);
    a->Fire(108, {Long(3), Long(9)});
    EXPECT_EQ((std::vector<LONG>{3, 9}), events.numbers);
    a->Fire(113, {Text(title.Get())});
    EXPECT_EQ(std::wstring(L"ti\0tle", 6), events.text);
    events.cancel = nullptr;
    a->Fire(263, {Bool(true), BoolRef(&cancel)});
    EXPECT_EQ(std::vector<LONG>{VARIANT_TRUE}, events.numbers);
    EXPECT_EQ(&cancel, events.cancel);

    EXPECT_EQ((Names{L"BrowserNavigating", L"DocumentComplete", L"DownLoadBegin", L"DownLoadComplete",
                     L"FileDownload", L"NavigateComplete", L"NewWindow", L"OnFullScreen", L"ProgressChange",
                     L"TitleChange", L"WindowClosing"}),
              events.names);
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(b), Same(a), Same(a), Same(a), Same(a), Same(a), Same(b),
                                          Same(a), Same(a), Same(a), Same(a)}),
              events.browsers);
}

TEST_F(WatcherTest, ANavigateErrorRaisesNothing) {
    const auto a = desktop.Open(1);
    Watch();
    VARIANT url = Of(VT_EMPTY), target = Of(VT_EMPTY), status = Of(VT_EMPTY);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    EXPECT_EQ(S_OK, a->Fire(271, {Object(nullptr), Ref(&url), Ref(&target), Ref(&status), BoolRef(&cancel)}));
    EXPECT_TRUE(events.names.empty());
    // The receiver's own operation does raise it.
    EXPECT_EQ(S_OK, watcher->NavigateError(nullptr, &url, &target, &status, &cancel));
    EXPECT_EQ(Names{L"NavigateError"}, events.names);
    EXPECT_EQ((std::vector<VARIANT*>{&url, &target, &status}), events.variants);
    EXPECT_EQ(&cancel, events.cancel);
}

TEST_F(WatcherTest, AnObjectWrittenInDocumentCompleteGoesNowhere) {
    const auto a = desktop.Open(1);
    Watch();
    const auto frame = MakeCom<Stranger>();
    const auto other = MakeCom<Stranger>();
    VARIANT url = Of(VT_EMPTY);
    VARIANT object = Object(frame.Get());
    events.in = [&] {
        (*events.dispRef)->Release();
        *events.dispRef = ComPtr<Stranger>(other).Detach();
    };
    a->Fire(259, {object, Ref(&url)});
    EXPECT_EQ(frame.Get(), object.pdispVal);
    for (const auto& stranger : {frame, other}) {
        stranger->AddRef();
        EXPECT_EQ(2U, stranger->Release());  // its own and this loop's
    }
}

TEST_F(WatcherTest, SetBrowserInstTakesAnyInterfaceOfABrowser) {
    const auto a = desktop.Open(1);
    watcher = cBrowserEvents::Create(desktop.Maker());
    watcher->Connect(events);
    IDispatch* browser = a.Get();
    EXPECT_EQ(S_OK, watcher->SetBrowserInst(&browser));
    EXPECT_TRUE(events.names.empty());
    watcher->DownLoadBegin();
    EXPECT_EQ(Same(a), events.browsers[0]);
    IDispatch* none = nullptr;
    EXPECT_EQ(S_OK, watcher->SetBrowserInst(&none));
    watcher->DownLoadBegin();
    EXPECT_EQ(nullptr, events.browsers[1]);
    const auto stranger = MakeCom<Stranger>();
    IDispatch* noBrowser = stranger.Get();
    EXPECT_EQ(E_NOINTERFACE, watcher->SetBrowserInst(&noBrowser));
}

TEST_F(WatcherTest, AnEventThatTheOldBrowsersEndLetsInDoesNotSpeakForTheNewOne) {
    watcher = cBrowserEvents::Create(desktop.Maker());
    watcher->Connect(events);
    auto old = MakeCom<FakeBrowser>(1);
    const auto speaking = MakeCom<FakeBrowser>(2);
    const auto other = MakeCom<FakeBrowser>(3);
    const auto speak = [&](const ComPtr<FakeBrowser>& browser) {
        IDispatch* const object = browser.Get();
        IDispatch* given = object;
        EXPECT_EQ(S_OK, watcher->SetBrowserInst(&given));
        EXPECT_EQ(S_OK, watcher->DownLoadBegin());
    };
    speak(old);
    old->atEnd = [&] { speak(other); };
    old.Reset();
    speak(speaking);
    EXPECT_EQ(Same(speaking), events.browsers.at(1));
    EXPECT_EQ(Same(other), events.browsers.at(2));
}

TEST_F(WatcherTest, NullReferencesAreRefused) {
    watcher = cBrowserEvents::Create(desktop.Maker());
    watcher->Connect(events);
    VARIANT value = Of(VT_EMPTY);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    IDispatch* window = nullptr;
    EXPECT_EQ(E_POINTER, watcher->SetBrowserInst(nullptr));
    EXPECT_EQ(E_POINTER, watcher->BeforeNavigate2(nullptr, nullptr, &value, &value, &value, &value, &cancel));
    EXPECT_EQ(E_POINTER, watcher->BeforeNavigate2(nullptr, &value, &value, &value, &value, &value, nullptr));
    EXPECT_EQ(E_POINTER, watcher->DocumentComplete(nullptr, nullptr));
    EXPECT_EQ(E_POINTER, watcher->FileDownload(nullptr));
    EXPECT_EQ(E_POINTER, watcher->NavigateComplete2(nullptr, nullptr));
    EXPECT_EQ(E_POINTER, watcher->NavigateError(nullptr, &value, &value, nullptr, &cancel));
    EXPECT_EQ(E_POINTER, watcher->NewWindow2(nullptr, &cancel));
    EXPECT_EQ(E_POINTER, watcher->NewWindow2(&window, nullptr));
    EXPECT_EQ(E_POINTER, watcher->WindowClosing(VARIANT_TRUE, nullptr));
    EXPECT_EQ(S_OK, watcher->TitleChange(nullptr));
    EXPECT_EQ(Names{L"TitleChange"}, events.names);
}

TEST_F(WatcherTest, AHandlersErrorGoesBackToTheBrowser) {
    const auto a = desktop.Open(1);
    Watch();
    events.in = [] { throw RunTimeError(RunTimeError::kOverflow); };
    EXCEPINFO exception{};
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), a->Fire(106, {}, &exception));
    EXPECT_EQ(DescriptionOf(RunTimeError::kOverflow), std::wstring(exception.bstrDescription));
    EXPECT_EQ(std::wstring(L"Kestrelguard"), exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    events.in = [] { throw RunTimeError(E_ACCESSDENIED, L"no"); };
    EXPECT_EQ(E_ACCESSDENIED, a->Fire(106));
    events.in = nullptr;
    EXPECT_EQ(S_OK, a->Fire(106));
}

TEST_F(WatcherTest, AHandlersErrorGoesBackToTheListOfWindows) {
    desktop.Open(1);
    Watch();
    events.in = [] { throw RunTimeError(RunTimeError::kInvalidCall); };
    const auto b = desktop.Open(2);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), desktop.Registered());
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), desktop.Revoked());
    events.in = nullptr;
    ExpectWatched({b});
}

TEST_F(WatcherTest, ANestedEventNamesTheBrowserThatSpokeLast) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    Watch();
    IWebBrowser2* after = nullptr;
    bool nested = false;
    events.inWithBrowser = [&](IWebBrowser2*& browser) {
        if (!std::exchange(nested, true)) {
            EXPECT_EQ(Same(a), browser);
            b->Fire(106);
            after = browser;
        }
    };
    a->Fire(106);
    EXPECT_EQ(Same(b), after);
}

// Failures.

TEST_F(WatcherTest, WithoutAListOfWindowsThereIsNoWatcher) {
    desktop.makeFailure = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, NumberThrown([&] { cBrowserEvents::Create(desktop.Maker()); }));
    desktop.makeFailure = S_OK;
    desktop.shell->connections->refusal = CONNECT_E_ADVISELIMIT;
    EXPECT_EQ(CONNECT_E_ADVISELIMIT, NumberThrown([&] { cBrowserEvents::Create(desktop.Maker()); }));
    desktop.shell->connections->refusal = S_OK;
    desktop.shell->failure = E_NOTIMPL;
    EXPECT_EQ(E_NOTIMPL, NumberThrown([&] { cBrowserEvents::Create(desktop.Maker()); }));
    EXPECT_EQ(0U, desktop.shell->connections->Sinks());
    EXPECT_EQ(1U, desktop.shell->References());
}

TEST_F(WatcherTest, AFailureBeforeTheFirstKeyGoesToTheCaller) {
    const auto a = desktop.Open(1);
    a->connections->refusal = E_ACCESSDENIED;
    EXPECT_EQ(E_ACCESSDENIED, NumberThrown([&] { cBrowserEvents::Create(desktop.Maker()); }));
    a->connections->refusal = S_OK;
    a->failure = E_UNEXPECTED;
    EXPECT_EQ(E_UNEXPECTED, NumberThrown([&] { cBrowserEvents::Create(desktop.Maker()); }));
    EXPECT_EQ(0U, a->connections->Sinks());
    desktop.shell->entries.insert(desktop.shell->entries.begin(),
                                  ComPtr<IDispatch>(MakeCom<Stranger>().Get()));
    EXPECT_EQ(E_NOINTERFACE, NumberThrown([&] { cBrowserEvents::Create(desktop.Maker()); }));
    desktop.shell->failAfter = 0;
    EXPECT_EQ(E_FAIL, NumberThrown([&] { cBrowserEvents::Create(desktop.Maker()); }));
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

TEST_F(WatcherTest, AnEntryWithoutAnObjectAtTheFrontIsNoError) {
    desktop.shell->entries.emplace_back(nullptr);
    desktop.Open(2);
    Watch();
    EXPECT_EQ(0, list->Count());
}

TEST_F(WatcherTest, ALaterWindowThatRefusesEndsTheWalkUntilTheNextRebuild) {
    const auto a = desktop.Open(1);
    const auto shy = desktop.Open(2);
    const auto c = desktop.Open(3);
    shy->connections->refusal = E_ACCESSDENIED;
    Watch();
    EXPECT_EQ(std::vector<IWebBrowser2*>{Same(a)}, Listed());
    EXPECT_EQ(0U, c->connections->Sinks());
    shy->connections->refusal = S_OK;
    desktop.Registered();
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
    EXPECT_EQ(Same(shy), events.browsers[0]);
    ExpectWatched({a, shy, c});
}

TEST_F(WatcherTest, ALaterWindowWithoutAHandleIsListedButHasNoSink) {
    const auto a = desktop.Open(1);
    const auto mute = desktop.Open(2);
    const auto c = desktop.Open(3);
    mute->failure = E_FAIL;
    Watch();
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(a), Same(mute), Same(c)}), Listed());
    EXPECT_EQ((Keys{L"_1_", L"_3_"}), watcher->Keys());
    EXPECT_EQ(0U, mute->connections->Sinks());
    ExpectWatched({a, c});
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

TEST_F(WatcherTest, AWalkThatBreaksOffKeepsWhatItHas) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    desktop.shell->failAfter = 1;
    Watch();
    EXPECT_EQ(std::vector<IWebBrowser2*>{Same(a)}, Listed());
    EXPECT_EQ(0U, b->connections->Sinks());
}

TEST_F(WatcherTest, ANewWindowWithoutAHandleIsJudgedNew) {
    const auto a = desktop.Open(1);
    Watch();
    const auto mute = desktop.Open(2);
    mute->failure = E_FAIL;
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_EQ(Same(mute), events.browsers.at(0));
    ExpectWatched({a});
}

TEST_F(WatcherTest, AWindowBehindADeadSinkIsJudgedNew) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    const auto c = desktop.Open(3);
    Watch();
    // b dies: its sink can no longer be asked, and the scan never gets to c's.
    desktop.Remove(b);
    b->failure = HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    b->connections->unadviseFailure = b->failure;
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
    EXPECT_EQ(Same(c), events.browsers[0]);
    ExpectWatched({a, c});
}

TEST_F(WatcherTest, AFailedRebuildIsMadeUpForByTheNextOne) {
    const auto a = desktop.Open(1);
    Watch();
    a->failure = E_FAIL;
    EXPECT_EQ(E_FAIL, desktop.Revoked());
    EXPECT_TRUE(events.names.empty());
    EXPECT_EQ(0, list->Count());
    a->failure = S_OK;
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
    ExpectWatched({a});
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
    int reads = 0;
    for (const auto& browser : browsers) {
        reads += browser->handleReads;
        EXPECT_LE(browser->handleReads, 2);
        EXPECT_EQ(1, browser->connections->advised);
    }
    EXPECT_EQ(2 * kWindows + 1, reads);
}

TEST_F(WatcherTest, AnAnnouncementOfANewWindowAtTheFrontCostsNoMore) {
    constexpr int kWindows = 20;
    std::vector<ComPtr<FakeBrowser>> browsers;
    browsers.reserve(kWindows + 1);
    for (int i = 0; i < kWindows; ++i) {
        browsers.push_back(desktop.Open(100 + i));
    }
    Watch();
    browsers.push_back(desktop.Open(1000));
    std::rotate(desktop.shell->entries.begin(), desktop.shell->entries.end() - 1,
                desktop.shell->entries.end());
    for (const auto& browser : browsers) {
        browser->handleReads = 0;
    }
    desktop.Registered();
    EXPECT_EQ(Same(browsers.back()), events.browsers.at(0));
    int reads = 0;
    for (const auto& browser : browsers) {
        reads += browser->handleReads;
    }
    EXPECT_EQ(2 * kWindows + 1, reads);
}

TEST_F(WatcherTest, AThousandWindowsLeaveNothingBehind) {
    const auto first = desktop.Open(1);
    Watch();
    for (LONG i = 0; i < 1000; ++i) {
        const auto browser = desktop.Open(10 + i);
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

TEST_F(WatcherTest, AWindowThatARebuildFoundBeforeItsAnnouncementIsToldAll) {
    const auto a = desktop.Open(1);
    Watch();
    const auto b = desktop.Open(2);
    ComPtr<FakeBrowser> c;
    // c opens just before the rebuild walks the list, which thus knows it.
    desktop.shell->beforeWalk.At(1, [&] {
        c = desktop.Open(3);
        desktop.Registered();
    });
    desktop.Registered();
    EXPECT_EQ((Names{L"BrowserCreated", L"BrowserCreated"}), events.names);
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(b), Same(c)}), events.browsers);
    ExpectWatched({a, b, c});
    // Nothing is told twice.
    desktop.Registered();
    EXPECT_EQ(2U, events.names.size());
}

TEST_F(WatcherTest, AWindowOpenedDuringAWithdrawalIsTold) {
    const auto a = desktop.Open(1);
    const auto b = desktop.Open(2);
    Watch();
    desktop.Remove(a);
    ComPtr<FakeBrowser> c;
    desktop.shell->beforeWalk.At(0, [&] {
        c = desktop.Open(3);
        desktop.Registered();
    });
    desktop.Revoked();
    EXPECT_EQ((Names{L"BrowserDestroyed", L"BrowserCreated"}), events.names);
    EXPECT_EQ(Same(c), events.browsers[1]);
    ExpectWatched({b, c});
}

TEST_F(WatcherTest, SeveralAnnouncementsDuringARebuildShareOneMore) {
    const auto a = desktop.Open(1);
    Watch();
    const auto b = desktop.Open(2);
    ComPtr<FakeBrowser> c, d;
    a->connections->beforeAdvise.At(0, [&] {
        c = desktop.Open(3);
        desktop.Registered();
        d = desktop.Open(4);
        desktop.Registered();
        desktop.Remove(b);
        desktop.Revoked();
    });
    desktop.Registered();
    EXPECT_EQ((Names{L"BrowserCreated", L"BrowserCreated", L"BrowserCreated", L"BrowserDestroyed"}),
              events.names);
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(b), Same(c), Same(d), nullptr}), events.browsers);
    EXPECT_EQ(4, desktop.made);
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(a), Same(c), Same(d)}), Listed());
    ExpectWatched({a, c, d});
    EXPECT_EQ(0U, b->connections->Sinks());
}

TEST_F(WatcherTest, AnAnnouncementDuringTheSearchWaits) {
    const auto a = desktop.Open(1);
    Watch();
    const auto b = desktop.Open(2);
    ComPtr<FakeBrowser> c;
    a->beforeHandle.At(0, [&] {
        c = desktop.Open(3);
        desktop.Registered();
    });
    desktop.Registered();
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(b), Same(c)}), events.browsers);
    ExpectWatched({a, b, c});
}

TEST_F(WatcherTest, AnAnnouncementWithoutNewsDuringARebuildIsForgotten) {
    const auto a = desktop.Open(1);
    Watch();
    a->connections->beforeAdvise.At(0, [&] { desktop.Registered(); });
    desktop.Revoked();
    EXPECT_EQ(Names{L"BrowserDestroyed"}, events.names);
    EXPECT_EQ(3, desktop.made);
}

TEST_F(WatcherTest, AnAnnouncementDuringTheFirstRebuildsIsNotLost) {
    const auto a = desktop.Open(1);
    ComPtr<FakeBrowser> b;
    a->connections->beforeAdvise.At(0, [&] {
        b = desktop.Open(2);
        desktop.Registered();
    });
    Watch();
    ExpectWatched({a, b});
    EXPECT_EQ(2, list->Count());
}

TEST_F(WatcherTest, AnAnnouncementDuringTheListsRebuildIsTold) {
    const auto a = desktop.Open(1);
    ComPtr<FakeBrowser> b;
    a->connections->beforeAdvise.At(1, [&] {
        b = desktop.Open(2);
        desktop.Registered();
    });
    Watch();
    EXPECT_EQ(Names{L"BrowserCreated"}, events.names);
    EXPECT_EQ(Same(b), events.browsers[0]);
    ExpectWatched({a, b});
}

TEST_F(WatcherTest, ARebuildAskedForDuringAnotherFollowsIt) {
    const auto a = desktop.Open(1);
    Watch();
    ComPtr<FakeBrowser> b;
    a->connections->beforeAdvise.At(0, [&] {
        b = desktop.Open(2);
        watcher->LoadBrowsers();
    });
    watcher->LoadBrowsers();
    EXPECT_EQ(4, desktop.made);
    EXPECT_TRUE(events.names.empty());
    ExpectWatched({a, b});
}

TEST_F(WatcherTest, AnAnnouncementDuringAFailingRebuildStillCounts) {
    const auto a = desktop.Open(1);
    Watch();
    a->connections->refusal = E_FAIL;
    a->connections->beforeAdvise.At(0, [&] {
        a->connections->refusal = E_ACCESSDENIED;
        desktop.Registered();
    });
    // Its own rebuild fails, too, but was tried; the caller gets the first failure.
    EXPECT_EQ(E_ACCESSDENIED, desktop.Revoked());
    EXPECT_EQ(4, desktop.made);
}

TEST_F(WatcherTest, AnErrorInOneHandlerDoesNotKeepTheOtherEventsBack) {
    const auto a = desktop.Open(1);
    Watch();
    const auto b = desktop.Open(2);
    ComPtr<FakeBrowser> c;
    a->connections->beforeAdvise.At(0, [&] {
        c = desktop.Open(3);
        desktop.Registered();
    });
    events.in = [&] {
        if (events.names.size() == 1) {
            throw RunTimeError(RunTimeError::kInvalidCall);
        }
    };
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), desktop.Registered());
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(b), Same(c)}), events.browsers);
}

TEST_F(WatcherTest, AnAnnouncementInsideItsOwnEventIsHandledAtOnce) {
    const auto a = desktop.Open(1);
    Watch();
    const auto b = desktop.Open(2);
    ComPtr<FakeBrowser> c;
    events.in = [&] {
        if (!c) {
            c = desktop.Open(3);
            desktop.Registered();
            EXPECT_EQ(3, list->Count());
        }
    };
    desktop.Registered();
    EXPECT_EQ((std::vector<IWebBrowser2*>{Same(b), Same(c)}), events.browsers);
    events.in = nullptr;
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
        Moment{"SearchSecondHandle", [](FakeDesktop&, FakeBrowser& browser,
                                        Hook hook) { browser.beforeHandle.At(1, std::move(hook)); }},
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

TEST_F(WatcherTest, TheReceiverIsAComObject) {
    watcher = cBrowserEvents::Create(desktop.Maker());
    IBrowser* const receiver = watcher.Get();
    for (const GUID& iid : {IID_IUnknown, IID_IDispatch, IID_IBrowser}) {
        ComPtr<IUnknown> found;
        EXPECT_EQ(S_OK, receiver->QueryInterface(iid, reinterpret_cast<void**>(found.Put())));
        EXPECT_EQ(static_cast<IUnknown*>(receiver), found.Get());
    }
    const auto support = Query<ISupportErrorInfo>(receiver);
    EXPECT_EQ(S_OK, support->InterfaceSupportsErrorInfo(IID_IBrowser));
    EXPECT_EQ(S_FALSE, support->InterfaceSupportsErrorInfo(IID_IDispatch));
    void* none = nullptr;
    EXPECT_EQ(E_NOINTERFACE, receiver->QueryInterface(IID_IWebBrowser2, &none));
    EXPECT_EQ(E_POINTER, receiver->QueryInterface(IID_IUnknown, nullptr));
}

}  // namespace

}  // namespace kestrelguard
