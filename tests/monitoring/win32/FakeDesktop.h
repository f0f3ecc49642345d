#pragma once

#include <windows.h>

#include <exdisp.h>
#include <exdispid.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "FakeEvents.h"
#include "desktop/UnofferedMembers.h"
#include "runtime/win32/Com.h"

/// Browsers and a list of windows inside the test's own process, with the platform's interfaces.
namespace kestrelguard::fakes {

/// A browser window.
class FakeBrowser final : public desktop::UnofferedMembers<EventSource<FakeBrowser, IWebBrowser2>> {
 public:
    explicit FakeBrowser(LONG frameHandle = 0)
        : UnofferedMembers(DIID_DWebBrowserEvents2), handle(frameHandle) {}
    ~FakeBrowser() {
        if (atEnd) {
            atEnd();
        }
    }

    void* Find(REFIID iid) noexcept {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IWebBrowser2) {
            return static_cast<IWebBrowser2*>(this);
        }
        return iid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(this) : nullptr;
    }

    LONG handle;
    HRESULT failure = S_OK;
    /// Given with a failure when not empty.
    std::wstring description;
    int handleReads = 0;
    StepIn beforeHandle;
    /// Runs when the last reference goes: that lets others in, too.
    Hook atEnd;
    std::wstring name, url, status;
    struct Navigation {
        bool second;
        std::wstring address;
        std::vector<VARIANT> optional;
    };
    std::vector<Navigation> navigations;

    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* frame) noexcept override {
        ++handleReads;
        beforeHandle.Pass();
        *frame = handle;
        return Failed();
    }
    HRESULT STDMETHODCALLTYPE get_LocationName(BSTR* text) noexcept override { return Give(name, text); }
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* text) noexcept override { return Give(url, text); }
    HRESULT STDMETHODCALLTYPE get_StatusText(BSTR* text) noexcept override { return Give(status, text); }
    HRESULT STDMETHODCALLTYPE Navigate(BSTR address, VARIANT* flags, VARIANT* frame, VARIANT* data,
                                       VARIANT* headers) noexcept override {
        navigations.push_back(
            {false, std::wstring(address, SysStringLen(address)), {*flags, *frame, *data, *headers}});
        return Failed();
    }
    HRESULT STDMETHODCALLTYPE Navigate2(VARIANT* address, VARIANT* flags, VARIANT* frame, VARIANT* data,
                                        VARIANT* headers) noexcept override {
        const std::wstring text =
            address->vt == VT_BSTR ? std::wstring(address->bstrVal, SysStringLen(address->bstrVal)) : L"?";
        navigations.push_back({true, text, {*flags, *frame, *data, *headers}});
        return Failed();
    }

    // The rest of the interface, which nobody here uses.
    // clang-format off
    HRESULT STDMETHODCALLTYPE Refresh() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Refresh2(VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Stop() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Application(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Parent(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Container(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Document(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_TopLevelContainer(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Type(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Busy(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Quit() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProperty(BSTR, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Name(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FullName(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Path(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Visible(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Visible(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_StatusText(BSTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ReadyState(READYSTATE*) noexcept override { return E_NOTIMPL; }
    // clang-format on

 private:
    HRESULT Failed() noexcept {
        if (FAILED(failure) && !description.empty()) {
            LeaveErrorInfo(RunTimeError(failure, description));
        }
        return failure;
    }
    HRESULT Give(const std::wstring& what, BSTR* text) noexcept {
        *text = SUCCEEDED(failure) ? Bstr(what).Detach() : nullptr;
        return Failed();
    }
};

/// The list of windows; each walk goes over the entries as they were when it began.
class FakeShellWindows final : public EventSource<FakeShellWindows, IShellWindows> {
 public:
    FakeShellWindows() : EventSource(DIID_DShellWindowsEvents) {}

    void* Find(REFIID iid) noexcept {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(IShellWindows)) {
            return static_cast<IShellWindows*>(this);
        }
        return iid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(this) : nullptr;
    }

    /// Objects in the list; they need not be browsers.
    std::vector<ComPtr<IDispatch>> entries;
    int walks = 0;
    HRESULT failure = S_OK;
    /// After so many entries a walk fails with `nextFailure`; -1 never.
    int failAfter = -1;
    HRESULT nextFailure = E_FAIL;
    StepIn beforeWalk;

    HRESULT STDMETHODCALLTYPE _NewEnum(IUnknown** walk) noexcept override {
        ++walks;
        beforeWalk.Pass();
        *walk = nullptr;
        if (FAILED(failure)) {
            return failure;
        }
        *walk = MakeCom<Walk>(entries, failAfter, nextFailure).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Count(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Item(VARIANT, IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Register(IDispatch*, LONG, int, LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RegisterPending(LONG, VARIANT*, VARIANT*, int, LONG*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Revoke(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnNavigate(LONG, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnActivated(LONG, VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindWindowSW(VARIANT*, VARIANT*, int, LONG*, int,
                                           IDispatch**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE OnCreated(LONG, IUnknown*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ProcessAttachDetach(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }

 private:
    class Walk final : public ComObject<Walk, IEnumVARIANT> {
     public:
        Walk(std::vector<ComPtr<IDispatch>> entries, int failAfter, HRESULT failure)
            : m_entries(std::move(entries)), m_failAfter(failAfter), m_failure(failure) {}

        void* Find(REFIID iid) noexcept {
            return iid == IID_IUnknown || iid == IID_IEnumVARIANT ? static_cast<IEnumVARIANT*>(this)
                                                                  : nullptr;
        }
        HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* values, ULONG* fetched) noexcept override {
            if (m_failAfter >= 0 && m_at >= static_cast<std::size_t>(m_failAfter)) {
                return m_failure;
            }
            ULONG given = 0;
            for (; given < wanted && m_at < m_entries.size(); ++given, ++m_at) {
                values[given] = Object(ComPtr<IDispatch>(m_entries[m_at]).Detach());
            }
            if (fetched != nullptr) {
                *fetched = given;
            }
            return given == wanted ? S_OK : S_FALSE;
        }
        HRESULT STDMETHODCALLTYPE Skip(ULONG) noexcept override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE Reset() noexcept override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT**) noexcept override { return E_NOTIMPL; }

     private:
        const std::vector<ComPtr<IDispatch>> m_entries;
        const int m_failAfter;
        const HRESULT m_failure;
        std::size_t m_at = 0;
    };
};

/// An object that is no browser.
class Stranger final : public DispatchObject<Stranger, IDispatch> {
 public:
    void* Find(REFIID iid) noexcept {
        return iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
    }
};

/// A desktop with windows to open, close and announce.
class FakeDesktop {
 public:
    ComPtr<FakeBrowser> Open(LONG handle) {
        auto browser = MakeCom<FakeBrowser>(handle);
        shell->entries.emplace_back(browser.Get());
        return browser;
    }
    void Remove(const ComPtr<FakeBrowser>& browser) {
        std::erase_if(shell->entries, [&](const ComPtr<IDispatch>& entry) {
            return entry.Get() == static_cast<IDispatch*>(browser.Get());
        });
    }
    HRESULT Registered() { return shell->Fire(200, {Long(1)}); }
    HRESULT Revoked() { return shell->Fire(201, {Long(1)}); }
    std::function<ComPtr<IShellWindows>()> Maker() {
        return [this] {
            ++made;
            beforeMake.Pass();
            if (FAILED(makeFailure)) {
                throw RunTimeError(makeFailure);
            }
            return ComPtr<IShellWindows>(shell.Get());
        };
    }

    const ComPtr<FakeShellWindows> shell = MakeCom<FakeShellWindows>();
    int made = 0;
    HRESULT makeFailure = S_OK;
    StepIn beforeMake;
};

}  // namespace kestrelguard::fakes
