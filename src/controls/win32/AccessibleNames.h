#pragma once

#include <windows.h>

#include "runtime/win32/Com.h"

struct IAccPropServices;

namespace kestrelguard {

/// The names by which screen readers call controls that have neither a text of their own nor a label right
/// before them. The texts on the screen stay as they are. Needs COM; where the system has no such service
/// (before Windows XP) nothing happens.
class AccessibleNames {
 public:
    AccessibleNames();
    ~AccessibleNames();
    AccessibleNames(const AccessibleNames&) = delete;
    AccessibleNames& operator=(const AccessibleNames&) = delete;

    void Set(HWND control, const wchar_t* name) const;

 private:
    ComPtr<IAccPropServices> m_service;
};

}  // namespace kestrelguard
