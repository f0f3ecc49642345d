#include "controls/win32/AccessibleNames.h"

#include <objbase.h>
// After objbase.h.
#include <oleacc.h>

namespace kestrelguard {

namespace {

constexpr CLSID kService = {0xb5f8350b, 0x0548, 0x48b1, {0xa6, 0xee, 0x88, 0xbd, 0x00, 0xb4, 0xa5, 0xe7}};
constexpr IID kServiceInterface = {
    0x6e26e776, 0x04f0, 0x495d, {0x80, 0xe4, 0x33, 0x30, 0x35, 0x2e, 0x31, 0x69}};
constexpr GUID kName = {0x608d3df8, 0x8128, 0x4aa7, {0xa4, 0x28, 0xf5, 0x5e, 0x49, 0x26, 0x72, 0x91}};

}  // namespace

AccessibleNames::AccessibleNames() {
    CoCreateInstance(kService, nullptr, CLSCTX_INPROC_SERVER, kServiceInterface,
                     reinterpret_cast<void**>(m_service.Put()));
}

AccessibleNames::~AccessibleNames() = default;

void AccessibleNames::Set(HWND control, const wchar_t* name) const {
    if (m_service) {
        m_service->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, kName, name);
    }
}

}  // namespace kestrelguard
