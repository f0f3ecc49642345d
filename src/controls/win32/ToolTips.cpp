#include "controls/win32/ToolTips.h"

#include <commctrl.h>
#include <string>

#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

void ToolTips::Create(HWND owner) {
    m_owner = owner;
    m_tips = CreateWindowExA(WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                             0, 0, 0, 0, owner, nullptr, GetModuleHandleA(nullptr), nullptr);
}

void ToolTips::Set(HWND control, const std::wstring& text) {
    std::string tip = ToAnsi(text);
    TTTOOLINFOA tool = {};
    // The first form of the record: old common controls refuse the later ones.
    tool.cbSize = TTTOOLINFOA_V1_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = m_owner;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = tip.data();
    SendMessageA(m_tips, TTM_DELTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
    if (!tip.empty()) {
        SendMessageA(m_tips, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

}  // namespace kestrelguard
