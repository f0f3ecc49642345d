#pragma once

#include <windows.h>

#include <shellapi.h>

#include "app/TrayIcon.h"

namespace kestrelguard {

/// The tray icon's record in its first, 88-byte form, and the shell calls that take it.
class PlatformTray final : public ShellTray {
 public:
    /// The message that the shell sends for every event of the icon: a mouse move.
    static constexpr UINT kCallback = WM_MOUSEMOVE;

    /// Fills the record, once. The icon stays its owner's.
    void Fill(HWND owner, HICON icon);

    void Add(const FixedText64& tip) override { Notify(NIM_ADD, tip); }
    void Modify(const FixedText64& tip) override { Notify(NIM_MODIFY, tip); }
    void Delete() override;

 private:
    void Notify(DWORD message, const FixedText64& tip);

    NOTIFYICONDATAA m_record = {};
};

}  // namespace kestrelguard
