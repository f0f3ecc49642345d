#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeDesktop.h"
#include "RecordingEvents.h"
#include "monitoring/win32/IEEvents.h"

namespace kestrelguard {

using namespace fakes;

namespace {

class Properties final : public PropertyHost, public PropertyBag {
 public:
    std::vector<std::wstring> changed;
    std::vector<std::wstring> written;
    void PropertyChanged(std::wstring_view name) override { changed.emplace_back(name); }
    void WriteProperty(std::wstring_view name, bool value, bool defaultValue) override {
        written.push_back(std::wstring(name) + (value ? L"=true" : L"=false") +
                          (defaultValue ? L"/true" : L"/false"));
    }
};

class ControlTest : public testing::Test {
 protected:
    const ComApartment apartment;
    FakeDesktop desktop;
    RecordingEvents host;
    Properties properties;
    IEEvents control{host, &properties, desktop.Maker()};
};

TEST_F(ControlTest, MonitoringIsOffAtFirst) {
    EXPECT_FALSE(control.Enabled());
    EXPECT_EQ(0, control.Browsers()->Count());
    EXPECT_EQ(0, desktop.made);
    EXPECT_EQ(L"Kestrel.IEEvents", IEEvents::kProgId);
}

TEST_F(ControlTest, SwitchingOnRebuildsTwiceAndFillsTheList) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    EXPECT_TRUE(control.Enabled());
    EXPECT_EQ(2, desktop.made);
    EXPECT_EQ(2, a->connections->advised);
    EXPECT_EQ(1U, a->connections->Sinks());
    EXPECT_EQ(1, control.Browsers()->Count());
    EXPECT_TRUE(host.names.empty());
}

TEST_F(ControlTest, SwitchingOnTwiceDoesNothingTheSecondTime) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    desktop.Open(2);
    control.SetEnabled(true);
    EXPECT_EQ(2, desktop.made);
    EXPECT_EQ(2, a->connections->advised);
    EXPECT_EQ(1, control.Browsers()->Count());
    EXPECT_TRUE(host.names.empty());
}

TEST_F(ControlTest, RefreshWatchesAfreshAndSwitchesOn) {
    const auto a = desktop.Open(1);
    control.Refresh();
    EXPECT_TRUE(control.Enabled());
    EXPECT_EQ(1, control.Browsers()->Count());
    const auto b = desktop.Open(2);
    control.Refresh();
    EXPECT_EQ(2, control.Browsers()->Count());
    EXPECT_EQ(1U, a->connections->Sinks());
    EXPECT_EQ(1U, b->connections->Sinks());
    EXPECT_EQ(1U, desktop.shell->connections->Sinks());
    EXPECT_TRUE(host.names.empty());
}

TEST_F(ControlTest, SwitchedOffNothingIsHeardAndTheListStays) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    const auto list = control.Browsers();
    control.SetEnabled(false);
    EXPECT_FALSE(control.Enabled());
    EXPECT_EQ(0U, a->connections->Sinks());
    EXPECT_EQ(0U, desktop.shell->connections->Sinks());
    a->Fire(106);
    desktop.Open(2);
    desktop.Registered();
    EXPECT_TRUE(host.names.empty());
    EXPECT_EQ(1, control.Browsers()->Count());
    control.SetEnabled(true);
    EXPECT_EQ(2, control.Browsers()->Count());
    EXPECT_EQ(list.Get(), control.Browsers().Get());
}

TEST_F(ControlTest, ReadingAndWritingEnabledMarkItAsChanged) {
    control.Enabled();
    EXPECT_EQ(std::vector<std::wstring>{L"Enabled"}, properties.changed);
    control.SetEnabled(true);
    control.SetEnabled(true);
    control.Enabled();
    control.SetEnabled(false);
    EXPECT_EQ(5U, properties.changed.size());
    control.Refresh();
    EXPECT_EQ(5U, properties.changed.size());
}

TEST_F(ControlTest, TheStoredValueIsTheReverse) {
    control.WriteProperties(properties);
    control.SetEnabled(true);
    control.WriteProperties(properties);
    EXPECT_EQ((std::vector<std::wstring>{L"Enabled=true/false", L"Enabled=false/false"}), properties.written);
    // Storing is not reading.
    EXPECT_EQ(1U, properties.changed.size());
}

TEST_F(ControlTest, TheFourteenEventsStandInOrder) {
    EXPECT_STREQ(L"BrowserNavigating", kBrowserEventNames.front());
    EXPECT_STREQ(L"NewWindow", kBrowserEventNames[8 - 1]);
    EXPECT_STREQ(L"BrowserDestroyed", kBrowserEventNames[14 - 1]);
}

