#pragma once

#include <cstdint>
#include <string>

namespace kestrelguard {

/// One running browser window. A window that no longer answers throws RunTimeError with the call's HRESULT.
class Browser {
 public:
    virtual ~Browser() = default;
    /// The handle of its frame window (`HWND`).
    virtual std::int32_t Handle() const = 0;
    /// The same as it was last read for the list of browsers, without a call to the window; reads it when the
    /// list does not know it.
    virtual std::int32_t KnownHandle() const { return Handle(); }
    virtual std::wstring LocationName() const = 0;
    virtual std::wstring LocationURL() const = 0;
    virtual std::wstring StatusText() const = 0;
    /// Both with all optional arguments omitted.
    virtual void Navigate(const std::wstring& address) = 0;
    virtual void Navigate2(const std::wstring& address) = 0;
};

}  // namespace kestrelguard
