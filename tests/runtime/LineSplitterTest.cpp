#include "runtime/LineSplitter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace kestrelguard {
namespace {

using Lines = std::vector<std::string>;

/// The lines of a file handed over in pieces of that size.
Lines LinesOf(std::string_view file, std::size_t pieceSize) {
    Lines lines;
    LineSplitter<char> splitter;
    const auto keep = [&lines](std::string_view line) { lines.emplace_back(line); };
    for (std::size_t at = 0; at < file.size(); at += pieceSize) {
        splitter.Take(file.substr(at, pieceSize), keep);
    }
    splitter.Finish(keep);
    return lines;
}

/// The same by definition, character by character.
Lines LinesByDefinition(std::string_view file) {
    Lines lines;
    std::string line;
    for (std::size_t at = 0; at < file.size(); ++at) {
        if (file[at] != '\r' && file[at] != '\n') {
            line += file[at];
            continue;
        }
        lines.push_back(std::exchange(line, {}));
        if (file.substr(at, 2) == "\r\n") {
            ++at;
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

TEST(LineSplitter, KnowsThreeLineEnds) {
    EXPECT_EQ(LinesOf("a\r\nb\rc\nd", 100), (Lines{"a", "b", "c", "d"}));
}

TEST(LineSplitter, KeepsEmptyLines) {
    EXPECT_EQ(LinesOf("\r\n\r\n\n\n\r\rx", 100), (Lines{"", "", "", "", "", "", "x"}));
}

TEST(LineSplitter, FileWithoutContentHasNoLine) {
    EXPECT_EQ(LinesOf("", 1), Lines{});
}

TEST(LineSplitter, FinalLineEndBeginsNoLine) {
    EXPECT_EQ(LinesOf("a\r\n", 100), Lines{"a"});
    EXPECT_EQ(LinesOf("a\r", 100), Lines{"a"});
    EXPECT_EQ(LinesOf("a", 100), Lines{"a"});
}

TEST(LineSplitter, NulBelongsToItsLine) {
    const std::string file("a\0b\r\n\0", 6);
    EXPECT_EQ(LinesOf(file, 100), (Lines{std::string("a\0b", 3), std::string("\0", 1)}));
}

TEST(LineSplitter, LineEndCutByAPieceIsOneLineEnd) {
    for (std::size_t pieceSize = 1; pieceSize <= 5; ++pieceSize) {
        EXPECT_EQ(LinesOf("a\r\nb\r\r\nc\n\r", pieceSize), (Lines{"a", "b", "", "c", ""})) << pieceSize;
    }
}

TEST(LineSplitter, PiecesNeverChangeTheLines) {
    std::mt19937 random(20040517);
    for (int round = 0; round < 2000; ++round) {
        std::string file;
        for (auto size = random() % 24; size > 0; --size) {
            file += "ab\0\r\n\r\n"[random() % 7];
        }
        const Lines expected = LinesByDefinition(file);
        for (std::size_t pieceSize = 1; pieceSize <= file.size() + 1; ++pieceSize) {
            ASSERT_EQ(LinesOf(file, pieceSize), expected) << "round " << round << ", pieces of " << pieceSize;
        }
    }
}

TEST(LineSplitter, LongLineInSmallPiecesStaysWhole) {
    const std::string longLine(1 << 22, 'x');
    EXPECT_EQ(LinesOf(longLine + "\r\ny", 4096), (Lines{longLine, "y"}));
}

TEST(LineSplitter, SplitsWideText) {
    std::vector<std::wstring> lines;
    LineSplitter<wchar_t> splitter;
    const auto keep = [&lines](std::wstring_view line) { lines.emplace_back(line); };
    splitter.Take(L"a\r\nb", keep);
    splitter.Finish(keep);
    EXPECT_EQ(lines, (std::vector<std::wstring>{L"a", L"b"}));
}

}  // namespace
}  // namespace kestrelguard
