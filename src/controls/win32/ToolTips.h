#pragma once

#include <windows.h>

#include <string>

#include "controls/Controls.h"

namespace kestrelguard {

/// The tool tips of one form: one tip window for all its controls.
class ToolTips {
 public:
    /// Creates the tip window; it goes with its owner.
    void Create(HWND owner);
    void Set(HWND control, const std::wstring& text);

 private:
    HWND m_tips = nullptr;
    HWND m_owner = nullptr;
};

class ToolTipControl final : public ToolTip {
 public:
    void Attach(ToolTips& tips, HWND control) {
        m_tips = &tips;
        m_control = control;
    }
    void SetToolTip(const std::wstring& text) override { m_tips->Set(m_control, text); }

 private:
    ToolTips* m_tips = nullptr;
    HWND m_control = nullptr;
};

}  // namespace kestrelguard
