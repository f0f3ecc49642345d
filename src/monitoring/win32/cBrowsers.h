#pragma once

#include <windows.h>

#include <exdisp.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "runtime/win32/Com.h"

namespace kestrelguard {

/// The watched browser windows, in the order of the system's own list at the last rebuild. Others only read;
/// the watcher refills it. As a COM object it answers late-bound callers too: `Item` is its value, `_NewEnum`
/// walks it.
class cBrowsers final : public DispatchObject<cBrowsers, IDispatch> {
 public:
    using Entries = std::vector<ComPtr<IWebBrowser2>>;

    cBrowsers() { Clear(); }

    /// An enumerator that yields each browser as VT_DISPATCH. It walks the list as it is now, even if the
    /// watcher starts a new one meanwhile.
    ComPtr<IEnumVARIANT> NewEnum() const;
    /// The browser at a place counted from 1; null for a place that does not exist.
    ComPtr<IWebBrowser2> Item(std::int32_t index) const;
    /// Throws kOverflow above 32767: the result is kept at 16 bits.
    std::int16_t Count() const;

    void* Find(REFIID iid) noexcept {
        return iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD kind, DISPPARAMS* arguments,
                                     VARIANT* result, EXCEPINFO* exception,
                                     UINT* badArgument) noexcept override;

 private:
    friend class cBrowserEvents;
    friend class BrowserListFiller;  // of the tests

    /// Appends without a look at what is there.
    void Add(ComPtr<IWebBrowser2> oBrowser) { m_entries->push_back(std::move(oBrowser)); }
    /// Drops the list and starts a new one.
    void Clear();

    std::shared_ptr<Entries> m_entries;
};

}  // namespace kestrelguard
