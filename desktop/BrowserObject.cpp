#include "desktop/BrowserObject.h"

#include <exdispid.h>
#include <olectl.h>

#include <algorithm>
#include <utility>

#include "desktop/Frame.h"
#include "desktop/HostCommands.h"
#include "desktop/Pages.h"

namespace kestrelguard::desktop {

namespace {

// The type library of web browsers, {EAB22AC0-30C1-11CF-A7EB-0000C05BAE0B} 1.1.
constexpr GUID kBrowserLibrary = {
    0xeab22ac0, 0x30c1, 0x11cf, {0xa7, 0xeb, 0x00, 0x00, 0xc0, 0x5b, 0xae, 0x0b}};

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

std::shared_ptr<BrowserObject> BrowserObject::Create(BrowserOwner& owner, UiThread& ui,
                                                     BrowserOptions options) {
    std::shared_ptr<BrowserObject> browser(new BrowserObject(owner, ui, std::move(options)));
    ui.Call([&browser] {
        const HWND window = CreateFrame(browser);
        const Hold hold(browser->m_lock);
        browser->m_window = window;
    });
    browser->Changed();
    return browser;
}

BrowserObject::BrowserObject(BrowserOwner& owner, UiThread& ui, BrowserOptions options)
    : m_owner(owner),
      m_ui(ui),
      m_options(std::move(options)),
      m_events(*this, DIID_DWebBrowserEvents2),
      m_url(m_options.url),
      m_title(m_options.title),
      m_statusText(m_options.statusText) {}

BrowserObject::~BrowserObject() = default;

HWND BrowserObject::Window() const {
    const Hold hold(m_lock);
    return m_window;
}

std::wstring BrowserObject::Url() const {
    const Hold hold(m_lock);
    return m_url;
}

std::wstring BrowserObject::Title() const {
    const Hold hold(m_lock);
    return m_title;
}

std::wstring BrowserObject::StatusText() const {
    const Hold hold(m_lock);
    return m_statusText;
}

bool BrowserObject::Busy() const {
    const Hold hold(m_lock);
    return m_busy;
}

std::vector<NavigateCall> BrowserObject::NavigateCalls() const {
    const Hold hold(m_lock);
    return m_navigations;
}

bool BrowserObject::QuitCalled() const {
    const Hold hold(m_lock);
    return m_quit;
}

void BrowserObject::SetUrl(std::wstring url) {
    {
        const Hold hold(m_lock);
        m_url = std::move(url);
    }
    Changed();
}

void BrowserObject::SetTitle(std::wstring title) {
    {
        const Hold hold(m_lock);
        m_title = std::move(title);
    }
    Changed();
}

void BrowserObject::SetStatusText(std::wstring text) {
    {
        const Hold hold(m_lock);
        m_statusText = std::move(text);
    }
    Changed();
}

void BrowserObject::ShowStatusText(std::wstring text) {
    SetStatusText(text);
    Post([self = shared_from_this(), text = std::move(text)] {
        self->Announce(EventCall::StatusTextChange(text));
    });
}

int BrowserObject::Reads(Property property) const {
    const Hold hold(m_lock);
    return Of(property).reads;
}

void BrowserObject::ResetReads() {
    const Hold hold(m_lock);
    for (Watch& watch : m_watches) {
        watch.reads = 0;
    }
}

void BrowserObject::Fail(Property property, HRESULT hr, int times) {
    const Hold hold(m_lock);
    Watch& watch = Of(property);
    watch.failure = hr;
    watch.failures = times;
}

void BrowserObject::BeforeRead(Property property, Task task, int times) {
    const Hold hold(m_lock);
    Watch& watch = Of(property);
    watch.before = std::move(task);
    watch.beforeTimes = times;
}

void BrowserObject::Stall(Property property) {
    const Hold hold(m_lock);
    if (!m_ended) {
        Of(property).stalls = true;
        Of(property).gate.Close();
    }
    Changed();
}

void BrowserObject::LetGo(Property property) {
    {
        const Hold hold(m_lock);
        Of(property).stalls = false;
        Of(property).gate.Open();
    }
    Changed();
}

int BrowserObject::Stalled(Property property) const {
    return Of(property).gate.Waiting();
}

bool BrowserObject::Stalls() const {
    const Hold hold(m_lock);
    return std::any_of(m_watches.begin(), m_watches.end(), [](const Watch& watch) { return watch.stalls; });
}

HRESULT BrowserObject::Read(Property property) noexcept {
    Task before;
    {
        const Hold hold(m_lock);
        Watch& watch = Of(property);
        ++watch.reads;
        if (watch.beforeTimes > 0) {
            --watch.beforeTimes;
            before = watch.before;
        }
    }
    if (before) {
        before();
    }
    Of(property).gate.Pass();
    const Hold hold(m_lock);
    if (m_ended) {
        return RPC_E_DISCONNECTED;
    }
    Watch& watch = Of(property);
    if (watch.failures == 0) {
        return S_OK;
    }
    watch.failures -= watch.failures > 0 ? 1 : 0;
    return watch.failure;
}

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

void BrowserObject::Changed() const {
    FrameChanged(Window());
}

void BrowserObject::Load(const std::wstring& url) {
    Post([self = shared_from_this(), url = CompleteAddress(url)] { self->LoadNow(url); });
}

void BrowserObject::LoadNow(const std::wstring& url) {
    const EventCall before = EventCall::BeforeNavigate2(Dispatch(), url);
    if (m_events.Deliver(before).cancel) {
        return;
    }
    const Page page = LoadPage(url);
    {
        const Hold hold(m_lock);
        m_busy = true;
        m_statusText = L"Opening page " + url + L"...";
    }
    Changed();
    Announce(EventCall::CommandStateChange(1, false));
    Announce(EventCall::StatusTextChange(StatusText()));
    Announce(EventCall::DownloadBegin());
    Announce(EventCall::ProgressChange(1, 100));
    SetUrl(url);
    Announce(EventCall::NavigateComplete2(Dispatch(), url));
    SetTitle(page.title);
    Announce(EventCall::TitleChange(page.title));
    Announce(EventCall::ProgressChange(100, 100));
    {
        const Hold hold(m_lock);
        m_busy = false;
        m_statusText = L"Done";
    }
    Changed();
    Announce(EventCall::DownloadComplete());
    Announce(EventCall::ProgressChange(0, 0));
    // A load that something else has already replaced never becomes complete.
    if (m_work.Waiting() > 0) {
        return;
    }
    Announce(EventCall::DocumentComplete(Dispatch(), url));
    Announce(EventCall::StatusTextChange(L"Done"));
    for (const std::wstring& popup : page.popups) {
        RequestNewWindow(popup);
    }
}

void BrowserObject::RequestNewWindow(const std::wstring& url) {
    Post([self = shared_from_this(), url = CompleteAddress(url)] {
        const EventResult result = self->m_events.Deliver(EventCall::NewWindow2());
        if (!result.cancel) {
            self->m_owner.OpenWindow(*self, url, result.newBrowser);
        }
    });
}

bool BrowserObject::ClickLink(const std::wstring& link) const {
    bool clicked = false;
    const HWND window = Window();
    m_ui.Call([&] { clicked = PressLink(window, link); });
    return clicked;
}

RECT BrowserObject::LinkPlace(const std::wstring& link) const {
    RECT place{};
    const HWND window = Window();
    m_ui.Call([&] { place = desktop::LinkPlace(window, link); });
    return place;
}

void BrowserObject::End(bool disconnectClients) {
    HWND window = nullptr;
    {
        const Hold hold(m_lock);
        m_ended = true;
        window = std::exchange(m_window, nullptr);
    }
    for (Watch& watch : m_watches) {
        watch.gate.Open();
    }
    m_work.Stop();
    if (window != nullptr) {
        m_ui.Call([window] { DestroyWindow(window); });
    }
    if (disconnectClients) {
        CoDisconnectObject(Dispatch(), 0);
        m_events.DropSinks();
    }
}

bool BrowserObject::Ended() const {
    const Hold hold(m_lock);
    return m_ended;
}

HRESULT BrowserObject::QueryInterface(REFIID iid, void** object) noexcept {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IWebBrowser || iid == IID_IWebBrowserApp ||
        iid == IID_IWebBrowser2) {
        *object = static_cast<IWebBrowser2*>(this);
    } else if (iid == IID_IConnectionPointContainer) {
        const HRESULT hr = Read(Property::Connect);
        if (FAILED(hr)) {
            return hr;
        }
        *object = static_cast<IConnectionPointContainer*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG BrowserObject::AddRef() noexcept {
    const Hold hold(m_lock);
    if (++m_references == 1) {
        m_self = shared_from_this();
    }
    return static_cast<ULONG>(m_references);
}

ULONG BrowserObject::Release() noexcept {
    std::shared_ptr<BrowserObject> last;
    const Hold hold(m_lock);
    const LONG left = --m_references;
    if (left == 0) {
        last = std::move(m_self);
    }
    return static_cast<ULONG>(left);
}

ComPtr<ITypeInfo> BrowserObject::Description() {
    ComPtr<ITypeLib> library;
    ComPtr<ITypeInfo> info;
    if (SUCCEEDED(LoadRegTypeLib(kBrowserLibrary, 1, 1, LOCALE_NEUTRAL, library.Put()))) {
        library->GetTypeInfoOfGuid(IID_IWebBrowser2, info.Put());
    }
    return info;
}

HRESULT BrowserObject::GetTypeInfoCount(UINT* count) noexcept {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 1;
    return S_OK;
}

HRESULT BrowserObject::GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept {
    if (info == nullptr) {
        return E_POINTER;
    }
    *info = index == 0 ? Description().Detach() : nullptr;
    return *info != nullptr ? S_OK : DISP_E_BADINDEX;
}

HRESULT BrowserObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept {
    const ComPtr<ITypeInfo> info = Description();
    return info ? DispGetIDsOfNames(info.Get(), names, count, ids) : E_NOTIMPL;
}

HRESULT BrowserObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                              EXCEPINFO* exception, UINT* badArgument) noexcept {
    const ComPtr<ITypeInfo> info = Description();
    return info ? DispInvoke(static_cast<IWebBrowser2*>(this), info.Get(), id, flags, parameters, result,
                             exception, badArgument)
                : E_NOTIMPL;
}

HRESULT BrowserObject::EnumConnectionPoints(IEnumConnectionPoints** points) noexcept {
    if (points != nullptr) {
        *points = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT BrowserObject::FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept {
    if (point == nullptr) {
        return E_POINTER;
    }
    *point = nullptr;
    if (iid != m_events.Source()) {
        return CONNECT_E_NOCONNECTION;
    }
    *point = &m_events;
    AddRef();
    return S_OK;
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

HRESULT BrowserObject::PutProperty(BSTR, VARIANT) noexcept {
    return E_NOTIMPL;
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
