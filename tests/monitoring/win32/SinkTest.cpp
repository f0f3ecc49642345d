#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "SinkFixture.h"

namespace kestrelguard {

using namespace fakes;

namespace {

TEST_F(SinkTest, BeforeNavigate2PassesTheDeliveredReferences) {
    EXPECT_EQ(S_OK, Fire(250, {Object(frame.Get()), Ref(&url), Ref(&flags), Ref(&target), Ref(&post),
                               Ref(&headers), BoolRef(&cancel)}));
    EXPECT_EQ((Calls{"SetBrowserInst", "BeforeNavigate2"}), receiver->calls);
    EXPECT_EQ((Pointers{frame.Get(), &url, &flags, &target, &post, &headers, &cancel}), receiver->pointers);
    EXPECT_EQ(static_cast<IDispatch*>(browser.Get()), receiver->browser);
}

TEST_F(SinkTest, DocumentAndNavigateCompletePassObjectAndAddress) {
    EXPECT_EQ(S_OK, Fire(259, {Object(frame.Get()), Ref(&url)}));
    EXPECT_EQ((Pointers{frame.Get(), &url}), receiver->pointers);
    EXPECT_EQ(S_OK, Fire(252, {Object(nullptr), Ref(&url)}));
    EXPECT_EQ((Pointers{nullptr, &url}), receiver->pointers);
    EXPECT_EQ((Calls{"SetBrowserInst", "DocumentComplete", "SetBrowserInst", "NavigateComplete2"}),
              receiver->calls);
}

TEST_F(SinkTest, EventsWithoutArgumentsMakeTwoCallsEach) {
    EXPECT_EQ(S_OK, Fire(106));
    EXPECT_EQ(S_OK, Fire(104));
    EXPECT_EQ((Calls{"SetBrowserInst", "DownLoadBegin", "SetBrowserInst", "DownLoadComplete"}),
              receiver->calls);
}

TEST_F(SinkTest, EventsWithoutArgumentsSurviveANullParameterBlock) {
    const auto events = browser->connections->Sink();
    EXPECT_EQ(S_OK, events->Invoke(106, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT,
              events->Invoke(113, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ((Calls{"SetBrowserInst", "DownLoadBegin"}), receiver->calls);
}

TEST_F(SinkTest, FileDownloadTakesCancelAsTheLastOfOneOrTwoArguments) {
    EXPECT_EQ(S_OK, Fire(270, {BoolRef(&cancel)}));
    EXPECT_EQ((Pointers{&cancel}), receiver->pointers);
    VARIANT_BOOL activeDocument = VARIANT_TRUE;
    EXPECT_EQ(S_OK, Fire(270, {Bool(true), BoolRef(&cancel)}));
    EXPECT_EQ((Pointers{&cancel}), receiver->pointers);
    EXPECT_EQ(S_OK, Fire(270, {BoolRef(&activeDocument), BoolRef(&cancel)}));
    EXPECT_EQ((Pointers{&cancel}), receiver->pointers);
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Fire(270, {Bool(true), Bool(true), BoolRef(&cancel)}));
    EXPECT_EQ(6U, receiver->calls.size());
}

TEST_F(SinkTest, NewWindow2CancelWrittenByTheReceiverReachesTheBrowser) {
    IDispatch* window = nullptr;
    receiver->in = [&] {
        *static_cast<VARIANT_BOOL*>(const_cast<void*>(receiver->pointers[1])) = VARIANT_TRUE;
    };
    EXPECT_EQ(S_OK, Fire(251, {ObjectRef(&window), BoolRef(&cancel)}));
    EXPECT_EQ(VARIANT_TRUE, cancel);
    EXPECT_EQ((Calls{"SetBrowserInst", "NewWindow2"}), receiver->calls);
    EXPECT_EQ((Pointers{&window, &cancel}), receiver->pointers);
}

TEST_F(SinkTest, BeforeNavigate2CancelWrittenByTheReceiverReachesTheBrowser) {
    receiver->in = [&] {
        *static_cast<VARIANT_BOOL*>(const_cast<void*>(receiver->pointers[6])) = VARIANT_TRUE;
    };
    Fire(250, {Object(frame.Get()), Ref(&url), Ref(&flags), Ref(&target), Ref(&post), Ref(&headers),
               BoolRef(&cancel)});
    EXPECT_EQ(VARIANT_TRUE, cancel);
}

TEST_F(SinkTest, NewWindow2ObjectWrittenByTheReceiverReachesTheBrowser) {
    IDispatch* window = nullptr;
    const auto replacement = MakeCom<FakeBrowser>();
    receiver->in = [&] {
        *static_cast<IDispatch**>(const_cast<void*>(receiver->pointers[0])) =
            ComPtr<FakeBrowser>(replacement).Detach();
    };
    EXPECT_EQ(S_OK, Fire(251, {ObjectRef(&window), BoolRef(&cancel)}));
    EXPECT_EQ(static_cast<IDispatch*>(replacement.Get()), window);
    EXPECT_EQ(2U, replacement->References());
    window->Release();
}

TEST_F(SinkTest, ValuesArePassedByValue) {
    EXPECT_EQ(S_OK, Fire(258, {Bool(true)}));
    EXPECT_EQ((std::vector<LONG>{VARIANT_TRUE}), receiver->numbers);
    EXPECT_EQ(S_OK, Fire(108, {Long(7), Long(-1)}));
    EXPECT_EQ((std::vector<LONG>{7, -1}), receiver->numbers);
    EXPECT_EQ(S_OK, Fire(263, {Bool(false), BoolRef(&cancel)}));
    EXPECT_EQ((std::vector<LONG>{VARIANT_FALSE}), receiver->numbers);
    EXPECT_EQ((Pointers{&cancel}), receiver->pointers);
    EXPECT_EQ((Calls{"SetBrowserInst", "OnFullScreen", "SetBrowserInst", "ProgressChange", "SetBrowserInst",
                     "WindowClosing"}),
              receiver->calls);
}

TEST_F(SinkTest, TitleIsACopyOfTheWholeText) {
    const Bstr title(std::wstring(L"one\0two", 7));
    EXPECT_EQ(S_OK, Fire(113, {Text(title.Get())}));
    EXPECT_EQ(std::wstring(L"one\0two", 7), receiver->text);
    EXPECT_NE(static_cast<const void*>(title.Get()), receiver->pointers[0]);
    EXPECT_EQ(S_OK, Fire(113, {Text(nullptr)}));
    EXPECT_EQ(L"", receiver->text);
}

TEST_F(SinkTest, NavigateErrorReachesNobody) {
    VARIANT status = Of(VT_EMPTY);
    EXPECT_EQ(S_OK,
              Fire(271, {Object(frame.Get()), Ref(&url), Ref(&target), Ref(&status), BoolRef(&cancel)}));
    EXPECT_TRUE(receiver->calls.empty());
}

TEST_F(SinkTest, ExactlyElevenIdsAreBound) {
    std::vector<DISPID> bound;
    for (DISPID id = -5600; id <= 1000; ++id) {
        // Too many arguments for any event: only a bound id minds.
        if (Fire(id, {Long(0), Long(0), Long(0), Long(0), Long(0), Long(0), Long(0), Long(0)}) != S_OK) {
            bound.push_back(id);
        }
    }
    EXPECT_EQ((std::vector<DISPID>{104, 106, 108, 113, 250, 251, 252, 258, 259, 263, 270}), bound);
    EXPECT_TRUE(receiver->calls.empty());
}

TEST_F(SinkTest, UnknownEventsAreAnswered) {
    EXPECT_EQ(S_OK, Fire(102, {Text(nullptr)}));
    EXPECT_EQ(S_OK, Fire(DISPID_UNKNOWN));
    EXPECT_EQ(S_OK, Fire(0x7FFFFFFF, {Long(1)}));
    EXPECT_TRUE(receiver->calls.empty());
}

TEST_F(SinkTest, AFailingReceiverFailsTheEvent) {
    receiver->answer = static_cast<HRESULT>(0x800A0006);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), Fire(106));
    EXPECT_EQ((Calls{"SetBrowserInst", "DownLoadBegin"}), receiver->calls);
    receiver->answer = S_OK;
    receiver->answerToBrowser = E_ACCESSDENIED;
    receiver->calls.clear();
    EXPECT_EQ(E_ACCESSDENIED, Fire(106));
    EXPECT_EQ((Calls{"SetBrowserInst"}), receiver->calls);
}

TEST_F(SinkTest, AFailureIsDescribedWhereTheCallHasRoom) {
    receiver->in = [] { LeaveErrorInfo(RunTimeError(RunTimeError::kOverflow)); };
    receiver->answer = static_cast<HRESULT>(0x800A0006);
    EXCEPINFO exception{};
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), Fire(106, {}, &exception));
    EXPECT_EQ(static_cast<SCODE>(0x800A0006), exception.scode);
    EXPECT_EQ(DescriptionOf(RunTimeError::kOverflow), std::wstring(exception.bstrDescription));
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
}

