#pragma once

#include <windows.h>

#include <exdisp.h>
#include <exdispid.h>
#include <ocidl.h>

#include <cstdio>
#include <vector>

#include "desktop/Com.h"

namespace kestrelguard::bench {

using desktop::ComPtr;
using desktop::Variant;

/// A sink that does nothing.
class NullListener : public IDispatch {
 public:
    virtual ~NullListener() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        if (iid != IID_IUnknown && iid != IID_IDispatch && iid != DIID_DWebBrowserEvents2) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = this;
        AddRef();
        return S_OK;
    }
    // It lives as long as the program.
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) noexcept override {
        return S_OK;
    }
};

inline bool ReadOnce(IWebBrowser2& browser) {
    SHANDLE_PTR handle = 0;
    BSTR title = nullptr;
    BSTR address = nullptr;
    const bool read = SUCCEEDED(browser.get_HWND(&handle)) && SUCCEEDED(browser.get_LocationName(&title)) &&
                      SUCCEEDED(browser.get_LocationURL(&address));
    SysFreeString(title);
    SysFreeString(address);
    return read;
}

/// Listens to every listed browser for the rest of the program's life, with a sink that lives as long; with
/// `read`, reads what a tree of browsers shows, too. Answers how many there are; -1 when one of them refuses.
inline int ListenToAll(NullListener& sink, bool read) {
    ComPtr<IShellWindows> shell;
    ComPtr<IUnknown> windows;
    if (FAILED(CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_ALL, __uuidof(IShellWindows),
                                shell.PutVoid())) ||
        FAILED(shell->_NewEnum(windows.Put()))) {
        return -1;
    }
    // Kept to the end, as a program that listens keeps them: an event that brings its browser along would
    // else be the dearer for it.
    static std::vector<ComPtr<IConnectionPoint>> points;
    static std::vector<ComPtr<IWebBrowser2>> browsers;
    const ComPtr<IEnumVARIANT> walk = windows.As<IEnumVARIANT>();
    for (;;) {
        Variant entry;
        ULONG fetched = 0;
        if (walk->Next(1, &entry, &fetched) != S_OK || fetched != 1) {
            return static_cast<int>(points.size());
        }
        const ComPtr<IDispatch> listed(entry.pdispVal);
        const ComPtr<IConnectionPointContainer> container = listed.As<IConnectionPointContainer>();
        ComPtr<IConnectionPoint> point;
        DWORD cookie = 0;
        if (!container || FAILED(container->FindConnectionPoint(DIID_DWebBrowserEvents2, point.Put())) ||
            FAILED(point->Advise(&sink, &cookie))) {
            return -1;
        }
        points.push_back(std::move(point));
        browsers.push_back(listed.As<IWebBrowser2>());
        if (read && !ReadOnce(*browsers.back().Get())) {
            return -1;
        }
    }
}

/// The life of a program that does nothing but listen with a sink to every listed browser: writes a line when
/// it does, and runs messages for ever.
[[noreturn]] inline void RunSink(NullListener& sink) {
    std::printf("listening %d\n", ListenToAll(sink, false));
    std::fflush(stdout);
    for (MSG message = {};;) {
        GetMessageW(&message, nullptr, 0, 0);
        DispatchMessageW(&message);
    }
}

}  // namespace kestrelguard::bench
