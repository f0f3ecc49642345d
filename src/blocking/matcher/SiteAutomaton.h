#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kestrelguard {

/// Searches one text for many others in a single pass: an automaton after Aho and Corasick, kept sparse (12
/// bytes a state). Building takes O(n log n) compares for n texts and time in proportion to their bytes;
/// a search takes time in proportion to the searched bytes, whatever the texts are.
class SiteAutomaton {
 public:
    /// The texts are only read here. No text may be empty.
    explicit SiteAutomaton(std::vector<std::string_view> texts);

    bool AnyOccursIn(std::string_view searched) const;

    std::size_t MemoryBytes() const noexcept { return m_nodes.capacity() * sizeof(Node); }

 private:
    using State = std::uint32_t;
    static constexpr State kRoot = 0;
    static constexpr State kNone = ~State{0};

    struct Node {
        State children = 0;  // the first of them; they stand in a row, ordered by letter
        State fail = kRoot;  // where the longest end of the text so far is that is a beginning, too
        std::uint16_t childCount = 0;
        unsigned char letter = 0;
        bool found = false;
    };

    class Builder;

    State Child(State state, unsigned char letter) const;
    State After(State state, unsigned char letter) const;

    std::vector<Node> m_nodes;
    std::array<State, 256> m_rootChildren{};
};

}  // namespace kestrelguard
