#include "controls/win32/MenuControls.h"

#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

bool MenuCheckMark::Checked() const {
    return (GetMenuState(m_menu, m_id, MF_BYCOMMAND) & static_cast<UINT>(MF_CHECKED)) != 0;
}

void MenuCheckMark::SetChecked(bool checked) {
    CheckMenuItem(m_menu, m_id, MF_BYCOMMAND | static_cast<UINT>(checked ? MF_CHECKED : MF_UNCHECKED));
}

void MenuCaption::SetCaption(const std::wstring& text) {
    const UINT checked = GetMenuState(m_menu, m_id, MF_BYCOMMAND) & static_cast<UINT>(MF_CHECKED);
    ModifyMenuA(m_menu, m_id, MF_BYCOMMAND | MF_STRING | checked, m_id, ToAnsi(text).c_str());
}

}  // namespace kestrelguard
