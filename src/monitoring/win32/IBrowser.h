#pragma once

#include <windows.h>

#include <oaidl.h>

#include "monitoring/win32/EventRows.h"

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
    /// NewWindow2's receiver may replace the object: it releases the old one and leaves a reference to the
    /// new one.
#define KG_SLOT(name, event, handler, parameters, arguments) \
    virtual HRESULT STDMETHODCALLTYPE name parameters {      \
        return Nothing arguments;                            \
    }
    KG_BROWSER_OPERATIONS(KG_SLOT)
#undef KG_SLOT

 private:
    static HRESULT Nothing(const auto&... /*arguments*/) {
        return S_OK;
    }
};

}  // namespace kestrelguard

__CRT_UUID_DECL(kestrelguard::IBrowser, 0x6f0b7c52, 0x3d1a, 0x4e8b, 0x9c, 0x47, 0x52, 0xe1, 0x0d, 0x8a, 0x36,
                0xf4)