TEST_F(SinkTest, WithoutAReceiverTheEventFails) {
    sink->SetInterFace(nullptr);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0000 | 91), Fire(106));
    EXPECT_TRUE(receiver->calls.empty());
}

TEST_F(SinkTest, TheResultIsEmptied) {
    const auto events = browser->connections->Sink();
    VARIANT result = Long(5);
    DISPPARAMS params{};
    EXPECT_EQ(S_OK, events->Invoke(106, IID_NULL, 0, DISPATCH_METHOD, &params, &result, nullptr, nullptr));
    EXPECT_EQ(VT_EMPTY, result.vt);
}

TEST_F(SinkTest, TheSinkIsFoundUnderItsThreeInterfaces) {
    const auto events = browser->connections->Sink();
    for (const GUID& iid : {IID_IUnknown, IID_IDispatch, DIID_DWebBrowserEvents2}) {
        ComPtr<IUnknown> found;
        EXPECT_EQ(S_OK, events->QueryInterface(iid, reinterpret_cast<void**>(found.Put())));
    }
    void* none = events.Get();
    EXPECT_EQ(E_NOINTERFACE, events->QueryInterface(IID_IBrowser, &none));
    EXPECT_EQ(nullptr, none);
    UINT count = 9;
    EXPECT_EQ(S_OK, events->GetTypeInfoCount(&count));
    EXPECT_EQ(0U, count);
}

