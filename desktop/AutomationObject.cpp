#include "desktop/AutomationObject.h"

namespace kestrelguard::desktop {

ComPtr<ITypeInfo> DescriptionOf(REFIID iid) {
    // {EAB22AC0-30C1-11CF-A7EB-0000C05BAE0B} 1.1
    constexpr GUID kLibrary = {0xeab22ac0, 0x30c1, 0x11cf, {0xa7, 0xeb, 0x00, 0x00, 0xc0, 0x5b, 0xae, 0x0b}};
    ComPtr<ITypeLib> library;
    ComPtr<ITypeInfo> info;
    if (SUCCEEDED(LoadRegTypeLib(kLibrary, 1, 1, LOCALE_NEUTRAL, library.Put()))) {
        library->GetTypeInfoOfGuid(iid, info.Put());
    }
    return info;
}

}  // namespace kestrelguard::desktop
