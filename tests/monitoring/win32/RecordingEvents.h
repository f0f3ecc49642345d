#pragma once

#include <functional>
#include <string>
#include <vector>

#include "monitoring/win32/BrowserEvents.h"

namespace kestrelguard::fakes {

/// Writes down the events that reach it, each with what tells its arguments apart, and lets a test answer.
class RecordingEvents final : public BrowserEvents {
 public:
    std::vector<std::wstring> names;
    std::vector<IWebBrowser2*> browsers;
    /// Runs in each event, after it was noted.
    std::function<void()> in;
    std::function<void(IWebBrowser2*& browser)> inWithBrowser;

    // What the last event brought.
    IDispatch* disp = nullptr;
    IDispatch** dispRef = nullptr;
    std::vector<VARIANT*> variants;
    VARIANT_BOOL* cancel = nullptr;
    std::vector<LONG> numbers;
    std::wstring text;

    void BrowserNavigating(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL, VARIANT& Flags,
                           VARIANT& TargetFrameName, VARIANT& PostData, VARIANT& Headers,
                           VARIANT_BOOL& Cancel) override {
        disp = pDisp;
        variants = {&URL, &Flags, &TargetFrameName, &PostData, &Headers};
        cancel = &Cancel;
        Note(L"BrowserNavigating", Browser);
    }
    void DocumentComplete(IWebBrowser2*& Browser, IDispatch*& pDisp, VARIANT& URL) override {
        disp = pDisp;
        dispRef = &pDisp;
        variants = {&URL};
        Note(L"DocumentComplete", Browser);
    }
    void DownLoadBegin(IWebBrowser2*& Browser) override { Note(L"DownLoadBegin", Browser); }
    void DownLoadComplete(IWebBrowser2*& Browser) override { Note(L"DownLoadComplete", Browser); }
    void FileDownload(IWebBrowser2*& Browser, VARIANT_BOOL& Cancel) override {
        cancel = &Cancel;
        Note(L"FileDownload", Browser);
    }
    void NavigateComplete(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL) override {
        disp = pDisp;
        variants = {&URL};
        Note(L"NavigateComplete", Browser);
    }
    void NavigateError(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL, VARIANT& Frame,
                       VARIANT& StatusCode, VARIANT_BOOL& Cancel) override {
        disp = pDisp;
        variants = {&URL, &Frame, &StatusCode};
        cancel = &Cancel;
        Note(L"NavigateError", Browser);
    }
    void NewWindow(IWebBrowser2*& Browser, IDispatch*& ppDisp, VARIANT_BOOL& Cancel) override {
        dispRef = &ppDisp;
        cancel = &Cancel;
        Note(L"NewWindow", Browser);
    }
    void OnFullScreen(IWebBrowser2*& Browser, VARIANT_BOOL FullScreen) override {
        numbers = {FullScreen};
        Note(L"OnFullScreen", Browser);
    }
    void ProgressChange(IWebBrowser2*& Browser, LONG Progress, LONG ProgressMax) override {
        numbers = {Progress, ProgressMax};
        Note(L"ProgressChange", Browser);
    }
    void TitleChange(IWebBrowser2*& Browser, const std::wstring& Text) override {
        text = Text;
        Note(L"TitleChange", Browser);
    }
    void WindowClosing(IWebBrowser2*& Browser, VARIANT_BOOL IsChildWindow, VARIANT_BOOL& Cancel) override {
        numbers = {IsChildWindow};
        cancel = &Cancel;
        Note(L"WindowClosing", Browser);
    }
    void BrowserCreated(IWebBrowser2* Browser) override { Note(L"BrowserCreated", Browser); }
    void BrowserDestroyed() override {
        IWebBrowser2* none = nullptr;
        Note(L"BrowserDestroyed", none);
    }

 private:
    void Note(const wchar_t* name, IWebBrowser2*& browser) {
        names.emplace_back(name);
        browsers.push_back(browser);
        if (inWithBrowser) {
            inWithBrowser(browser);
        }
        if (in) {
            in();
        }
    }
};

using Names = std::vector<std::wstring>;

}  // namespace kestrelguard::fakes
