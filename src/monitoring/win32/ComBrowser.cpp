#include "monitoring/win32/ComBrowser.h"

#include "monitoring/win32/Answering.h"
#include "monitoring/win32/EventSink.h"
#include "runtime/win32/ComError.h"

namespace kestrelguard {

IWebBrowser2& ComBrowser::Object() const {
    if (!m_browser) {
        throw RunTimeError(RunTimeError::kObjectNotSet);
    }
    return *m_browser;
}

namespace {

std::int32_t NumberOf(HWND frame) {
    return static_cast<std::int32_t>(reinterpret_cast<LONG_PTR>(frame));
}

}  // namespace

bool ComBrowser::Hangs() const {
    constexpr DWORD kHolds = 50;
    if (m_frame == nullptr) {
        return false;
    }
    if (!m_asked || GetTickCount() - m_asked->at >= kHolds) {
        const bool hangs = !WindowAnswers(IdentityOf(m_browser.Get()).Get(), m_frame);
        m_asked = Asked{GetTickCount(), hangs};
    }
    return m_asked->hangs;
}

template <class Read>
bool ComBrowser::Tell(Read&& read) const {
    if (Hangs()) {
        return false;
    }
    bool told = false;
    try {
        CallWindow(&Object(), [&] {
            CallOut(read);
            told = true;
        });
    } catch (const RunTimeError& error) {
        if (error.Number() != RPC_E_CALL_CANCELED || m_frame == nullptr) {
            throw;
        }
    }
    return told;
}

std::int32_t ComBrowser::Handle() const {
    SHANDLE_PTR handle = 0;
    return Tell([&] { return Object().get_HWND(&handle); }) ? static_cast<std::int32_t>(handle)
                                                            : NumberOf(m_frame);
}

std::int32_t ComBrowser::KnownHandle() const {
    const HWND frame = FrameOf(m_browser.Get());
    return frame != nullptr ? NumberOf(frame) : Handle();
}

std::wstring ComBrowser::LocationName() const {
    Bstr text;
    return Tell([&] { return Object().get_LocationName(text.Put()); }) ? text.Text() : std::wstring();
}

std::wstring ComBrowser::LocationURL() const {
    Bstr text;
    return Tell([&] { return Object().get_LocationURL(text.Put()); }) ? text.Text() : std::wstring();
}

std::wstring ComBrowser::StatusText() const {
    Bstr text;
    CallWindow(m_browser.Get(), [&] { CallOut([&] { return Object().get_StatusText(text.Put()); }); });
    return text.Text();
}

template <class Navigation, class Address>
void ComBrowser::GoTo(Navigation navigation, Address address) const {
    // A null pointer for an omitted argument does not travel to another process.
    Variant flags = Variant::Omitted();
    Variant frame = Variant::Omitted();
    Variant data = Variant::Omitted();
    Variant headers = Variant::Omitted();
    CallWindow(m_browser.Get(), [&] {
        CallOut([&] {
            return (Object().*navigation)(address, &flags.Get(), &frame.Get(), &data.Get(), &headers.Get());
        });
    });
}

void ComBrowser::Navigate(const std::wstring& address) {
    const Bstr url(address);
    GoTo(&IWebBrowser2::Navigate, url.Get());
}

void ComBrowser::Navigate2(const std::wstring& address) {
    Variant url(address);
    GoTo(&IWebBrowser2::Navigate2, &url.Get());
}

std::vector<ComBrowser> BrowsersIn(const cBrowsers& browsers) {
    std::vector<ComBrowser> found;
    const auto walk = browsers.NewEnum();
    for (;;) {
        Variant entry;
        ULONG fetched = 0;
        if (walk->Next(1, entry.Put(), &fetched) != S_OK || fetched != 1) {
            return found;
        }
        const auto browser = Query<IWebBrowser2>(entry.Get().punkVal);
        found.emplace_back(browser.Get(), FrameOf(browser.Get()));
    }
}

std::wstring TextOf(const VARIANT& argument) {
    Variant reference;
    reference.Get().vt = VT_BYREF | VT_VARIANT;
    reference.Get().pvarVal = const_cast<VARIANT*>(&argument);
    EventArgument<BSTR> text;
    if (!text.Take(reference.Get())) {
        throw RunTimeError(RunTimeError::kTypeMismatch);
    }
    return std::wstring(text.Value() == nullptr ? L"" : text.Value(), SysStringLen(text.Value()));
}

}  // namespace kestrelguard
