#pragma once

#include <windows.h>

namespace kestrelguard {

/// Shows the hourglass while the user-interface thread does something that may take longer than a moment.
class WaitCursor {
 public:
    WaitCursor() : m_before(SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(32514)))) {}
    ~WaitCursor() { SetCursor(m_before); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

 private:
    HCURSOR m_before;
};

/// Paints what is yet to be painted in the calling thread's windows, so that none stands half-painted, with a
/// hole where a question was, while no messages are served. Handles no other message.
void PaintWindows();

}  // namespace kestrelguard
