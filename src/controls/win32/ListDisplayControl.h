#pragma once

#include <windows.h>

#include <cstdint>

#include "controls/Lists.h"
#include "controls/win32/SubclassedControl.h"

namespace kestrelguard {

/// A list box as the display of rows that are held elsewhere.
///
/// A list window takes its time over 100,000 rows, and few users ever look at them. So the window gets them
/// only when somebody does: the list is drawn, gets the keyboard or the mouse, or any program asks its window
/// for something. Until then they wait where they are held.
///
/// A list window of Windows 95, 98 and Me takes 32,767 rows. What it refuses it does not show; a row that
/// leaves makes room for the next.
class ListDisplayControl final : public ListDisplay, public ListSelection, SubclassedControl {
 public:
    /// `window` is an empty list box whose rows nobody else changes. It may go before this object or after.
    void Attach(HWND window) { Subclass(window); }

    void ShowRowsOf(const ListRows* rows) noexcept override;
    void RowsAppended() noexcept override;
    void RowRemoved(std::int32_t row) noexcept override;

    std::int32_t SelectedRow() const override;
    void SelectRow(std::int32_t row) override;

 private:
    std::optional<LRESULT> OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept override;
    /// A message to the window itself, which does not count as a look.
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const;
    /// Gives the window the rows that it has not got.
    void Fill() noexcept;
    /// Adds the row behind the shown ones. False when the window refuses it.
    bool ShowNext();

    const ListRows* m_rows = nullptr;
    /// The window shows the first so many rows.
    std::int32_t m_shown = 0;
    bool m_filling = false;
    /// The window has refused a row, and nothing has changed since.
    bool m_refused = false;
};

}  // namespace kestrelguard
