#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "FakeDesktop.h"
#include "monitoring/win32/IBrowser.h"
#include "monitoring/win32/cBrowser.h"

namespace kestrelguard::fakes {

/// Writes down each operation with the very pointers it was given.
class Receiver final : public DispatchObject<Receiver, IBrowser> {
 public:
    std::vector<std::string> calls;
    std::vector<const void*> pointers;
    std::vector<LONG> numbers;
    std::wstring text;
    IDispatch* browser = nullptr;
    HRESULT answer = S_OK;
    HRESULT answerToBrowser = S_OK;
    std::function<void()> in;

    void* Find(REFIID iid) noexcept {
        return iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IBrowser
                   ? static_cast<IBrowser*>(this)
                   : nullptr;
    }
    HRESULT STDMETHODCALLTYPE SetBrowserInst(IDispatch** oBrowser) override {
        calls.emplace_back("SetBrowserInst");
        browser = *oBrowser;
        return answerToBrowser;
    }
    HRESULT STDMETHODCALLTYPE BeforeNavigate2(IDispatch* pDisp, VARIANT* URL, VARIANT* Flags, VARIANT* Frame,
                                              VARIANT* PostData, VARIANT* Headers,
                                              VARIANT_BOOL* Cancel) override {
        return Note("BeforeNavigate2", {pDisp, URL, Flags, Frame, PostData, Headers, Cancel});
    }
    HRESULT STDMETHODCALLTYPE DocumentComplete(IDispatch* pDisp, VARIANT* URL) override {
        return Note("DocumentComplete", {pDisp, URL});
    }
    HRESULT STDMETHODCALLTYPE DownLoadBegin() override { return Note("DownLoadBegin", {}); }
    HRESULT STDMETHODCALLTYPE DownLoadComplete() override { return Note("DownLoadComplete", {}); }
    HRESULT STDMETHODCALLTYPE FileDownload(VARIANT_BOOL* Cancel) override {
        return Note("FileDownload", {Cancel});
    }
    HRESULT STDMETHODCALLTYPE NavigateComplete2(IDispatch* pDisp, VARIANT* URL) override {
        return Note("NavigateComplete2", {pDisp, URL});
    }
    HRESULT STDMETHODCALLTYPE NavigateError(IDispatch* pDisp, VARIANT* URL, VARIANT* Frame,
                                            VARIANT* StatusCode, VARIANT_BOOL* Cancel) override {
        return Note("NavigateError", {pDisp, URL, Frame, StatusCode, Cancel});
    }
    HRESULT STDMETHODCALLTYPE NewWindow2(IDispatch** ppDisp, VARIANT_BOOL* Cancel) override {
        return Note("NewWindow2", {ppDisp, Cancel});
    }
    HRESULT STDMETHODCALLTYPE OnFullScreen(VARIANT_BOOL FullScreen) override {
        numbers = {FullScreen};
        return Note("OnFullScreen", {});
    }
    HRESULT STDMETHODCALLTYPE ProgressChange(LONG Progress, LONG ProgressMax) override {
        numbers = {Progress, ProgressMax};
        return Note("ProgressChange", {});
    }
    HRESULT STDMETHODCALLTYPE TitleChange(BSTR Text) override {
        text.assign(Text == nullptr ? L"" : Text, SysStringLen(Text));
        return Note("TitleChange", {Text});
    }
    HRESULT STDMETHODCALLTYPE WindowClosing(VARIANT_BOOL IsChildWindow, VARIANT_BOOL* Cancel) override {
        numbers = {IsChildWindow};
        return Note("WindowClosing", {Cancel});
    }

 private:
    HRESULT Note(const char* name, std::vector<const void*> given) {
        calls.emplace_back(name);
        pointers = std::move(given);
        if (in) {
            in();
        }
        return answer;
    }
};

using Calls = std::vector<std::string>;
using Pointers = std::vector<const void*>;

class SinkTest : public testing::Test {
 protected:
    void SetUp() override {
        sink->SetInterFace(ComPtr<IBrowser>(receiver.Get()));
        sink->SetBrowser(ComPtr<IWebBrowser2>(browser.Get()));
    }
    HRESULT Fire(DISPID id, Arguments arguments = {}, EXCEPINFO* exception = nullptr) {
        return browser->Fire(id, std::move(arguments), exception);
    }

    const ComApartment apartment;
    const ComPtr<Receiver> receiver = MakeCom<Receiver>();
    const ComPtr<FakeBrowser> browser = MakeCom<FakeBrowser>();
    const ComPtr<Stranger> frame = MakeCom<Stranger>();
    ComPtr<cBrowser> sink = MakeCom<cBrowser>();
    VARIANT url = Of(VT_EMPTY), flags = Of(VT_EMPTY), target = Of(VT_EMPTY), post = Of(VT_EMPTY),
            headers = Of(VT_EMPTY);
    VARIANT_BOOL cancel = VARIANT_FALSE;
};

}  // namespace kestrelguard::fakes
