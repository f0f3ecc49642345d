#pragma once

#include <windows.h>

#include <oaidl.h>
#include <oleauto.h>

#include <array>
#include <cstddef>
#include <new>
#include <span>
#include <tuple>
#include <utility>

#include "runtime/Edge.h"
#include "runtime/win32/Com.h"
#include "runtime/win32/ComError.h"

namespace kestrelguard {

/// The value at the end of a chain of references to VARIANTs; null for a chain with a null or without an end.
inline VARIANT* Innermost(VARIANT& delivered) noexcept {
    constexpr int kDeepest = 4;
    VARIANT* value = &delivered;
    for (int depth = 0; depth < kDeepest; ++depth) {
        if ((value->vt & VT_BYREF) == 0) {
            return value;
        }
        if (value->byref == nullptr) {
            return nullptr;
        }
        if (value->vt != (VT_BYREF | VT_VARIANT)) {
            return value;
        }
        value = value->pvarVal;
    }
    return nullptr;
}

/// One argument of an event, in the shape that its handler takes. `Take` answers false when the delivered
/// value has no such shape. By-reference shapes are the delivered references themselves.
template <class Type>
class EventArgument;

/// A VARIANT by reference; one that was delivered by value is taken as a reference to the delivered value.
template <>
class EventArgument<VARIANT*> {
 public:
    bool Take(VARIANT& delivered) noexcept {
        if (Innermost(delivered) == nullptr) {
            return false;
        }
        m_value = delivered.vt == (VT_BYREF | VT_VARIANT) ? delivered.pvarVal : &delivered;
        return true;
    }
    VARIANT* Value() const noexcept { return m_value; }

 private:
    VARIANT* m_value = nullptr;
};

/// A boolean by reference, or the boolean in a VARIANT that was delivered by reference.
template <>
class EventArgument<VARIANT_BOOL*> {
 public:
    bool Take(VARIANT& delivered) noexcept {
        VARIANT* const value = Innermost(delivered);
        if (value == nullptr) {
            return false;
        }
        if (value->vt == (VT_BYREF | VT_BOOL)) {
            m_value = value->pboolVal;
        } else if (value->vt == VT_BOOL && value != &delivered) {
            m_value = &value->boolVal;
        }
        return m_value != nullptr;
    }
    VARIANT_BOOL* Value() const noexcept { return m_value; }

 private:
    VARIANT_BOOL* m_value = nullptr;
};

/// An object by reference, or the object in a VARIANT that was delivered by reference.
template <>
class EventArgument<IDispatch**> {
 public:
    bool Take(VARIANT& delivered) noexcept {
        VARIANT* const value = Innermost(delivered);
        if (value == nullptr) {
            return false;
        }
        if (value->vt == (VT_BYREF | VT_DISPATCH)) {
            m_value = value->ppdispVal;
        } else if (value->vt == VT_DISPATCH && value != &delivered) {
            m_value = &value->pdispVal;
        }
        return m_value != nullptr;
    }
    IDispatch** Value() const noexcept { return m_value; }

 private:
    IDispatch** m_value = nullptr;
};

/// What the by-value shapes share: a value of another type is converted where it can be without a call to
/// anybody.
class ConvertedArgument {
 protected:
    VARIANT* Convert(VARIANT& delivered, VARTYPE type) noexcept {
        VARIANT* const value = Innermost(delivered);
        if (value == nullptr || value->vt == type) {
            return value;
        }
        const HRESULT converted =
            VariantChangeTypeEx(m_converted.Put(), value, LOCALE_SYSTEM_DEFAULT, VARIANT_NOVALUEPROP, type);
        return SUCCEEDED(converted) ? &m_converted.Get() : nullptr;
    }

 private:
    Variant m_converted;
};

template <>
class EventArgument<IDispatch*> : private ConvertedArgument {
 public:
    bool Take(VARIANT& delivered) noexcept {
        const VARIANT* const value = Convert(delivered, VT_DISPATCH);
        m_value = value == nullptr ? nullptr : value->pdispVal;
        return value != nullptr;
    }
    IDispatch* Value() const noexcept { return m_value; }

 private:
    IDispatch* m_value = nullptr;
};

template <>
class EventArgument<VARIANT_BOOL> : private ConvertedArgument {
 public:
    bool Take(VARIANT& delivered) noexcept {
        const VARIANT* const value = Convert(delivered, VT_BOOL);
        m_value = value == nullptr ? VARIANT_FALSE : value->boolVal;
        return value != nullptr;
    }
    VARIANT_BOOL Value() const noexcept { return m_value; }

 private:
    VARIANT_BOOL m_value = VARIANT_FALSE;
};

template <>
class EventArgument<LONG> : private ConvertedArgument {
 public:
    bool Take(VARIANT& delivered) noexcept {
        const VARIANT* const value = Convert(delivered, VT_I4);
        m_value = value == nullptr ? 0 : value->lVal;
        return value != nullptr;
    }
    LONG Value() const noexcept { return m_value; }

