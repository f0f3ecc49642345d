#pragma once

#include <windows.h>

#include <oaidl.h>

namespace kestrelguard {

inline constexpr GUID IID_IBrowser = {
    0x6f0b7c52, 0x3d1a, 0x4e8b, {0x9c, 0x47, 0x52, 0xe1, 0x0d, 0x8a, 0x36, 0xf4}};

/// The receiver of one browser's events. Called early bound, through the slots after the seven of IDispatch;
/// a new operation goes to the end.
///
/// References are those of the event itself: what is written there is what the browser reads. The bodies here
/// are empty; the interface is there to be implemented.
struct IBrowser : public IDispatch {
    /// Comes before each of the others and says which browser they speak of.
    virtual HRESULT STDMETHODCALLTYPE SetBrowserInst(IDispatch** /*oBrowser*/) { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE BeforeNavigate2(IDispatch* /*pDisp*/, VARIANT* /*URL*/,
                                                      VARIANT* /*Flags*/, VARIANT* /*TargetFrameName*/,
                                                      VARIANT* /*PostData*/, VARIANT* /*Headers*/,
                                                      VARIANT_BOOL* /*Cancel*/) {
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE DocumentComplete(IDispatch* /*pDisp*/, VARIANT* /*URL*/) {
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE DownLoadBegin() { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE DownLoadComplete() { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE FileDownload(VARIANT_BOOL* /*Cancel*/) { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE NavigateComplete2(IDispatch* /*pDisp*/, VARIANT* /*URL*/) {
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE NavigateError(IDispatch* /*pDisp*/, VARIANT* /*URL*/,
                                                    VARIANT* /*Frame*/, VARIANT* /*StatusCode*/,
                                                    VARIANT_BOOL* /*Cancel*/) {
        return S_OK;
    }
    /// The receiver may replace the object: it releases the old one and leaves a reference to the new one.
    virtual HRESULT STDMETHODCALLTYPE NewWindow2(IDispatch** /*ppDisp*/, VARIANT_BOOL* /*Cancel*/) {
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE OnFullScreen(VARIANT_BOOL /*FullScreen*/) { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE ProgressChange(LONG /*Progress*/, LONG /*ProgressMax*/) { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE TitleChange(BSTR /*Text*/) { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE WindowClosing(VARIANT_BOOL /*IsChildWindow*/,
                                                    VARIANT_BOOL* /*Cancel*/) {
        return S_OK;
    }
};

}  // namespace kestrelguard

__CRT_UUID_DECL(kestrelguard::IBrowser, 0x6f0b7c52, 0x3d1a, 0x4e8b, 0x9c, 0x47, 0x52, 0xe1, 0x0d, 0x8a, 0x36,
                0xf4)
