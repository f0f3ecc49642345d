#pragma once

#include "desktop/BrowserObject.h"

namespace kestrelguard::desktop {

/// The class id under which the stand-in's window list is served. The system's own class id leads here.
inline constexpr CLSID kStandInShellWindows = {
    0x6b1f4c52, 0x8e0d, 0x4c7a, {0x9c, 0x33, 0x5d, 0x0a, 0x7e, 0x21, 0xb9, 0x01}};

/// The list of shell windows, one for the whole desktop, usable from any thread.
class ShellWindowsObject final : public IShellWindows,
                                 public IConnectionPointContainer,
                                 public std::enable_shared_from_this<ShellWindowsObject> {
 public:
    static std::shared_ptr<ShellWindowsObject> Create();
    virtual ~ShellWindowsObject();

    ConnectionPoint& Events() noexcept { return m_events; }
    LONG OutsideReferences() const noexcept { return m_references; }

    /// Appends a window of this process; its cookie.
    LONG Add(std::shared_ptr<BrowserObject> browser);
    /// Appends whatever object; null and objects that are no browsers included. Its cookie.
    LONG AddForeign(ComPtr<IDispatch> object);
    /// Takes a window out. False when there is none of this cookie.
    bool Remove(LONG cookie);
    int Size() const;

    /// How often the list was enumerated.
    int Enumerations() const;
    /// Makes the next `times` enumerations fail; -1 means all of them.
    void FailEnumeration(HRESULT hr, int times);
    /// Runs before the next `times` enumerations are answered, on the thread of the call.
    void BeforeEnumeration(Task task, int times);
    /// Called for a window that another process registers or revokes: the process, the window, the cookie.
    using Registered = std::function<void(DWORD process, ComPtr<IDispatch> object, LONG cookie)>;
    using Revoked = std::function<void(LONG cookie)>;
    void OnForeign(Registered registered, Revoked revoked);
    /// Disconnects all clients and drops the windows.
    void End();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception,
                                     UINT* badArgument) noexcept override;

    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** points) noexcept override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept override;

    HRESULT STDMETHODCALLTYPE get_Count(LONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE Item(VARIANT index, IDispatch** folder) noexcept override;
    HRESULT STDMETHODCALLTYPE _NewEnum(IUnknown** enumerator) noexcept override;
    HRESULT STDMETHODCALLTYPE Register(IDispatch* object, LONG window, int type,
                                       LONG* cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE RegisterPending(LONG, VARIANT*, VARIANT*, int, LONG*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Revoke(LONG cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE OnNavigate(LONG, VARIANT*) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnActivated(LONG, VARIANT_BOOL) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FindWindowSW(VARIANT*, VARIANT*, int, LONG*, int,
                                           IDispatch**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE OnCreated(LONG, IUnknown*) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ProcessAttachDetach(VARIANT_BOOL) noexcept override { return S_OK; }

 private:
    struct Entry {
        LONG cookie = 0;
        std::shared_ptr<BrowserObject> browser;  // a window of this process, or
        ComPtr<IDispatch> foreign;               // somebody else's object

        ComPtr<IDispatch> Object() const {
            return browser ? ComPtr<IDispatch>(browser->Dispatch()) : foreign;
        }
    };

    ShellWindowsObject();
    LONG Append(Entry entry);
    static ComPtr<ITypeInfo> Description();

    ConnectionPoint m_events;
    std::atomic<LONG> m_references{0};
    mutable Lock m_lock;
    std::shared_ptr<ShellWindowsObject> m_self;
    std::vector<Entry> m_entries;
    LONG m_nextCookie = 1;
    int m_enumerations = 0;
    HRESULT m_failure = S_OK;
    int m_failures = 0;
    Task m_before;
    int m_beforeTimes = 0;
    Registered m_registered;
    Revoked m_revoked;
};

/// Offers one object as a COM class of this process for as long as it lives.
class ServedClass {
 public:
    /// Throws std::runtime_error when the class cannot be registered.
    ServedClass(const CLSID& id, std::shared_ptr<ShellWindowsObject> object);
    ~ServedClass();
    ServedClass(const ServedClass&) = delete;
    ServedClass& operator=(const ServedClass&) = delete;

 private:
    DWORD m_registration = 0;
};

/// Writes what makes the system's ShellWindows lead to the stand-in: only under Wine; throws
/// std::runtime_error elsewhere, where a real desktop would be damaged.
void PrepareRegistry();

}  // namespace kestrelguard::desktop
