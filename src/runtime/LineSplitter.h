#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace kestrelguard {

/// Cuts a file, handed over piece by piece, into its lines. A line ends with CR LF, CR or LF; the last one
/// may lack its end. Any other character, NUL included, belongs to its line. Takes linear time; a line that
/// lies whole in one piece is not copied.
template <class Char>
class LineSplitter {
 public:
    using View = std::basic_string_view<Char>;

    /// Takes the next piece and calls `line` with every line that it completes. What `line` throws passes
    /// through; the splitter is of no use after that.
    template <class Line>
    void Take(View piece, Line&& line) {
        if (m_afterReturn && !piece.empty()) {
            m_afterReturn = false;
            piece.remove_prefix(piece.front() == kLineFeed ? 1 : 0);
        }
        while (!piece.empty()) {
            const auto end = std::find_if(piece.begin(), piece.end(), IsLineEnd);
            const View begun = piece.substr(0, static_cast<std::size_t>(end - piece.begin()));
            if (end == piece.end()) {
                m_begun += begun;
                return;
            }
            const bool isReturn = *end == kReturn;
            piece.remove_prefix(begun.size() + 1);
            if (isReturn && !piece.empty() && piece.front() == kLineFeed) {
                piece.remove_prefix(1);
            } else {
                m_afterReturn = isReturn && piece.empty();
            }
            if (m_begun.empty()) {
                line(begun);
            } else {
                m_begun += begun;
                line(View(m_begun));
                m_begun.clear();
            }
        }
    }

    /// The file is over: calls `line` with a last line that lacks its end.
    template <class Line>
    void Finish(Line&& line) {
        if (!m_begun.empty()) {
            line(View(m_begun));
            m_begun.clear();
        }
    }

 private:
    static constexpr Char kReturn = 13;
    static constexpr Char kLineFeed = 10;

    static constexpr bool IsLineEnd(Char character) noexcept {
        return character == kReturn || character == kLineFeed;
    }

    std::basic_string<Char> m_begun;
    bool m_afterReturn = false;
};

}  // namespace kestrelguard
