#include "desktop/KeptInterfaces.h"

#include <exdisp.h>
#include <ocidl.h>
#include <servprov.h>

#include <algorithm>
#include <array>

#include "desktop/ComObject.h"

namespace kestrelguard::desktop {

namespace {

const std::array kInterfaces = {IID_IDispatch,        IID_IEnumVARIANT,      IID_IConnectionPointContainer,
                                IID_IConnectionPoint, IID_IWebBrowser2,      IID_IShellWindows,
                                IID_IClassFactory,    IID_IProvideClassInfo, IID_IUnknown,
                                IID_IServiceProvider};  // Wine's own way to a class object

/// Says that it has each of the interfaces, for nobody to call.
class Placeholder final : public ComObject<IUnknown> {
 public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        const bool has = iid == IID_IUnknown || std::count(kInterfaces.begin(), kInterfaces.end(), iid) > 0;
        *object = has ? this : nullptr;
        if (!has) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
};

}  // namespace

KeptInterfaces::KeptInterfaces() {
    const ComPtr<Placeholder> placeholder = MakeCom<Placeholder>();
    for (const IID& iid : kInterfaces) {
        ComPtr<IStream> reference;
        if (SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, reference.Put())) &&
            SUCCEEDED(CoMarshalInterface(reference.Get(), iid, placeholder.Get(), MSHCTX_LOCAL, nullptr,
                                         MSHLFLAGS_TABLESTRONG))) {
            m_references.push_back(std::move(reference));
        }
    }
}

KeptInterfaces::~KeptInterfaces() {
    for (const auto& reference : m_references) {
        if (SUCCEEDED(reference->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr))) {
            CoReleaseMarshalData(reference.Get());
        }
    }
}

}  // namespace kestrelguard::desktop