 private:
    LONG m_value = 0;
};

/// A text: a copy of the delivered one, of its full length.
template <>
class EventArgument<BSTR> : private ConvertedArgument {
 public:
    bool Take(VARIANT& delivered) {
        const VARIANT* const value = Convert(delivered, VT_BSTR);
        if (value == nullptr) {
            return false;
        }
        m_text = Bstr(std::wstring_view(value->bstrVal == nullptr ? L"" : value->bstrVal,
                                        SysStringLen(value->bstrVal)));
        return true;
    }
    BSTR Value() const noexcept { return m_text.Get(); }

 private:
    Bstr m_text;
};

/// One event that a sink listens to: its dispatch id, and how it reaches its handler.
template <class Target>
struct EventRow {
    DISPID id;
    /// Arguments that some senders put before those of the handler; passed over.
    UINT leading;
    HRESULT (*deliver)(Target& target, DISPPARAMS& arguments, UINT leading, UINT* badArgument);
};

namespace detail {

template <auto Handler, class Target, class... Arguments, std::size_t... Indices>
HRESULT Deliver(Target& target, DISPPARAMS& delivered, UINT leading, UINT* badArgument,
                std::index_sequence<Indices...>) {
    constexpr UINT kCount = sizeof...(Arguments);
    if (delivered.cNamedArgs != 0) {
        return DISP_E_NONAMEDARGS;
    }
    if (delivered.cArgs < kCount || delivered.cArgs > kCount + leading ||
        (delivered.cArgs > 0 && delivered.rgvarg == nullptr)) {
        return DISP_E_BADPARAMCOUNT;
    }
    std::tuple<EventArgument<Arguments>...> arguments;
    // The last argument comes first.
    UINT bad = 0;
    const bool taken = ((bad = kCount - 1 - static_cast<UINT>(Indices),
                         std::get<Indices>(arguments).Take(delivered.rgvarg[bad])) &&
                        ...);
    if (!taken) {
        if (badArgument != nullptr) {
            *badArgument = bad;
        }
        return DISP_E_TYPEMISMATCH;
    }
    (target.*Handler)(std::get<Indices>(arguments).Value()...);
    return S_OK;
}

template <class Target, class... Arguments>
struct HandlerShape {
    template <auto Handler>
    static HRESULT Take(Target& target, DISPPARAMS& delivered, UINT leading, UINT* badArgument) {
        return Deliver<Handler, Target, Arguments...>(target, delivered, leading, badArgument,
                                                      std::index_sequence_for<Arguments...>());
    }
};

template <class Target, class... Arguments>
constexpr HandlerShape<Target, Arguments...> ShapeOf(void (Target::*)(Arguments...)) {
    return {};
}

}  // namespace detail

/// The row of a handler; the argument types are those of the handler itself.
template <class Target, auto Handler>
constexpr EventRow<Target> Row(DISPID id, UINT leading = 0) {
    return {id, leading, &decltype(detail::ShapeOf(Handler))::template Take<Handler>};
}

/// The sink of one event interface: hands the events of a table to the handlers of its target, which is a COM
/// object of ours and outlives each of its handlers' calls. What a handler throws becomes the answer.
/// Events that are not in the table are answered and ignored; so is everything after Detach.
template <class Target>
class EventSink final : public DispatchObject<EventSink<Target>, IDispatch> {
 public:
    EventSink(Target& target, REFIID events, std::span<const EventRow<Target>> rows)
        : m_target(&target), m_events(events), m_rows(rows) {}

    /// The target is going, or listens no more.
    void Detach() noexcept { m_target = nullptr; }

    void* Find(REFIID iid) noexcept {
        const bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == m_events;
        return known ? static_cast<IDispatch*>(this) : nullptr;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result,
                                     EXCEPINFO* exception, UINT* badArgument) noexcept override {
        if (result != nullptr) {
            VariantInit(result);
        }
        const ComPtr<Target> target(m_target);
        if (!target) {
            return S_OK;
        }
        const ComPtr<EventSink> self(this);
        for (const EventRow<Target>& row : m_rows) {
            if (row.id == id) {
                return Deliver(row, *target, arguments, exception, badArgument);
            }
        }
        return S_OK;
    }

 private:
    static HRESULT Deliver(const EventRow<Target>& row, Target& target, DISPPARAMS* arguments,
                           EXCEPINFO* exception, UINT* badArgument) noexcept {
        HRESULT answer = E_FAIL;
        AtEdge(
            [&] {
                DISPPARAMS none{};
                answer =
                    row.deliver(target, arguments == nullptr ? none : *arguments, row.leading, badArgument);
            },
            [&](const RunTimeError& error) {
                answer = HResultOf(error);
                if (exception != nullptr) {
                    FillExceptionInfo(error, *exception);
                }
            });
        return answer;
    }

    Target* m_target;
    const GUID m_events;
    const std::span<const EventRow<Target>> m_rows;
};

}  // namespace kestrelguard
