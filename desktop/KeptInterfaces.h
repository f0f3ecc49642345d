#pragma once

#include <windows.h>

#include <objbase.h>

#include <vector>

#include "desktop/Com.h"

namespace kestrelguard::desktop {

/// Keeps the interfaces that other processes call known to the system for as long as it lives.
///
/// When the last object with an interface goes, Wine withdraws the interface from its RPC server and waits
/// for the calls on it to end. A call that is about to end just then is missed, and the wait lasts for ever:
/// with windows that come and go by the hundred that happens. An interface that always has one more object is
/// never withdrawn. Lives in the multi-threaded apartment.
class KeptInterfaces {
 public:
    KeptInterfaces();
    ~KeptInterfaces();
    KeptInterfaces(const KeptInterfaces&) = delete;
    KeptInterfaces& operator=(const KeptInterfaces&) = delete;

 private:
    std::vector<ComPtr<IStream>> m_references;
};

}  // namespace kestrelguard::desktop
