#pragma once

#include <windows.h>

#include "controls/Controls.h"

namespace kestrelguard {

class MenuCheckMark final : public CheckMark {
 public:
    void Attach(HMENU menu, UINT id) {
        m_menu = menu;
        m_id = id;
    }
    bool Checked() const override;
    void SetChecked(bool checked) override;

 private:
    HMENU m_menu = nullptr;
    UINT m_id = 0;
};

class MenuCaption final : public Caption {
 public:
    void Attach(HMENU menu, UINT id) {
        m_menu = menu;
        m_id = id;
    }
    void SetCaption(const std::wstring& text) override;

 private:
    HMENU m_menu = nullptr;
    UINT m_id = 0;
};

}  // namespace kestrelguard
