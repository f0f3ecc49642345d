#include "controls/win32/AccessibleNames.h"

#include <gtest/gtest.h>
#include <objbase.h>
// After objbase.h. With initguid.h the header's ids are constants of this file: no library has them all.
#include <initguid.h>
#include <oleacc.h>

#include <string>
#include <vector>

namespace kestrelguard {
namespace {

constexpr CLSID kService = {0xb5f8350b, 0x0548, 0x48b1, {0xa6, 0xee, 0x88, 0xbd, 0x00, 0xb4, 0xa5, 0xe7}};

/// The system's service, which writes down what it is told; its own class object too. Lives on the stack.
class FakeService final : public IAccPropServices, public IClassFactory {
 public:
    struct Told {
        HWND control;
        DWORD object;
        DWORD child;
        GUID property;
        std::wstring text;
    };
    std::vector<Told> told;

    HRESULT WINAPI QueryInterface(REFIID id, void** object) override {
        if (IsEqualGUID(id, IID_IAccPropServices)) {
            *object = static_cast<IAccPropServices*>(this);
        } else {
            *object = static_cast<IClassFactory*>(this);
        }
        return S_OK;
    }
    ULONG WINAPI AddRef() override { return 2; }
    ULONG WINAPI Release() override { return 1; }
    HRESULT WINAPI CreateInstance(IUnknown*, REFIID id, void** object) override {
        return QueryInterface(id, object);
    }
    HRESULT WINAPI LockServer(WINBOOL) override { return S_OK; }

    HRESULT WINAPI SetHwndPropStr(HWND control, DWORD object, DWORD child, MSAAPROPID property,
                                  LPCWSTR text) override {
        told.push_back({control, object, child, property, text});
        return S_OK;
    }

    HRESULT WINAPI SetPropValue(const BYTE*, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetPropServer(const BYTE*, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                 AnnoScope) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearProps(const BYTE*, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHwndProp(HWND, DWORD, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHwndPropServer(HWND, DWORD, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                     AnnoScope) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearHwndProps(HWND, DWORD, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    HRESULT WINAPI ComposeHwndIdentityString(HWND, DWORD, DWORD, BYTE**, DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI DecomposeHwndIdentityString(const BYTE*, DWORD, HWND*, DWORD*, DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI SetHmenuProp(HMENU, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHmenuPropStr(HMENU, DWORD, MSAAPROPID, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHmenuPropServer(HMENU, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                      AnnoScope) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearHmenuProps(HMENU, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    HRESULT WINAPI ComposeHmenuIdentityString(HMENU, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
    HRESULT WINAPI DecomposeHmenuIdentityString(const BYTE*, DWORD, HMENU*, DWORD*) override {
        return E_NOTIMPL;
    }
};

TEST(AccessibleNames, TellsTheSystemsServiceTheNameOfTheControlItself) {
    ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    {
        FakeService service;
        DWORD registration = 0;
        ASSERT_EQ(S_OK, CoRegisterClassObject(kService, static_cast<IClassFactory*>(&service),
                                              CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration));
        const auto window = reinterpret_cast<HWND>(static_cast<INT_PTR>(0x1234));
        AccessibleNames().Set(window, L"a name");
        CoRevokeClassObject(registration);
        ASSERT_EQ(1U, service.told.size());
        EXPECT_EQ(window, service.told[0].control);
        EXPECT_EQ(static_cast<DWORD>(OBJID_CLIENT), service.told[0].object);
        EXPECT_EQ(0U, service.told[0].child);
        EXPECT_TRUE(IsEqualGUID(PROPID_ACC_NAME, service.told[0].property));
        EXPECT_EQ(L"a name", service.told[0].text);
    }
    CoUninitialize();
}

TEST(AccessibleNames, WithoutTheServiceNothingHappens) {
    // No COM here: the service cannot be had.
    AccessibleNames().Set(nullptr, L"a name");
}

}  // namespace
}  // namespace kestrelguard
