#pragma once

#include <windows.h>

#include <exdisp.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "monitoring/win32/cBrowsers.h"
#include "runtime/Browser.h"
#include "runtime/win32/Com.h"

namespace kestrelguard {

/// A running browser window, asked and told through its automation object. Holds a reference of its own.
/// Each operation throws RunTimeError with the call's HRESULT (and the browser's description, if it gave one)
/// when the window does not answer, 91 when there is no browser. Texts keep their full length.
///
/// An operation waits for the browser's process and lets other calls in meanwhile. It fails in a message that
/// another thread sent.
class ComBrowser final : public Browser {
 public:
    /// Shares the browser.
    explicit ComBrowser(IWebBrowser2* browser) noexcept : m_browser(browser) {}
    /// `frame` is its frame window, as it is known already; null for none. As long as that does not answer
    /// the browser is not called: its handle is the known one, its texts are empty.
    ComBrowser(IWebBrowser2* browser, HWND frame) noexcept : m_browser(browser), m_frame(frame) {}

    std::int32_t Handle() const override;
    std::int32_t KnownHandle() const override;
    std::wstring LocationName() const override;
    std::wstring LocationURL() const override;
    std::wstring StatusText() const override;
    void Navigate(const std::wstring& address) override;
    void Navigate2(const std::wstring& address) override;

 private:
    IWebBrowser2& Object() const;

    /// Asked once for calls that follow each other.
    bool Hangs() const;
    /// Reads from the browser. False when it does not answer, also when that shows only in the call.
    template <class Read>
    bool Tell(Read&& read) const;
    /// Calls a navigation of the browser with its options left out.
    template <class Navigation, class Address>
    void GoTo(Navigation navigation, Address address) const;

    ComPtr<IWebBrowser2> m_browser;
    HWND m_frame = nullptr;
    struct Asked {
        DWORD at;
        bool hangs;
    };
    mutable std::optional<Asked> m_asked;
};

/// The browsers of the list as it is now, in its order.
std::vector<ComBrowser> BrowsersIn(const cBrowsers& browsers);

/// The text in an event's argument, references followed; any other value as the text it converts to. Throws
/// kTypeMismatch when there is no text for it.
std::wstring TextOf(const VARIANT& argument);

}  // namespace kestrelguard
