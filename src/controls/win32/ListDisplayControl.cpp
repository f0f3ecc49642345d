#include "controls/win32/ListDisplayControl.h"

#include <algorithm>

#include "controls/win32/WaitCursor.h"
#include "runtime/Edge.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

/// The messages by which somebody looks at a list, or asks for its rows.
constexpr struct {
    UINT first;
    UINT last;
} kLooks[] = {
    {WM_PAINT, WM_PAINT},       {WM_NCPAINT, WM_NCPAINT},  {WM_PRINT, WM_PRINTCLIENT},
    {WM_SETFOCUS, WM_SETFOCUS}, {WM_KEYFIRST, WM_KEYLAST}, {WM_MOUSEFIRST, WM_MOUSELAST},
    {WM_VSCROLL, WM_VSCROLL},   {LB_ADDSTRING, LB_MSGMAX},
};

bool Looks(UINT message) {
    return std::any_of(std::begin(kLooks), std::end(kLooks), [message](const auto& range) {
        return message >= range.first && message <= range.last;
    });
}

/// Neither the list nor its scroll bar is drawn in the scope: a list alone whose redraw is off still moves
/// its scroll bar with every row, which takes milliseconds.
class NotDrawn {
 public:
    explicit NotDrawn(HWND window)
        : m_window(window),
          m_shown((GetWindowLongA(window, GWL_STYLE) & static_cast<LONG>(WS_VISIBLE)) != 0) {
        Draw(FALSE);
    }
    ~NotDrawn() {
        Draw(TRUE);
        RedrawWindow(m_window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
    }
    NotDrawn(const NotDrawn&) = delete;
    NotDrawn& operator=(const NotDrawn&) = delete;

 private:
    void Draw(BOOL draw) const {
        if (m_shown) {
            DefWindowProcA(m_window, WM_SETREDRAW, static_cast<WPARAM>(draw), 0);
        }
        SendMessageA(m_window, WM_SETREDRAW, static_cast<WPARAM>(draw), 0);
    }

    HWND m_window;
    bool m_shown;
};

}  // namespace

void ListDisplayControl::ShowRowsOf(const ListRows* rows) noexcept {
    m_rows = rows;
    m_shown = 0;
    m_refused = false;
    Send(LB_RESETCONTENT, 0, 0);
    RowsAppended();
}

void ListDisplayControl::RowsAppended() noexcept {
    m_refused = false;
    if (IsWindowVisible(Subclassed()) != FALSE) {
        Fill();
    }
}

void ListDisplayControl::RowRemoved(std::int32_t row) noexcept {
    if (row < m_shown) {
        Send(LB_DELETESTRING, static_cast<WPARAM>(row), 0);
        --m_shown;
    }
    RowsAppended();  // the first of those that found no room
}

std::int32_t ListDisplayControl::SelectedRow() const {
    return static_cast<std::int32_t>(SendMessageA(Subclassed(), LB_GETCURSEL, 0, 0));
}

void ListDisplayControl::SelectRow(std::int32_t row) {
    SendMessageA(Subclassed(), LB_SETCURSEL, static_cast<WPARAM>(row), 0);
}

std::optional<LRESULT> ListDisplayControl::OnControlMessage(UINT message, WPARAM /*wParam*/,
                                                            LPARAM /*lParam*/) noexcept {
    if (Looks(message)) {
        Fill();
    }
    if (message == WM_NCDESTROY) {
        m_shown = 0;
    }
    return std::nullopt;
}

LRESULT ListDisplayControl::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
    return Subclassed() == nullptr ? LB_ERR : Original(message, wParam, lParam);
}

void ListDisplayControl::Fill() noexcept {
    if (Subclassed() == nullptr || m_rows == nullptr || m_filling || m_refused) {
        return;
    }
    m_filling = true;
    AtEdge(
        [this] {
            const std::int32_t rows = m_rows->Count();
            if (rows - m_shown == 1) {
                m_refused = !ShowNext();
            } else if (rows > m_shown) {
                const WaitCursor wait;
                const NotDrawn notDrawn(Subclassed());
                while (m_shown < rows && !m_refused) {
                    m_refused = !ShowNext();
                }
            }
        },
        [this](const RunTimeError&) { m_refused = true; });
    m_filling = false;
}

bool ListDisplayControl::ShowNext() {
    const AnsiArgument row(m_rows->Row(m_shown));
    if (Send(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.Get())) < 0) {
        return false;
    }
    ++m_shown;
    return true;
}

}  // namespace kestrelguard