TEST_F(ControlTest, EveryEventReachesTheHostWithTheVeryReferences) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    VARIANT url = Of(VT_EMPTY), flags = Of(VT_EMPTY), target = Of(VT_EMPTY), post = Of(VT_EMPTY),
            headers = Of(VT_EMPTY);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    IDispatch* window = nullptr;
    const Bstr title(L"title");
    a->Fire(250, {Object(a.Get()), Ref(&url), Ref(&flags), Ref(&target), Ref(&post), Ref(&headers),
                  BoolRef(&cancel)});
    EXPECT_EQ(&cancel, host.cancel);
    EXPECT_EQ((std::vector<VARIANT*>{&url, &flags, &target, &post, &headers}), host.variants);
    EXPECT_EQ(static_cast<IDispatch*>(a.Get()), host.disp);
    a->Fire(259, {Object(a.Get()), Ref(&url)});
    a->Fire(106);
    a->Fire(104);
    a->Fire(270, {BoolRef(&cancel)});
    a->Fire(252, {Object(a.Get()), Ref(&url)});
    a->Fire(251, {ObjectRef(&window), BoolRef(&cancel)});
    EXPECT_EQ(&window, host.dispRef);
    a->Fire(258, {Bool(true)});
    a->Fire(108, {Long(5), Long(6)});
    EXPECT_EQ((std::vector<LONG>{5, 6}), host.numbers);
    a->Fire(113, {Text(title.Get())});
    EXPECT_EQ(L"title", host.text);
    host.cancel = nullptr;
    a->Fire(263, {Bool(true), BoolRef(&cancel)});
    EXPECT_EQ(&cancel, host.cancel);
    const auto b = desktop.Open(2);
    desktop.Registered();
    desktop.Remove(b);
    desktop.Revoked();
    EXPECT_EQ((Names{L"BrowserNavigating", L"DocumentComplete", L"DownLoadBegin", L"DownLoadComplete",
                     L"FileDownload", L"NavigateComplete", L"NewWindow", L"OnFullScreen", L"ProgressChange",
                     L"TitleChange", L"WindowClosing", L"BrowserCreated", L"BrowserDestroyed"}),
              host.names);
}

TEST_F(ControlTest, TheHostsCancelAndObjectReachTheBrowser) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    const auto replacement = MakeCom<FakeBrowser>();
    host.in = [&] {
        if (host.cancel != nullptr) {
            *host.cancel = VARIANT_TRUE;
        }
        if (host.names.back() == L"NewWindow") {
            *host.dispRef = ComPtr<FakeBrowser>(replacement).Detach();
        }
    };
    VARIANT value = Of(VT_EMPTY);
    const auto cancelled = [&](DISPID id, std::initializer_list<VARIANT> before) {
        VARIANT_BOOL cancel = VARIANT_FALSE;
        std::vector<VARIANT> all(before);
        std::vector<VARIANT> reversed{BoolRef(&cancel)};
        reversed.insert(reversed.end(), all.rbegin(), all.rend());
        DISPPARAMS params{};
        params.cArgs = static_cast<UINT>(reversed.size());
        params.rgvarg = reversed.data();
        EXPECT_EQ(S_OK, a->connections->Sink()->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr,
                                                       nullptr, nullptr));
        return cancel == VARIANT_TRUE;
    };
    IDispatch* window = nullptr;
    EXPECT_TRUE(
        cancelled(250, {Object(a.Get()), Ref(&value), Ref(&value), Ref(&value), Ref(&value), Ref(&value)}));
    EXPECT_TRUE(cancelled(270, {}));
    EXPECT_TRUE(cancelled(251, {ObjectRef(&window)}));
    EXPECT_TRUE(cancelled(263, {Bool(false)}));
    ASSERT_EQ(static_cast<IDispatch*>(replacement.Get()), window);
    window->Release();
}

TEST_F(ControlTest, AFailedStartLeavesMonitoringOff) {
    desktop.makeFailure = REGDB_E_CLASSNOTREG;
    EXPECT_THROW(control.SetEnabled(true), RunTimeError);
    EXPECT_FALSE(control.Enabled());
    EXPECT_THROW(control.Refresh(), RunTimeError);
    EXPECT_FALSE(control.Enabled());
    desktop.makeFailure = S_OK;
    control.SetEnabled(true);
    EXPECT_TRUE(control.Enabled());
}

TEST_F(ControlTest, AStartWhoseSecondRebuildFailsStaysOnAndTells) {
    const auto a = desktop.Open(1);
    a->connections->beforeAdvise.At(1, [&] { a->connections->refusal = E_FAIL; });
    EXPECT_THROW(control.SetEnabled(true), RunTimeError);
    EXPECT_TRUE(control.Enabled());
    EXPECT_EQ(1U, desktop.shell->connections->Sinks());
}

