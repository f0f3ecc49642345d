// Trial calls to an apartment whose thread takes them in when it is told to.

#include "monitoring/win32/TrialCall.h"

#include <gtest/gtest.h>

#include <servprov.h>

#include <atomic>

#include "runtime/win32/ComError.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

namespace {

constexpr DWORD kLong = 30000;
constexpr DWORD kShort = 50;

class Served final : public ComObject<Served, IDispatch> {
 public:
    explicit Served(std::atomic<int>& calls) : m_calls(calls) {}

    void* Find(REFIID iid) noexcept {
        m_calls += iid == IID_IServiceProvider ? 1 : 0;
        return iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) noexcept override {
        return E_NOTIMPL;
    }

 private:
    std::atomic<int>& m_calls;
};

/// A thread with an object in its apartment. It looks for messages only while it is let.
class Server {
 public:
    Server()
        : m_ready(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
          m_goes(CreateEventA(nullptr, TRUE, TRUE, nullptr)) {
        DWORD id = 0;
        m_thread = Handle(CreateThread(nullptr, 0, Run, this, 0, &id));
        WaitForSingleObject(m_ready.Get(), kLong);
    }
    ~Server() {
        m_ends = true;
        SetEvent(m_goes.Get());
        WaitForSingleObject(m_thread.Get(), kLong);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// What another apartment has of the object. For one call.
    ComPtr<IDispatch> Proxy() {
        ComPtr<IDispatch> proxy;
        Check(CoGetInterfaceAndReleaseStream(m_marshalled.Detach(), IID_IDispatch, proxy.PutVoid()));
        return proxy;
    }
    void Stop() { ResetEvent(m_goes.Get()); }
    void GoOn() { SetEvent(m_goes.Get()); }
    int Calls() const { return m_calls; }

 private:
    static DWORD WINAPI Run(void* self) noexcept {
        Server& server = *static_cast<Server*>(self);
        CoInitialize(nullptr);
        auto object = MakeCom<Served>(server.m_calls);
        CoMarshalInterThreadInterfaceInStream(IID_IDispatch, object.Get(), server.m_marshalled.Put());
        SetEvent(server.m_ready.Get());
        while (!server.m_ends) {
            WaitForSingleObject(server.m_goes.Get(), INFINITE);
            MSG message = {};
            while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
                DispatchMessageA(&message);
            }
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        }
        CoDisconnectObject(object.Get(), 0);
        object.Reset();
        CoUninitialize();
        return 0;
    }

    std::atomic<int> m_calls = 0;
    std::atomic<bool> m_ends = false;
    ComPtr<IStream> m_marshalled;
    Handle m_ready;
    Handle m_goes;
    Handle m_thread;
};

bool WaitNoneUnderWay() {
    const DWORD start = GetTickCount();
    while (TrialCallsUnderWay() && GetTickCount() - start < kLong) {
        Sleep(1);
    }
    return !TrialCallsUnderWay();
}

class TrialCallTest : public testing::Test {
 protected:
    bool Try(DWORD patience) {
        const auto reference = ReferenceTo(m_proxy.Get());
        return reference && TrialCallReturns(*reference, patience);
    }

    const ComApartment m_apartment;
    Server m_server;
    const ComPtr<IDispatch> m_proxy = m_server.Proxy();
};

TEST_F(TrialCallTest, ReturnsFromWhoTakesCallsIn) {
    EXPECT_TRUE(Try(kLong));
    EXPECT_EQ(1, m_server.Calls());
    EXPECT_FALSE(TrialCallsUnderWay());
}

TEST_F(TrialCallTest, AnObjectOfThisApartmentIsNotForeign) {
    std::atomic<int> calls = 0;
    EXPECT_FALSE(ReferenceTo(MakeCom<Served>(calls).Get()));
}

TEST_F(TrialCallTest, ObjectsOfOneThreadAreInOnePlace) {
    Server other;
    const auto otherProxy = other.Proxy();
    const auto reference = ReferenceTo(m_proxy.Get());
    ASSERT_TRUE(reference);
    EXPECT_EQ(reference->Place(), ReferenceTo(m_proxy.Get())->Place());
    EXPECT_NE(reference->Place(), ReferenceTo(otherProxy.Get())->Place());
}

TEST_F(TrialCallTest, NoSecondOneWaitsForWhoTakesNoneIn) {
    m_server.Stop();
    EXPECT_FALSE(Try(kShort));
    EXPECT_TRUE(TrialCallsUnderWay());
    EXPECT_FALSE(Try(kLong)) << "asked for the first one's sake";
    EXPECT_EQ(0, m_server.Calls());
    m_server.GoOn();
    EXPECT_TRUE(WaitNoneUnderWay());
    EXPECT_EQ(1, m_server.Calls());
}

TEST_F(TrialCallTest, ALateReturnIsAnAnswerToo) {
    m_server.Stop();
    ASSERT_FALSE(Try(kShort));
    m_server.GoOn();
    ASSERT_TRUE(WaitNoneUnderWay());
    m_server.Stop();
    EXPECT_TRUE(Try(kShort));
    EXPECT_FALSE(Try(kShort)) << "it counts once";
    m_server.GoOn();
    EXPECT_TRUE(WaitNoneUnderWay());
    EXPECT_EQ(2, m_server.Calls());
}

TEST_F(TrialCallTest, AnotherPlaceIsAskedMeanwhile) {
    Server other;
    const auto otherProxy = other.Proxy();
    m_server.Stop();
    ASSERT_FALSE(Try(kShort));
    const auto reference = ReferenceTo(otherProxy.Get());
    ASSERT_TRUE(reference);
    EXPECT_TRUE(TrialCallReturns(*reference, kLong));
    m_server.GoOn();
    EXPECT_TRUE(WaitNoneUnderWay());
}

}  // namespace

}  // namespace kestrelguard
