#include "desktop/ShellWindowsObject.h"

#include <exdispid.h>
#include <olectl.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "desktop/HandOut.h"

namespace kestrelguard::desktop {

namespace {

constexpr GUID kBrowserLibrary = {
    0xeab22ac0, 0x30c1, 0x11cf, {0xa7, 0xeb, 0x00, 0x00, 0xc0, 0x5b, 0xae, 0x0b}};

/// Walks a list of objects that was taken when the walk began.
class Enumerator final : public IEnumVARIANT {
 public:
    Enumerator(std::vector<ComPtr<IDispatch>> objects, std::size_t position)
        : m_objects(std::move(objects)), m_position(position) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        if (object == nullptr) {
            return E_POINTER;
        }
        if (iid == IID_IUnknown || iid == IID_IEnumVARIANT) {
            *object = static_cast<IEnumVARIANT*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override {
        return static_cast<ULONG>(InterlockedIncrement(&m_references));
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        const LONG left = InterlockedDecrement(&m_references);
        if (left == 0) {
            const std::unique_ptr<Enumerator> last(this);
        }
        return static_cast<ULONG>(left);
    }
    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* values, ULONG* fetched) noexcept override {
        if (values == nullptr || (fetched == nullptr && wanted != 1)) {
            return E_POINTER;
        }
        const Hold hold(m_lock);
        ULONG given = 0;
        while (given < wanted && m_position < m_objects.size()) {
            VariantInit(&values[given]);
            values[given].vt = VT_DISPATCH;
            values[given].pdispVal = ComPtr<IDispatch>(m_objects[m_position]).Detach();
            ++given;
            ++m_position;
        }
        if (fetched != nullptr) {
            *fetched = given;
        }
        return given == wanted ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override {
        const Hold hold(m_lock);
        const std::size_t left = m_objects.size() - m_position;
        m_position += std::min<std::size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() noexcept override {
        const Hold hold(m_lock);
        m_position = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** clone) noexcept override {
        if (clone == nullptr) {
            return E_POINTER;
        }
        const Hold hold(m_lock);
        *clone = std::make_unique<Enumerator>(m_objects, m_position).release();
        (*clone)->AddRef();
        return S_OK;
    }

 private:
    LONG m_references = 0;
    Lock m_lock;
    std::vector<ComPtr<IDispatch>> m_objects;
    std::size_t m_position;
};

/// Hands out the one list of windows whenever somebody creates the class.
class Factory final : public IClassFactory {
 public:
    explicit Factory(std::shared_ptr<ShellWindowsObject> object) : m_object(std::move(object)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        if (object == nullptr) {
            return E_POINTER;
        }
        if (iid == IID_IUnknown || iid == IID_IClassFactory) {
            *object = static_cast<IClassFactory*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override {
        return static_cast<ULONG>(InterlockedIncrement(&m_references));
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        const LONG left = InterlockedDecrement(&m_references);
        if (left == 0) {
            const std::unique_ptr<Factory> last(this);
        }
        return static_cast<ULONG>(left);
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : m_object->QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }

 private:
    LONG m_references = 0;
    std::shared_ptr<ShellWindowsObject> m_object;
};

void WriteKey(const wchar_t* path, const std::wstring& value) {
    HKEY key = nullptr;
    const std::wstring whole = std::wstring(L"Software\\Classes\\") + path;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, whole.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
        throw std::runtime_error("the registry cannot be written");
    }
    const std::size_t size = (value.size() + 1) * sizeof(wchar_t);
    RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                   static_cast<DWORD>(size));
    RegCloseKey(key);
}

}  // namespace

std::shared_ptr<ShellWindowsObject> ShellWindowsObject::Create() {
    return std::shared_ptr<ShellWindowsObject>(new ShellWindowsObject);
}

ShellWindowsObject::ShellWindowsObject() : m_events(*this, DIID_DShellWindowsEvents) {}

ShellWindowsObject::~ShellWindowsObject() = default;

LONG ShellWindowsObject::Append(Entry entry) {
    const Hold hold(m_lock);
    entry.cookie = m_nextCookie++;
    m_entries.push_back(std::move(entry));
    return m_entries.back().cookie;
}

LONG ShellWindowsObject::Add(std::shared_ptr<BrowserObject> browser) {
    Entry entry;
    entry.browser = std::move(browser);
    return Append(std::move(entry));
}

LONG ShellWindowsObject::AddForeign(ComPtr<IDispatch> object) {
    Entry entry;
    entry.foreign = std::move(object);
    return Append(std::move(entry));
}

bool ShellWindowsObject::Remove(LONG cookie) {
    Entry removed;  // goes after the lock
    const Hold hold(m_lock);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [cookie](const Entry& entry) { return entry.cookie == cookie; });
    if (found == m_entries.end()) {
        return false;
    }
    removed = std::move(*found);
    m_entries.erase(found);
    return true;
}

int ShellWindowsObject::Size() const {
    const Hold hold(m_lock);
    return static_cast<int>(m_entries.size());
}

int ShellWindowsObject::Enumerations() const {
    const Hold hold(m_lock);
    return m_enumerations;
}

void ShellWindowsObject::FailEnumeration(HRESULT hr, int times) {
    const Hold hold(m_lock);
    m_failure = hr;
    m_failures = times;
}

void ShellWindowsObject::BeforeEnumeration(Task task, int times) {
    const Hold hold(m_lock);
    m_before = std::move(task);
    m_beforeTimes = times;
}

void ShellWindowsObject::OnForeign(Registered registered, Revoked revoked) {
    const Hold hold(m_lock);
    m_registered = std::move(registered);
    m_revoked = std::move(revoked);
}

void ShellWindowsObject::End() {
    CoDisconnectObject(static_cast<IShellWindows*>(this), 0);
    m_events.DropSinks();
    OnForeign({}, {});
    std::vector<Entry> dropped;
    const Hold hold(m_lock);
    dropped.swap(m_entries);
}

HRESULT ShellWindowsObject::QueryInterface(REFIID iid, void** object) noexcept {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IShellWindows) {
        *object = static_cast<IShellWindows*>(this);
    } else if (iid == IID_IConnectionPointContainer) {
        *object = static_cast<IConnectionPointContainer*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG ShellWindowsObject::AddRef() noexcept {
    const Hold hold(m_lock);
    if (++m_references == 1) {
        m_self = shared_from_this();
    }
    return static_cast<ULONG>(m_references);
}

ULONG ShellWindowsObject::Release() noexcept {
    std::shared_ptr<ShellWindowsObject> last;
    const Hold hold(m_lock);
    const LONG left = --m_references;
    if (left == 0) {
        last = std::move(m_self);
    }
    return static_cast<ULONG>(left);
}

ComPtr<ITypeInfo> ShellWindowsObject::Description() {
    ComPtr<ITypeLib> library;
    ComPtr<ITypeInfo> info;
    if (SUCCEEDED(LoadRegTypeLib(kBrowserLibrary, 1, 1, LOCALE_NEUTRAL, library.Put()))) {
        library->GetTypeInfoOfGuid(IID_IShellWindows, info.Put());
    }
    return info;
}

HRESULT ShellWindowsObject::GetTypeInfoCount(UINT* count) noexcept {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 1;
    return S_OK;
}

HRESULT ShellWindowsObject::GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept {
    if (info == nullptr) {
        return E_POINTER;
    }
    *info = index == 0 ? Description().Detach() : nullptr;
    return *info != nullptr ? S_OK : DISP_E_BADINDEX;
}

HRESULT ShellWindowsObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept {
    const ComPtr<ITypeInfo> info = Description();
    return info ? DispGetIDsOfNames(info.Get(), names, count, ids) : E_NOTIMPL;
}

HRESULT ShellWindowsObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept {
    const ComPtr<ITypeInfo> info = Description();
    return info ? DispInvoke(static_cast<IShellWindows*>(this), info.Get(), id, flags, parameters, result,
                             exception, badArgument)
                : E_NOTIMPL;
}

HRESULT ShellWindowsObject::EnumConnectionPoints(IEnumConnectionPoints** points) noexcept {
    if (points != nullptr) {
        *points = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT ShellWindowsObject::FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept {
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

HRESULT ShellWindowsObject::get_Count(LONG* count) noexcept {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = Size();
    return S_OK;
}

HRESULT ShellWindowsObject::Item(VARIANT index, IDispatch** folder) noexcept {
    if (folder == nullptr) {
        return E_POINTER;
    }
    *folder = nullptr;
    Variant number;
    if (FAILED(VariantChangeType(&number, &index, 0, VT_I4))) {
        return E_INVALIDARG;
    }
    const Hold hold(m_lock);
    if (number.lVal < 0 || static_cast<std::size_t>(number.lVal) >= m_entries.size()) {
        return S_FALSE;
    }
    *folder = m_entries[static_cast<std::size_t>(number.lVal)].Object().Detach();
    return S_OK;
}

HRESULT ShellWindowsObject::_NewEnum(IUnknown** enumerator) noexcept {
    if (enumerator == nullptr) {
        return E_POINTER;
    }
    *enumerator = nullptr;
    Task before;
    {
        const Hold hold(m_lock);
        ++m_enumerations;
        if (m_beforeTimes > 0) {
            --m_beforeTimes;
            before = m_before;
        }
    }
    if (before) {
        before();
    }
    std::vector<ComPtr<IDispatch>> objects;
    {
        const Hold hold(m_lock);
        if (m_failures != 0) {
            m_failures -= m_failures > 0 ? 1 : 0;
            return m_failure;
        }
        for (const Entry& entry : m_entries) {
            objects.push_back(entry.Object());
        }
    }
    *enumerator = ComPtr<IUnknown>(std::make_unique<Enumerator>(std::move(objects), 0).release()).Detach();
    return S_OK;
}

HRESULT ShellWindowsObject::Register(IDispatch* object, LONG window, int, LONG* cookie) noexcept {
    if (object == nullptr || cookie == nullptr) {
        return E_POINTER;
    }
    *cookie = AddForeign(HandOut(ComPtr<IDispatch>(object)));
    Registered registered;
    {
        const Hold hold(m_lock);
        registered = m_registered;
    }
    if (registered) {
        DWORD process = 0;
        GetWindowThreadProcessId(reinterpret_cast<HWND>(static_cast<LONG_PTR>(window)), &process);
        registered(process, ComPtr<IDispatch>(object), *cookie);
    }
    return S_OK;
}

HRESULT ShellWindowsObject::Revoke(LONG cookie) noexcept {
    if (!Remove(cookie)) {
        return S_FALSE;
    }
    Revoked revoked;
    {
        const Hold hold(m_lock);
        revoked = m_revoked;
    }
    if (revoked) {
        revoked(cookie);
    }
    return S_OK;
}

ServedClass::ServedClass(const CLSID& id, std::shared_ptr<ShellWindowsObject> object) {
    const ComPtr<IClassFactory> factory(std::make_unique<Factory>(std::move(object)).release());
    if (FAILED(CoRegisterClassObject(id, factory.Get(), CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                     &m_registration))) {
        throw std::runtime_error("the window list cannot be served");
    }
}

ServedClass::~ServedClass() {
    CoRevokeClassObject(m_registration);
}

void PrepareRegistry() {
    if (GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr) {
        throw std::runtime_error(
            "the stand-in desktop is for Wine only: it takes the place of the system's window list");
    }
    WriteKey(L"CLSID\\{6B1F4C52-8E0D-4C7A-9C33-5D0A7E21B901}", L"Stand-in ShellWindows");
    WriteKey(L"CLSID\\{9BA05972-F6A8-11CF-A442-00A0C90A8F39}\\TreatAs",
             L"{6B1F4C52-8E0D-4C7A-9C33-5D0A7E21B901}");
    // With the stub in place, clients of this process would get it instead of us.
    RegDeleteKeyW(HKEY_LOCAL_MACHINE,
                  L"Software\\Classes\\CLSID\\{9BA05972-F6A8-11CF-A442-00A0C90A8F39}\\InprocServer32");
    // The list's events travel as automation calls.
    WriteKey(L"Interface\\{FE4106E0-399A-11D0-A48C-00A0C90A8F39}\\ProxyStubClsid32",
             L"{00020420-0000-0000-C000-000000000046}");
}

}  // namespace kestrelguard::desktop
