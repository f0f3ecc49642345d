#include "desktop/HandOut.h"

#include <cstring>
#include <deque>
#include <vector>

#include "desktop/ComObject.h"
#include "desktop/HostCommands.h"
#include "desktop/Threads.h"

namespace kestrelguard::desktop {

namespace {

using Reference = std::vector<BYTE>;

constexpr int kStock = 2000;

/// Passes calls on to the browser, and marshals as one of the references in stock.
class StockedBrowser final : public ComObject<IDispatch, IMarshal> {
 public:
    StockedBrowser(ComPtr<IDispatch> browser, std::deque<Reference> stock)
        : m_browser(std::move(browser)), m_stock(std::move(stock)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        const HRESULT hr = ComObject::QueryInterface(iid, object);
        return hr == E_NOINTERFACE ? m_browser->QueryInterface(iid, object) : hr;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        return m_browser->GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept override {
        return m_browser->GetTypeInfo(index, locale, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) noexcept override {
        return m_browser->GetIDsOfNames(iid, names, count, locale, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception,
                                     UINT* badArgument) noexcept override {
        return m_browser->Invoke(id, iid, locale, flags, parameters, result, exception, badArgument);
    }

    HRESULT STDMETHODCALLTYPE GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD,
                                                CLSID* id) noexcept override {
        *id = CLSID_StdMarshal;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD,
                                                DWORD* size) noexcept override {
        *size = 1024;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE MarshalInterface(IStream* stream, REFIID iid, void* object, DWORD context,
                                               void* contextData, DWORD flags) noexcept override {
        Reference reference;
        if (iid == IID_IDispatch && flags == MSHLFLAGS_NORMAL) {
            const Hold hold(m_lock);
            if (!m_stock.empty()) {
                reference = std::move(m_stock.front());
                m_stock.pop_front();
            }
        }
        if (!reference.empty()) {
            return stream->Write(reference.data(), static_cast<ULONG>(reference.size()), nullptr);
        }
        const ComPtr<IMarshal> proxy = m_browser.As<IMarshal>();
        return proxy ? proxy->MarshalInterface(stream, iid, object, context, contextData, flags) : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE UnmarshalInterface(IStream*, REFIID, void**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ReleaseMarshalData(IStream*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DisconnectObject(DWORD) noexcept override { return S_OK; }

 private:
    const ComPtr<IDispatch> m_browser;
    Lock m_lock;
    std::deque<Reference> m_stock;
};

/// One reference as bytes; empty when there is no memory.
Reference Pack(IDispatch* object) {
    ComPtr<IStream> stream;
    HGLOBAL memory = nullptr;
    STATSTG size{};
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put())) ||
        FAILED(CoMarshalInterface(stream.Get(), IID_IDispatch, object, MSHCTX_LOCAL, nullptr,
                                  MSHLFLAGS_NORMAL)) ||
        FAILED(GetHGlobalFromStream(stream.Get(), &memory)) || FAILED(stream->Stat(&size, STATFLAG_NONAME))) {
        return {};
    }
    const auto* const bytes = static_cast<const BYTE*>(GlobalLock(memory));
    Reference reference(bytes, bytes + size.cbSize.QuadPart);
    GlobalUnlock(memory);
    return reference;
}

}  // namespace

ComPtr<IDispatch> HandOut(const ComPtr<IDispatch>& browser) {
    const ComPtr<IWebBrowser2> asked = browser.As<IWebBrowser2>();
    Variant answer;
    if (!asked || FAILED(AskHost(*asked.Get(), L"references " + std::to_wstring(kStock), answer)) ||
        answer.vt != (VT_ARRAY | VT_UI1)) {
        return browser;
    }
    std::deque<Reference> stock;
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(answer.parray, &data))) {
        return browser;
    }
    const auto* const bytes = static_cast<const BYTE*>(data);
    for (std::size_t at = 0; at < answer.parray->rgsabound[0].cElements;) {
        DWORD size = 0;
        std::memcpy(&size, bytes + at, sizeof(size));
        at += sizeof(size);
        stock.emplace_back(bytes + at, bytes + at + size);
        at += size;
    }
    SafeArrayUnaccessData(answer.parray);
    return desktop::MakeCom<StockedBrowser>(browser, std::move(stock)).As<IDispatch>();
}

Variant PackReferences(IDispatch* object, int count) {
    std::vector<BYTE> all;
    for (int i = 0; i < count; ++i) {
        const Reference reference = Pack(object);
        const auto size = static_cast<DWORD>(reference.size());
        if (size == 0) {
            return {};
        }
        const auto* const head = reinterpret_cast<const BYTE*>(&size);
        all.insert(all.end(), head, head + sizeof(size));
        all.insert(all.end(), reference.begin(), reference.end());
    }
    return Variant::Bytes(std::string_view(reinterpret_cast<const char*>(all.data()), all.size()));
}

}  // namespace kestrelguard::desktop
