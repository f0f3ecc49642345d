#include "app/win32/SingleInstance.h"

namespace kestrelguard {

SingleInstance::SingleInstance() : m_mark(CreateMutexA(nullptr, FALSE, "Kestrelguard.SingleInstance")) {
    // ERROR_ACCESS_DENIED: another user's copy in the same session made it.
    const DWORD error = GetLastError();
    m_first = error != ERROR_ALREADY_EXISTS && error != ERROR_ACCESS_DENIED;
}

}  // namespace kestrelguard
