#pragma once

#include "desktop/AutomationObject.h"
#include "desktop/BrowserObject.h"

namespace kestrelguard::desktop {

/// The list of shell windows, one for the whole desktop, usable from any thread.
class ShellWindowsObject final : public AutomationObject<ShellWindowsObject, IShellWindows> {
 public:
    static std::shared_ptr<ShellWindowsObject> Create();
    ~ShellWindowsObject() override;

    /// Appends a window of this process; its cookie.
    LONG Add(std::shared_ptr<BrowserObject> browser);
    /// Appends whatever object; null and objects that are no browsers included. Its cookie.
    LONG AddForeign(ComPtr<IDispatch> object);
    /// Takes a window out. False when there is none of this cookie.
    bool Remove(LONG cookie);
    int Size() const;

    /// Calls of `_NewEnum`.
    Watch& Enumerations() noexcept { return m_enumerations; }
    const Watch& Enumerations() const noexcept { return m_enumerations; }
    /// Called for a window that another process registers or revokes: the process, the window, the cookie.
    using Registered = std::function<void(DWORD process, ComPtr<IDispatch> object, LONG cookie)>;
    using Revoked = std::function<void(LONG cookie)>;
    void OnForeign(Registered registered, Revoked revoked);
    /// Disconnects all clients and drops the windows.
    void End();

    /// Cuts all clients off; whoever asks for the list anew gets it.
    void Disconnect() noexcept override;

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
    HRESULT MayConnect() noexcept override { return m_connect.Enter(*this); }

    mutable Lock m_lock;
    std::vector<Entry> m_entries;
    LONG m_nextCookie = 1;
    Watch m_connect{"List.Connect"};
    Watch m_count{"List.Count"};
    Watch m_item{"List.Item"};
    Watch m_enumerations{"List._NewEnum"};
    Registered m_registered;
    Revoked m_revoked;
};

}  // namespace kestrelguard::desktop
