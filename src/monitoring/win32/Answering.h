#pragma once

#include <windows.h>

#include <exdisp.h>
#include <unknwn.h>

#include <cstdint>
#include <memory>
#include <type_traits>
#include <unordered_map>

#include "monitoring/WatchedDesktop.h"
#include "monitoring/win32/LongCalls.h"
#include "runtime/win32/Com.h"

/// Which windows answer, found out before they are called: a call to a process that hangs never comes back.
namespace kestrelguard {

/// The processes behind the objects of one walk: each is asked once, however many windows it has.
class Servers {
 public:
    /// Whether the process behind an object takes messages in its windows on the screen or, without any, lets
    /// a trial call return. True when the process cannot be told; then a call is the only way.
    bool Answer(IUnknown* object);

 private:
    /// By the part of a reference that names the process and its apartment.
    std::unordered_map<std::uint32_t, bool> m_asked;
};

/// Whether a browser answers, given its identity and, if it is known, its frame window; by the process behind
/// it otherwise. One that does not is not asked again for a second.
bool WindowAnswers(IUnknown* identity, HWND frame);
/// Whether it did not answer just now, or a call to it does not come back.
bool IsSilent(const void* identity);

void CallWindowOutOfSight(IUnknown* browser, void (*call)(void*), void* what);
/// Makes a call to a browser. One that is cut off, since it took too long, marks the browser: for some
/// seconds it counts as one that does not answer. Throws what the call throws; the error of a call that is
/// cut off, without calling, as long as an earlier call to the browser does not come back.
template <class Call>
void CallWindow(IUnknown* browser, Call&& call) {
    CallWindowOutOfSight(
        browser, [](void* what) { (*static_cast<std::remove_reference_t<Call>*>(what))(); },
        const_cast<void*>(static_cast<const void*>(std::addressof(call))));
}

/// Keeps what must not be let go as long as its process hangs: a browser, by its object and, if there is one,
/// as a window, and perhaps the sink on it.
void Keep(ComPtr<IUnknown> object, DesktopWindowPtr window, std::shared_ptr<WindowSink> sink) noexcept;
/// The window that is kept with that identity; null for none.
DesktopWindowPtr KeptWindow(const void* identity);
/// Lets go of what is kept and answers again. Calls out.
void ReleaseAnswering() noexcept;
/// Lets go of what is kept of a browser. Calls out.
void Release(const void* identity) noexcept;

/// The frame windows of browsers that are held, by the browsers' identities.
void RememberFrame(const void* identity, HWND frame);
void ForgetFrame(const void* identity) noexcept;
/// Null when it is not known.
HWND FrameOf(IUnknown* browser) noexcept;

/// Whether anything is kept, or a call was ever cut off: then COM cannot be left in good order.
bool AnythingHangs() noexcept;

}  // namespace kestrelguard
