#pragma once

#include <windows.h>

#include <memory>

#include "desktop/ShellWindowsObject.h"

namespace kestrelguard::desktop {

/// The class id under which the stand-in's window list is served. The system's own class id leads here.
inline constexpr CLSID kStandInShellWindows = {
    0x6b1f4c52, 0x8e0d, 0x4c7a, {0x9c, 0x33, 0x5d, 0x0a, 0x7e, 0x21, 0xb9, 0x01}};

/// Offers one object as a COM class of this process for as long as it lives.
class ServedClass {
 public:
    /// Throws std::runtime_error when the class cannot be registered.
    ServedClass(const CLSID& id, std::shared_ptr<ShellWindowsObject> object);
    ~ServedClass();
    ServedClass(const ServedClass&) = delete;
    ServedClass& operator=(const ServedClass&) = delete;

 private:
    DWORD m_registration = 0;
};

/// Writes what makes the system's ShellWindows lead to the stand-in: only under Wine; throws
/// std::runtime_error elsewhere, where a real desktop would be damaged.
void PrepareRegistry();

}  // namespace kestrelguard::desktop
