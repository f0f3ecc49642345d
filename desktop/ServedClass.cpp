#include "desktop/ServedClass.h"

#include <stdexcept>
#include <string>
#include <utility>

#include "desktop/ComObject.h"

namespace kestrelguard::desktop {

namespace {

/// Hands out the one list of windows whenever somebody creates the class.
class Factory final : public ComObject<IClassFactory> {
 public:
    explicit Factory(std::shared_ptr<ShellWindowsObject> object) : m_object(std::move(object)) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) noexcept override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : m_object->QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }

 private:
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

ServedClass::ServedClass(const CLSID& id, std::shared_ptr<ShellWindowsObject> object) {
    const ComPtr<Factory> factory = MakeCom<Factory>(std::move(object));
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
