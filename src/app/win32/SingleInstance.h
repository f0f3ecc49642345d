#pragma once

#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// The mark of the one running program. Of two copies that start at once exactly one is the first.
class SingleInstance {
 public:
    SingleInstance();
    /// Whether no other copy was running when this one began.
    bool First() const { return m_first; }

 private:
    Handle m_mark;
    bool m_first;
};

}  // namespace kestrelguard