TEST_F(ControlTest, SwitchingOffInsideAnEventIsSurvived) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    host.inWithBrowser = [&](IWebBrowser2*& browser) {
        control.SetEnabled(false);
        // What the handler was given is still there.
        SHANDLE_PTR handle = 0;
        EXPECT_EQ(S_OK, browser->get_HWND(&handle));
        EXPECT_EQ(1, handle);
        *host.cancel = VARIANT_TRUE;
    };
    VARIANT_BOOL cancel = VARIANT_FALSE;
    IDispatch* window = nullptr;
    EXPECT_EQ(S_OK, a->Fire(251, {ObjectRef(&window), BoolRef(&cancel)}));
    EXPECT_EQ(VARIANT_TRUE, cancel);
    EXPECT_FALSE(control.Enabled());
    a->Fire(106);
    EXPECT_EQ(1U, host.names.size());
    EXPECT_EQ(3U, a->References());  // the desktop's, the list's and the test's
}

TEST_F(ControlTest, SwitchingOffAndOnInsideBrowserCreatedIsSurvived) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    const auto b = desktop.Open(2);
    host.in = [&] {
        control.SetEnabled(false);
        control.SetEnabled(true);
        control.Refresh();
    };
    EXPECT_EQ(S_OK, desktop.Registered());
    EXPECT_EQ(Names{L"BrowserCreated"}, host.names);
    host.in = nullptr;
    for (const auto& browser : {a, b}) {
        EXPECT_EQ(1U, browser->connections->Sinks());
        browser->Fire(106);
    }
    EXPECT_EQ(3U, host.names.size());
}

// A start's calls to the windows let others in.

TEST_F(ControlTest, SwitchingOnDuringAStartDoesNothing) {
    const auto a = desktop.Open(1);
    a->connections->beforeAdvise.At(0, [&] {
        EXPECT_FALSE(control.Enabled());
        control.SetEnabled(true);
    });
    control.SetEnabled(true);
    EXPECT_TRUE(control.Enabled());
    EXPECT_EQ(2, desktop.made);
    EXPECT_EQ(1U, a->connections->Sinks());
}

TEST_F(ControlTest, SwitchingOffDuringAStartWins) {
    for (const int advise : {0, 1}) {
        const auto a = desktop.Open(1);
        a->connections->beforeAdvise.At(advise, [&] { control.SetEnabled(false); });
        control.SetEnabled(true);
        EXPECT_FALSE(control.Enabled());
        EXPECT_EQ(0U, a->connections->Sinks());
        EXPECT_EQ(0U, desktop.shell->connections->Sinks());
        desktop.Remove(a);
    }
}

TEST_F(ControlTest, ARefreshDuringAStartTakesItsPlace) {
    for (const int advise : {0, 1}) {
        const auto a = desktop.Open(1);
        a->connections->beforeAdvise.At(advise, [&] { control.Refresh(); });
        control.SetEnabled(true);
        EXPECT_TRUE(control.Enabled());
        EXPECT_EQ(1U, a->connections->Sinks());
        EXPECT_EQ(1U, desktop.shell->connections->Sinks());
        EXPECT_EQ(1, control.Browsers()->Count());
        control.SetEnabled(false);
        desktop.Remove(a);
    }
}

TEST_F(ControlTest, AWindowOpenedDuringARefreshIsTold) {
    const auto a = desktop.Open(1);
    control.SetEnabled(true);
    ComPtr<FakeBrowser> b;
    desktop.shell->beforeWalk.At(0, [&] {
        b = desktop.Open(2);
        desktop.Registered();
    });
    control.Refresh();
    EXPECT_EQ(Names{L"BrowserCreated"}, host.names);
    EXPECT_EQ(static_cast<IWebBrowser2*>(b.Get()), host.browsers[0]);
    EXPECT_EQ(2, control.Browsers()->Count());
    EXPECT_EQ(1U, b->connections->Sinks());
}

TEST_F(ControlTest, TheEndOfTheControlReleasesEverything) {
    const auto a = desktop.Open(1);
    {
        IEEvents other(host, nullptr, desktop.Maker());
        other.SetEnabled(true);
        other.Enabled();
        EXPECT_EQ(1U, a->connections->Sinks());
    }
    EXPECT_EQ(0U, a->connections->Sinks());
    EXPECT_EQ(0U, desktop.shell->connections->Sinks());
    EXPECT_EQ(2U, a->References());
}

}  // namespace

}  // namespace kestrelguard
