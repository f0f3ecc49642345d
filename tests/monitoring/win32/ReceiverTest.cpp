#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "WatcherFixture.h"

namespace kestrelguard {

using namespace fakes;

namespace {

using ReceiverTest = WatcherTest;

TEST_F(ReceiverTest, EventsCarryTheBrowserAndTheDeliveredReferences) {
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

TEST_F(ReceiverTest, ANavigateErrorRaisesNothing) {
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

TEST_F(ReceiverTest, AnObjectWrittenInDocumentCompleteGoesNowhere) {
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

TEST_F(ReceiverTest, SetBrowserInstTakesAnyInterfaceOfABrowser) {
    const auto a = desktop.Open(1);
    watcher = Create();
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

TEST_F(ReceiverTest, AnEventThatTheOldBrowsersEndLetsInDoesNotSpeakForTheNewOne) {
    watcher = Create();
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

TEST_F(ReceiverTest, NullReferencesAreRefused) {
    watcher = Create();
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

TEST_F(ReceiverTest, AHandlersErrorGoesBackToTheBrowser) {
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

TEST_F(ReceiverTest, AHandlersErrorGoesBackToTheListOfWindows) {
    desktop.Open(1);
    Watch();
    events.in = [] { throw RunTimeError(RunTimeError::kInvalidCall); };
    const auto b = desktop.Open(2);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), desktop.Registered());
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), desktop.Revoked());
    events.in = nullptr;
    ExpectWatched({b});
}

TEST_F(ReceiverTest, ANestedEventNamesTheBrowserThatSpokeLast) {
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

TEST_F(ReceiverTest, TheReceiverIsAComObject) {
    watcher = Create();
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
