#pragma once

#include <ocidl.h>

#include <map>

#include "desktop/Events.h"

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
class ConnectionPoint final : public IConnectionPoint {
 public:
    /// `owner` outlives this; `source` is the dispinterface whose events are fired.
    ConnectionPoint(IConnectionPointContainer& owner, const IID& source) noexcept
        : m_owner(owner), m_source(source) {}

    SinkCounts Counts() const;
    const IID& Source() const noexcept { return m_source; }

    /// Calls every sink in turn, on the calling thread. With `withException` the sinks get a place to
    /// describe their failure, which real browsers usually do not give.
    EventResult Deliver(const EventCall& call, bool withException = false);
    /// Delivers on a thread of its own. `keepAlive` holds the owner until then.
    PendingEvent Start(EventCall call, std::shared_ptr<void> keepAlive, bool withException = false);

    /// Runs on the caller's side of the next `times` Advise calls before they are answered.
    void BeforeAdvise(Task task, int times);
    /// Makes the next `times` Advise calls fail; -1 means all of them.
    void RefuseAdvise(HRESULT hr, int times);
    /// Forgets all sinks without a word.
    void DropSinks();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
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
    const IID& m_source;
    mutable Lock m_lock;
    std::map<DWORD, ComPtr<IDispatch>> m_sinks;
    DWORD m_nextCookie = 1;
    SinkCounts m_counts;
    Task m_beforeAdvise;
    int m_beforeAdviseTimes = 0;
    HRESULT m_refusal = S_OK;
    int m_refusals = 0;
};

}  // namespace kestrelguard::desktop
