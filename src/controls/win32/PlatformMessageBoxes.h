#pragma once

#include <windows.h>

#include "controls/MessageBoxes.h"

namespace kestrelguard {

class PlatformMessageBoxes final : public MessageBoxes {
 public:
    /// The window that owns the boxes; none for boxes that stand alone.
    void Attach(HWND owner) { m_owner = owner; }
    int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t style) override;

 private:
    HWND m_owner = nullptr;
};

}  // namespace kestrelguard