TEST_F(SinkTest, BothPropertiesReadBack) {
    EXPECT_EQ(static_cast<IBrowser*>(receiver.Get()), sink->InterFace().Get());
    EXPECT_EQ(static_cast<IWebBrowser2*>(browser.Get()), sink->Browser().Get());
}

TEST_F(SinkTest, AssigningNothingDisconnects) {
    EXPECT_EQ(1U, browser->connections->Sinks());
    sink->SetBrowser(nullptr);
    EXPECT_EQ(0U, browser->connections->Sinks());
    EXPECT_EQ(1, browser->connections->unadvised);
    EXPECT_FALSE(sink->Browser());
    EXPECT_EQ(1U, browser->References());
}

TEST_F(SinkTest, AssigningAnotherBrowserMovesTheConnection) {
    const auto other = MakeCom<FakeBrowser>();
    sink->SetBrowser(ComPtr<IWebBrowser2>(other.Get()));
    EXPECT_EQ(0U, browser->connections->Sinks());
    EXPECT_EQ(1U, other->connections->Sinks());
    EXPECT_EQ(1, other->connections->advised);
}

TEST_F(SinkTest, LettingTheSinkGoDisconnectsAndReleasesEverything) {
    sink.Reset();
    EXPECT_EQ(0U, browser->connections->Sinks());
    EXPECT_EQ(1U, browser->References());
    receiver->AddRef();
    EXPECT_EQ(1U, receiver->Release());
}

TEST_F(SinkTest, ARefusedConnectionLeavesNoBrowser) {
    const auto shy = MakeCom<FakeBrowser>();
    shy->connections->refusal = CONNECT_E_ADVISELIMIT;
    try {
        sink->SetBrowser(ComPtr<IWebBrowser2>(shy.Get()));
        FAIL() << "connected";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(CONNECT_E_ADVISELIMIT, error.Number());
    }
    EXPECT_FALSE(sink->Browser());
    EXPECT_EQ(1U, shy->References());
}

TEST_F(SinkTest, ABrowserThatIsGoneIsLetGo) {
    browser->connections->unadviseFailure = HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    const auto events = browser->connections->Sink();
    sink.Reset();
    // It still fires, but nobody listens.
    EXPECT_EQ(S_OK, browser->Fire(106));
    EXPECT_TRUE(receiver->calls.empty());
}

TEST_F(SinkTest, AnEventDuringTheDisconnectionIsIgnored) {
    browser->connections->beforeUnadvise.At(0, [&] { EXPECT_EQ(S_OK, browser->Fire(106)); });
    sink.Reset();
    EXPECT_TRUE(receiver->calls.empty());
    EXPECT_EQ(1U, browser->References());
}

TEST_F(SinkTest, TheSinkMayBeLetGoInsideItsEvent) {
    receiver->in = [&] {
        sink->SetInterFace(nullptr);
        sink.Reset();
    };
    IDispatch* window = nullptr;
    EXPECT_EQ(S_OK, Fire(251, {ObjectRef(&window), BoolRef(&cancel)}));
    EXPECT_EQ((Calls{"SetBrowserInst", "NewWindow2"}), receiver->calls);
    EXPECT_EQ(0U, browser->connections->Sinks());
    EXPECT_EQ(1U, browser->References());
    EXPECT_EQ(S_OK, Fire(106));
    EXPECT_EQ(2U, receiver->calls.size());
}

