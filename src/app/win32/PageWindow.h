#pragma once

#include <windows.h>

#include "controls/win32/WindowBase.h"

namespace kestrelguard {

/// One page of the form: a plain area with an edge. What its controls tell goes to the form, as if they lay
/// on it.
class PageWindow final : public WindowBase {
 public:
    /// Hidden, at that place of the form. Throws kOutOfMemory.
    void CreateAt(const RECT& place, HWND form, int id);
    void Show(bool show) { ShowWindow(Handle(), show ? SW_SHOW : SW_HIDE); }

 private:
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void PaintBackground(HDC context) const;
    void TakeColours();

    HBRUSH m_background = nullptr;
    COLORREF m_text = 0;
};

}  // namespace kestrelguard
