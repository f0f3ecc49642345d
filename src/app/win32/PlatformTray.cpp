#include "app/win32/PlatformTray.h"

#include <algorithm>

#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

static_assert(NOTIFYICONDATAA_V1_SIZE == 88, "The record that every shell since Windows 95 takes");

void PlatformTray::Fill(HWND owner, HICON icon) {
    m_record.cbSize = NOTIFYICONDATAA_V1_SIZE;
    m_record.hWnd = owner;
    m_record.uID = 1;
    m_record.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    m_record.uCallbackMessage = kCallback;
    m_record.hIcon = icon;
}

void PlatformTray::Notify(DWORD message, const FixedText64& tip) {
    const auto& characters = tip.Characters();
    const std::string ansi = ToAnsi({characters.data(), characters.size()});
    const std::size_t length = std::min(ansi.size(), FixedText64::kSize);
    std::fill_n(m_record.szTip, FixedText64::kSize, ' ');
    std::copy_n(ansi.begin(), length, m_record.szTip);
    Shell_NotifyIconA(message, &m_record);
}

void PlatformTray::Delete() {
    Shell_NotifyIconA(NIM_DELETE, &m_record);
}

}  // namespace kestrelguard