/// Calls the operation in a slot of the table, as an early-bound caller does.
template <class... Values>
HRESULT CallSlot(IBrowser* object, std::size_t slot, Values... values) {
    using Function = HRESULT(STDMETHODCALLTYPE*)(IBrowser*, Values...);
    void** table = nullptr;
    std::memcpy(&table, static_cast<const void*>(object), sizeof table);
    Function function = nullptr;
    std::memcpy(&function, table + 7 + slot, sizeof function);
    return function(object, values...);
}

TEST_F(SinkTest, TheOperationsStandInTheirSlots) {
    IBrowser* const object = receiver.Get();
    IDispatch* other = frame.Get();
    VARIANT status = Of(VT_EMPTY);
    const Bstr title(L"title");
    EXPECT_EQ(S_OK, CallSlot(object, 0, &other));
    EXPECT_EQ(S_OK, CallSlot(object, 1, other, &url, &flags, &target, &post, &headers, &cancel));
    EXPECT_EQ(S_OK, CallSlot(object, 2, other, &url));
    EXPECT_EQ(S_OK, CallSlot(object, 3));
    EXPECT_EQ(S_OK, CallSlot(object, 4));
    EXPECT_EQ(S_OK, CallSlot(object, 5, &cancel));
    EXPECT_EQ(S_OK, CallSlot(object, 6, other, &url));
    EXPECT_EQ(S_OK, CallSlot(object, 7, other, &url, &target, &status, &cancel));
    EXPECT_EQ((Pointers{other, &url, &target, &status, &cancel}), receiver->pointers);
    EXPECT_EQ(S_OK, CallSlot(object, 8, &other, &cancel));
    EXPECT_EQ(S_OK, CallSlot(object, 9, VARIANT_TRUE));
    EXPECT_EQ(S_OK, CallSlot(object, 10, 3L, 4L));
    EXPECT_EQ((std::vector<LONG>{3, 4}), receiver->numbers);
    EXPECT_EQ(S_OK, CallSlot(object, 11, title.Get()));
    EXPECT_EQ(S_OK, CallSlot(object, 12, VARIANT_TRUE, &cancel));
    EXPECT_EQ((Calls{"SetBrowserInst", "BeforeNavigate2", "DocumentComplete", "DownLoadBegin",
                     "DownLoadComplete", "FileDownload", "NavigateComplete2", "NavigateError", "NewWindow2",
                     "OnFullScreen", "ProgressChange", "TitleChange", "WindowClosing"}),
              receiver->calls);
}

/// Implements nothing but what it must.
class Nobody final : public DispatchObject<Nobody, IBrowser> {
 public:
    void* Find(REFIID iid) noexcept { return iid == IID_IBrowser ? static_cast<IBrowser*>(this) : nullptr; }
};

TEST_F(SinkTest, TheInterfacesOwnBodiesAreEmpty) {
    const auto nobody = MakeCom<Nobody>();
    sink->SetInterFace(ComPtr<IBrowser>(nobody.Get()));
    const Bstr title(L"title");
    IDispatch* window = frame.Get();
    EXPECT_EQ(S_OK, Fire(250, {Object(frame.Get()), Ref(&url), Ref(&flags), Ref(&target), Ref(&post),
                               Ref(&headers), BoolRef(&cancel)}));
    EXPECT_EQ(S_OK, Fire(259, {Object(frame.Get()), Ref(&url)}));
    EXPECT_EQ(S_OK, Fire(106));
    EXPECT_EQ(S_OK, Fire(104));
    EXPECT_EQ(S_OK, Fire(270, {BoolRef(&cancel)}));
    EXPECT_EQ(S_OK, Fire(252, {Object(frame.Get()), Ref(&url)}));
    EXPECT_EQ(S_OK, Fire(251, {ObjectRef(&window), BoolRef(&cancel)}));
    EXPECT_EQ(S_OK, Fire(258, {Bool(true)}));
    EXPECT_EQ(S_OK, Fire(108, {Long(1), Long(2)}));
    EXPECT_EQ(S_OK, Fire(113, {Text(title.Get())}));
    EXPECT_EQ(S_OK, Fire(263, {Bool(true), BoolRef(&cancel)}));
    EXPECT_EQ(S_OK, nobody->NavigateError(frame.Get(), &url, &target, &flags, &cancel));
    EXPECT_EQ(VARIANT_FALSE, cancel);
    EXPECT_EQ(static_cast<IDispatch*>(frame.Get()), window);
}

}  // namespace

}  // namespace kestrelguard
