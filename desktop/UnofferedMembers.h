#pragma once

#include <exdisp.h>

namespace kestrelguard::desktop {

/// The members of a browser that no browser made up for tests offers; `Ground` is what such a browser is
/// else, and brings `IWebBrowser2`.
template <class Ground>
class UnofferedMembers : public Ground {
 public:
    HRESULT STDMETHODCALLTYPE GoBack() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GoForward() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GoHome() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GoSearch() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Left(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Left(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Top(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Top(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Width(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Width(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Height(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Height(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ClientToWindow(int*, int*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_StatusBar(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_StatusBar(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ToolBar(int*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_ToolBar(int) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_MenuBar(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_MenuBar(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FullScreen(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_FullScreen(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QueryStatusWB(OLECMDID, OLECMDF*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ExecWB(OLECMDID, OLECMDEXECOPT, VARIANT*, VARIANT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ShowBrowserBar(VARIANT*, VARIANT*, VARIANT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_Offline(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Offline(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Silent(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Silent(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RegisterAsBrowser(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_RegisterAsBrowser(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RegisterAsDropTarget(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_RegisterAsDropTarget(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_TheaterMode(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_TheaterMode(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_AddressBar(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_AddressBar(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Resizable(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Resizable(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE PutProperty(BSTR, VARIANT) noexcept override { return E_NOTIMPL; }

 protected:
    using Ground::Ground;
};

}  // namespace kestrelguard::desktop
