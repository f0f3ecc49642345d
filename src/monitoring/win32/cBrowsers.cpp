#include "monitoring/win32/cBrowsers.h"

#include <algorithm>
#include <cwchar>
#include <limits>
#include <utility>

#include "runtime/Edge.h"

namespace kestrelguard {

namespace {

struct Member {
    const wchar_t* name;
    DISPID id;
};

constexpr DISPID kNewEnum = -4;
constexpr DISPID kItem = DISPID_VALUE;
constexpr DISPID kCount = 1;
constexpr Member kMembers[] = {
    {L"NewEnum", kNewEnum}, {L"_NewEnum", kNewEnum}, {L"Item", kItem}, {L"Count", kCount}};
static_assert(kNewEnum == DISPID_NEWENUM);

/// Walks a list that it shares with the collection.
class Enumerator final : public ComObject<Enumerator, IEnumVARIANT> {
 public:
    Enumerator(std::shared_ptr<const cBrowsers::Entries> entries, std::size_t next)
        : m_entries(std::move(entries)), m_next(next) {}

    void* Find(REFIID iid) noexcept {
        return iid == IID_IUnknown || iid == IID_IEnumVARIANT ? static_cast<IEnumVARIANT*>(this) : nullptr;
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* values, ULONG* fetched) noexcept override {
        if (values == nullptr || (fetched == nullptr && wanted != 1)) {
            return E_POINTER;
        }
        ULONG given = 0;
        for (; given < wanted && m_next < m_entries->size(); ++given, ++m_next) {
            VariantInit(&values[given]);
            values[given].vt = VT_DISPATCH;
            values[given].pdispVal = ComPtr<IWebBrowser2>((*m_entries)[m_next]).Detach();
        }
        if (fetched != nullptr) {
            *fetched = given;
        }
        return given == wanted ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override {
        const std::size_t skipped = std::min<std::size_t>(count, m_entries->size() - m_next);
        m_next += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Reset() noexcept override {
        m_next = 0;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** clone) noexcept override {
        if (clone == nullptr) {
            return E_POINTER;
        }
        *clone = nullptr;
        return AtComMethod([&] { *clone = MakeCom<Enumerator>(m_entries, m_next).Detach(); });
    }

 private:
    const std::shared_ptr<const cBrowsers::Entries> m_entries;
    std::size_t m_next;
};

}  // namespace

ComPtr<IEnumVARIANT> cBrowsers::NewEnum() const {
    return ComPtr<IEnumVARIANT>::Attach(MakeCom<Enumerator>(m_entries, 0U).Detach());
}

ComPtr<IWebBrowser2> cBrowsers::Item(std::int32_t index) const {
    if (index < 1 || static_cast<std::size_t>(index) > m_entries->size()) {
        return nullptr;
    }
    return (*m_entries)[static_cast<std::size_t>(index) - 1];
}

std::int16_t cBrowsers::Count() const {
    const std::size_t count = m_entries->size();
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
        throw RunTimeError(RunTimeError::kOverflow);
    }
    return static_cast<std::int16_t>(count);
}

void cBrowsers::Clear() {
    // Letting browsers go may let calls in: they find the new list.
    const std::shared_ptr<Entries> old = std::exchange(m_entries, std::make_shared<Entries>());
}

HRESULT cBrowsers::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept {
    if (names == nullptr || ids == nullptr) {
        return E_POINTER;
    }
    HRESULT answer = S_OK;
    for (UINT i = 0; i < count; ++i) {
        ids[i] = DISPID_UNKNOWN;
        // Only the first is a member's name, and no member has named arguments.
        for (const Member& member : kMembers) {
            if (i == 0 && _wcsicmp(names[i], member.name) == 0) {
                ids[i] = member.id;
            }
        }
        if (ids[i] == DISPID_UNKNOWN) {
            answer = DISP_E_UNKNOWNNAME;
        }
    }
    return answer;
}

HRESULT cBrowsers::Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* arguments, VARIANT* result,
                          EXCEPINFO* exception, UINT* badArgument) noexcept {
    const UINT given = arguments == nullptr ? 0 : arguments->cArgs;
    const bool known = id == kNewEnum || id == kItem || id == kCount;
    if (!known || (kind & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) == 0) {
        return DISP_E_MEMBERNOTFOUND;
    }
    if (given != (id == kItem ? 1U : 0U)) {
        return DISP_E_BADPARAMCOUNT;
    }
    HRESULT answer = E_FAIL;
    AtEdge(
        [&] {
            Variant value;
            if (id == kNewEnum) {
                value.Get().punkVal = NewEnum().Detach();
                value.Get().vt = VT_UNKNOWN;
            } else if (id == kCount) {
                value.Get().iVal = Count();
                value.Get().vt = VT_I2;
            } else {
                Variant index;
                if (arguments->rgvarg == nullptr ||
                    FAILED(VariantChangeType(index.Put(), arguments->rgvarg, VARIANT_NOVALUEPROP, VT_I4))) {
                    if (badArgument != nullptr) {
                        *badArgument = 0;
                    }
                    answer = DISP_E_TYPEMISMATCH;
                    return;
                }
                value.Get().pdispVal = Item(index.Get().lVal).Detach();
                value.Get().vt = VT_DISPATCH;
            }
            if (result != nullptr) {
                *result = std::exchange(value.Get(), VARIANT{});
            }
            answer = S_OK;
        },
        [&](const RunTimeError& error) {
            answer = HResultOf(error);
            if (exception != nullptr) {
                FillExceptionInfo(error, *exception);
            }
        });
    return answer;
}

}  // namespace kestrelguard
