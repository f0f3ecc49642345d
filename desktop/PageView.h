#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "desktop/Pages.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard::desktop {

/// The area of a browser window that shows a page: lays out its text, draws it, and tells of the pointer over
/// links and of clicks on them. Lives on the thread for windows.
class PageView {
 public:
    /// The pointer has come over a link, or off all of them (null).
    using Pointed = std::function<void(const Run*)>;
    using Clicked = std::function<void(const Run&)>;

    PageView(HWND parent, Pointed pointed, Clicked clicked);
    PageView(const PageView&) = delete;
    PageView& operator=(const PageView&) = delete;

    HWND Window() const { return m_window; }
    void Show(Page page);
    /// Where a link or button is drawn, in the view's client area; empty when there is none that leads there.
    RECT PlaceOf(const std::wstring& link) const;

 private:
    /// A piece of text where it is drawn.
    struct Placed {
        RECT place;
        std::wstring text;
        std::size_t run;
    };

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void Arrange();
    void Paint();
    void DrawPiece(HDC dc, const Placed& piece) const;
    void PointAt(POINT point);
    const Run* LinkAt(POINT point) const;
    HFONT FontOf(const Run& run) const;
    int Scaled(int at96) const { return MulDiv(at96, m_dpi, 96); }

    HWND m_window = nullptr;
    Pointed m_pointed;
    Clicked m_clicked;
    Page m_page;
    std::vector<Placed> m_pieces;
    const Run* m_under = nullptr;  // the link under the pointer
    bool m_pressed = false;
    int m_dpi = 96;
    Font m_fonts[8];  // by bold, italic and underline
    Font m_heading;
};

}  // namespace kestrelguard::desktop
