#include "desktop/ShellWindowsObject.h"

#include <exdispid.h>
#include <olectl.h>

#include <algorithm>
#include <utility>

#include "desktop/HandOut.h"

namespace kestrelguard::desktop {

namespace {

/// Walks a list of objects that was taken when the walk began.
class Enumerator final : public ComObject<IEnumVARIANT>, public Callee {
 public:
    Enumerator(std::vector<ComPtr<IDispatch>> objects, std::size_t position)
        : m_objects(std::move(objects)), m_position(position) {}

    void Disconnect() noexcept override { CoDisconnectObject(static_cast<IEnumVARIANT*>(this), 0); }

    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* values, ULONG* fetched) noexcept override {
        if (values == nullptr || (fetched == nullptr && wanted != 1)) {
            return E_POINTER;
        }
        if (const HRESULT hr = m_next.Enter(*this); FAILED(hr)) {
            return hr;
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
        *clone = desktop::MakeCom<Enumerator>(m_objects, m_position).Detach();
        return S_OK;
    }

 private:
    Lock m_lock;
    Watch m_next{"Enumeration.Next"};
    std::vector<ComPtr<IDispatch>> m_objects;
    std::size_t m_position;
};

}  // namespace

std::shared_ptr<ShellWindowsObject> ShellWindowsObject::Create() {
    return std::shared_ptr<ShellWindowsObject>(new ShellWindowsObject);
}

ShellWindowsObject::ShellWindowsObject() : AutomationObject(DIID_DShellWindowsEvents) {}

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

void ShellWindowsObject::OnForeign(Registered registered, Revoked revoked) {
    const Hold hold(m_lock);
    m_registered = std::move(registered);
    m_revoked = std::move(revoked);
}

void ShellWindowsObject::Disconnect() noexcept {
    CoDisconnectObject(static_cast<IShellWindows*>(this), 0);
    Events().DropSinks();
}

void ShellWindowsObject::End() {
    Disconnect();
    OnForeign({}, {});
    std::vector<Entry> dropped;
    const Hold hold(m_lock);
    dropped.swap(m_entries);
}

HRESULT ShellWindowsObject::get_Count(LONG* count) noexcept {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = Size();
    return m_count.Enter(*this);
}

HRESULT ShellWindowsObject::Item(VARIANT index, IDispatch** folder) noexcept {
    if (folder == nullptr) {
        return E_POINTER;
    }
    *folder = nullptr;
    if (const HRESULT hr = m_item.Enter(*this); FAILED(hr)) {
        return hr;
    }
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
    if (const HRESULT hr = m_enumerations.Enter(*this); FAILED(hr)) {
        return hr;
    }
    std::vector<ComPtr<IDispatch>> objects;
    {
        const Hold hold(m_lock);
        for (const Entry& entry : m_entries) {
            objects.push_back(entry.Object());
        }
    }
    *enumerator = desktop::MakeCom<Enumerator>(std::move(objects), 0).Detach();
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

}  // namespace kestrelguard::desktop
