#pragma once

#include <windows.h>

#include <exdisp.h>
#include <unknwn.h>

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "monitoring/WatchedDesktop.h"
#include "runtime/win32/Com.h"

/// Which windows answer, found out without a call to them: a call to a process that hangs never comes back.
namespace kestrelguard {

/// Whether the thread of a frame window takes messages. True for a window that is not there: calls to it come
/// back, with an error.
bool FrameAnswers(HWND frame);

/// The processes behind the objects of one walk: each is asked once, however many windows it has.
class Servers {
 public:
    /// Whether the process behind an object takes messages in its top-level windows. True when the process
    /// cannot be told; then a call is the only way.
    bool Answer(IUnknown* object);

 private:
    /// By the part of a reference that names the process and its apartment.
    std::unordered_map<std::uint32_t, bool> m_asked;
};

/// Keeps what must not be let go as long as its process hangs. Of `sink` and `browser` either may be null.
void KeepForEver(ComPtr<IUnknown> browser, std::shared_ptr<WindowSink> sink) noexcept;

/// The frame windows of browsers that are held, by the browsers' identities.
void RememberFrame(const void* identity, HWND frame);
void ForgetFrame(const void* identity) noexcept;
/// Null when it is not known.
HWND FrameOf(IUnknown* browser) noexcept;

/// Whether anything is kept: then COM cannot be left in good order.
bool AnythingKept() noexcept;

}  // namespace kestrelguard
