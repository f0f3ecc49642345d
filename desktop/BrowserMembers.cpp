// What clients read of a browser and ask of it.

#include <utility>

#include "desktop/BrowserObject.h"
#include "desktop/HostCommands.h"

namespace kestrelguard::desktop {

namespace {

VARTYPE TypeOf(const VARIANT* argument) {
    return argument == nullptr ? static_cast<VARTYPE>(VT_VOID) : argument->vt;
}

HRESULT Give(std::wstring_view text, BSTR* out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = Bstr(text).Detach();
    return *out != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT Give(bool yes, VARIANT_BOOL* out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = yes ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

}  // namespace

HRESULT BrowserObject::Text(Property property, const std::wstring& value, BSTR* text) noexcept {
    if (text == nullptr) {
        return E_POINTER;
    }
    *text = nullptr;
    const HRESULT hr = Read(property);
    if (FAILED(hr)) {
        return hr;
    }
    const Hold hold(m_lock);
    return Give(value, text);
}

HRESULT BrowserObject::TakeNavigation(NavigateCall call) {
    const HRESULT hr = Read(Property::Navigate);
    const std::wstring url = call.url;
    {
        const Hold hold(m_lock);
        m_navigations.push_back(std::move(call));
    }
    if (FAILED(hr)) {
        return hr;
    }
    if (url.empty()) {
        return E_INVALIDARG;
    }
    if (m_options.navigates) {
        Load(url);
    }
    return S_OK;
}

HRESULT BrowserObject::Navigate(BSTR url, VARIANT* flags, VARIANT* frame, VARIANT* postData,
                                VARIANT* headers) noexcept {
    NavigateCall call;
    call.url.assign(url, SysStringLen(url));
    call.urlType = VT_BSTR;
    call.optional = {TypeOf(flags), TypeOf(frame), TypeOf(postData), TypeOf(headers)};
    return TakeNavigation(std::move(call));
}

HRESULT BrowserObject::Navigate2(VARIANT* url, VARIANT* flags, VARIANT* frame, VARIANT* postData,
                                 VARIANT* headers) noexcept {
    NavigateCall call;
    call.second = true;
    call.urlType = TypeOf(url);
    call.optional = {TypeOf(flags), TypeOf(frame), TypeOf(postData), TypeOf(headers)};
    Variant text;
    if (url != nullptr && SUCCEEDED(VariantChangeType(&text, url, 0, VT_BSTR))) {
        call.url.assign(text.bstrVal, SysStringLen(text.bstrVal));
    }
    return TakeNavigation(std::move(call));
}

HRESULT BrowserObject::Refresh() noexcept {
    Load(Url());
    return S_OK;
}

HRESULT BrowserObject::Refresh2(VARIANT*) noexcept {
    return Refresh();
}

HRESULT BrowserObject::Self(IDispatch** object) noexcept {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = Dispatch();
    AddRef();
    return S_OK;
}

HRESULT BrowserObject::get_Application(IDispatch** application) noexcept {
    return Self(application);
}

HRESULT BrowserObject::get_Parent(IDispatch** parent) noexcept {
    return Self(parent);
}

HRESULT BrowserObject::get_Container(IDispatch** container) noexcept {
    if (container == nullptr) {
        return E_POINTER;
    }
    *container = nullptr;
    return S_FALSE;
}

HRESULT BrowserObject::get_Document(IDispatch** document) noexcept {
    if (document == nullptr) {
        return E_POINTER;
    }
    *document = nullptr;
    return S_FALSE;
}

HRESULT BrowserObject::get_TopLevelContainer(VARIANT_BOOL* yes) noexcept {
    return Give(true, yes);
}

HRESULT BrowserObject::get_Type(BSTR* type) noexcept {
    return Give(m_options.folder ? L"" : L"HTML Document", type);
}

HRESULT BrowserObject::get_LocationName(BSTR* name) noexcept {
    return Text(Property::LocationName, m_title, name);
}

HRESULT BrowserObject::get_LocationURL(BSTR* url) noexcept {
    return Text(Property::LocationUrl, m_url, url);
}

HRESULT BrowserObject::get_Busy(VARIANT_BOOL* busy) noexcept {
    const HRESULT hr = Read(Property::Busy);
    return FAILED(hr) ? hr : Give(Busy(), busy);
}

HRESULT BrowserObject::Quit() noexcept {
    {
        const Hold hold(m_lock);
        m_quit = true;
    }
    Post([self = shared_from_this()] { self->m_owner.CloseRequested(*self); });
    return S_OK;
}

HRESULT BrowserObject::GetProperty(BSTR name, VARIANT* value) noexcept {
    if (value == nullptr) {
        return E_POINTER;
    }
    VariantInit(value);
    return Obey(*this, std::wstring_view(name, SysStringLen(name)), *value);
}

HRESULT BrowserObject::get_Name(BSTR* name) noexcept {
    return Give(m_options.folder ? L"Windows Explorer" : L"Microsoft Internet Explorer", name);
}

HRESULT BrowserObject::get_HWND(SHANDLE_PTR* handle) noexcept {
    if (handle == nullptr) {
        return E_POINTER;
    }
    *handle = 0;
    const HRESULT hr = Read(Property::Hwnd);
    if (FAILED(hr)) {
        return hr;
    }
    const Hold hold(m_lock);
    *handle = m_options.frame != 0 ? static_cast<SHANDLE_PTR>(m_options.frame)
                                   : reinterpret_cast<SHANDLE_PTR>(m_window);
    return S_OK;
}

HRESULT BrowserObject::get_FullName(BSTR* name) noexcept {
    return Give(m_options.folder ? L"C:\\windows\\explorer.exe"
                                 : L"C:\\Program Files\\Internet Explorer\\iexplore.exe",
                name);
}

HRESULT BrowserObject::get_Path(BSTR* path) noexcept {
    return Give(m_options.folder ? L"C:\\windows\\" : L"C:\\Program Files\\Internet Explorer\\", path);
}

HRESULT BrowserObject::get_Visible(VARIANT_BOOL* visible) noexcept {
    const HRESULT hr = Read(Property::Visible);
    return FAILED(hr) ? hr : Give(IsWindowVisible(Window()) != FALSE, visible);
}

HRESULT BrowserObject::put_Visible(VARIANT_BOOL visible) noexcept {
    ShowWindowAsync(Window(), visible != VARIANT_FALSE ? SW_SHOW : SW_HIDE);
    return S_OK;
}

HRESULT BrowserObject::get_StatusText(BSTR* text) noexcept {
    return Text(Property::StatusText, m_statusText, text);
}

HRESULT BrowserObject::put_StatusText(BSTR text) noexcept {
    ShowStatusText(std::wstring(text, SysStringLen(text)));
    return S_OK;
}

HRESULT BrowserObject::get_ReadyState(READYSTATE* state) noexcept {
    if (state == nullptr) {
        return E_POINTER;
    }
    *state = Busy() ? READYSTATE_LOADING : READYSTATE_COMPLETE;
    return S_OK;
}

}  // namespace kestrelguard::desktop
