#pragma once

#include <ocidl.h>

#include <map>

#include "desktop/ComObject.h"
#include "desktop/Events.h"
#include "desktop/Watch.h"

namespace kestrelguard::desktop {

/// What a connection point has seen of its sinks.
struct SinkCounts {
    int connected = 0;  ///< sinks advised now
    int advises = 0;    ///< Advise calls that succeeded, ever
    int unadvises = 0;  ///< Unadvise calls that succeeded, ever
    int refused = 0;    ///< Advise calls that failed, ever
    int lost = 0;       ///< sinks dropped because their process was gone
};

/// One source of events: keeps the sinks and delivers events to them. It is part of the object that owns
/// it and counts references there.
class ConnectionPoint final : public Interfaces<IConnectionPoint> {
 public:
    /// `owner`, which is `callee` too, outlives this; `source` is the dispinterface whose events are fired.
    ConnectionPoint(IConnectionPointContainer& owner, Callee& callee, const IID& source) noexcept
        : m_owner(owner), m_callee(callee), m_source(source) {}

    SinkCounts Counts() const;
    const IID& Source() const noexcept { return m_source; }

    /// Calls every sink in turn, on the calling thread. With `withException` the sinks get a place to
    /// describe their failure, which real browsers usually do not give.
    EventResult Deliver(const EventCall& call, bool withException = false);
    /// Delivers on a thread of its own. `keepAlive` holds the owner until then.
    PendingEvent Start(EventCall call, std::shared_ptr<void> keepAlive, bool withException = false);

    /// Runs on the caller's side of the next `times` Advise calls before they are answered.
    void BeforeAdvise(Task task, int times) { m_advise.Before(std::move(task), times); }
    /// The same for Unadvise calls.
    void BeforeUnadvise(Task task, int times) { m_unadvise.Before(std::move(task), times); }
    /// Makes the next `times` Advise calls fail; -1 means all of them.
    void RefuseAdvise(HRESULT hr, int times) { m_advise.Fail(hr, times); }
    /// Forgets all sinks without a word.
    void DropSinks();

    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return m_owner.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return m_owner.Release(); }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) noexcept override;
    HRESULT STDMETHODCALLTYPE
    GetConnectionPointContainer(IConnectionPointContainer** container) noexcept override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) noexcept override;
    /// Not offered: E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** connections) noexcept override;

 private:
    IConnectionPointContainer& m_owner;
    Callee& m_callee;
    const IID& m_source;
    mutable Lock m_lock;
    std::map<DWORD, ComPtr<IDispatch>> m_sinks;
    DWORD m_nextCookie = 1;
    SinkCounts m_counts;
    Watch m_advise{"Advise"};
    Watch m_unadvise{"Unadvise"};
};

}  // namespace kestrelguard::desktop
