#pragma once

#include <windows.h>

#include "controls/Controls.h"

namespace kestrelguard {

/// An item of a menu, and which one it is.
template <class Interface>
class MenuItem : public Interface {
 public:
    void Attach(HMENU menu, UINT id) {
        m_menu = menu;
        m_id = id;
    }

 protected:
    HMENU m_menu = nullptr;
    UINT m_id = 0;
};

class MenuCheckMark final : public MenuItem<CheckMark> {
 public:
    bool Checked() const override;
    void SetChecked(bool checked) override;
};

class MenuCaption final : public MenuItem<Caption> {
 public:
    void SetCaption(const std::wstring& text) override;
};

}  // namespace kestrelguard
