#include "blocking/matcher/SiteAutomaton.h"

#include <algorithm>

namespace kestrelguard {
namespace {

unsigned char LetterAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

}  // namespace

/// Makes the states level by level; the texts of a state are a range of the sorted texts.
class SiteAutomaton::Builder {
 public:
    Builder(SiteAutomaton& made, std::vector<std::string_view> texts)
        : m_made(made), m_texts(std::move(texts)) {
        std::sort(m_texts.begin(), m_texts.end());
        m_made.m_nodes.emplace_back();
        m_ranges.push_back({0, static_cast<std::uint32_t>(m_texts.size())});
        std::size_t levelEnd = 1;
        std::size_t depth = 0;
        for (State state = kRoot; state < m_made.m_nodes.size(); ++state) {
            if (state == levelEnd) {
                levelEnd = m_made.m_nodes.size();
                ++depth;
            }
            // What lies behind a found text decides nothing any more.
            if (!m_made.m_nodes[state].found) {
                AddChildren(state, depth);
            }
        }
        m_made.m_nodes.shrink_to_fit();
    }

 private:
    struct Range {
        std::uint32_t begin;
        std::uint32_t end;
    };

    void AddChildren(State state, std::size_t depth) {
        auto& nodes = m_made.m_nodes;
        const Range texts = m_ranges[state];
        nodes[state].children = static_cast<State>(nodes.size());
        for (std::uint32_t begin = texts.begin; begin < texts.end;) {
            const unsigned char letter = LetterAt(m_texts[begin], depth);
            std::uint32_t end = begin + 1;
            while (end < texts.end && LetterAt(m_texts[end], depth) == letter) {
                ++end;
            }
            const State child = static_cast<State>(nodes.size());
            nodes.emplace_back();
            m_ranges.push_back({begin, end});
            nodes[child].letter = letter;
            nodes[child].found = m_texts[begin].size() == depth + 1;  // the shortest comes first
            ++nodes[state].childCount;
            if (state == kRoot) {
                m_made.m_rootChildren[letter] = child;
            } else {
                nodes[child].fail = m_made.After(nodes[state].fail, letter);
                nodes[child].found = nodes[child].found || nodes[nodes[child].fail].found;
            }
            begin = end;
        }
    }

    SiteAutomaton& m_made;
    std::vector<std::string_view> m_texts;
    std::vector<Range> m_ranges;
};

SiteAutomaton::SiteAutomaton(std::vector<std::string_view> texts) {
    Builder(*this, std::move(texts));
}

/// The child of a state other than the root; kNone when there is none.
SiteAutomaton::State SiteAutomaton::Child(State state, unsigned char letter) const {
    const Node* const first = m_nodes.data() + m_nodes[state].children;
    const Node* const end = first + m_nodes[state].childCount;
    const Node* const child = std::lower_bound(
        first, end, letter, [](const Node& node, unsigned char than) { return node.letter < than; });
    return child != end && child->letter == letter ? static_cast<State>(child - m_nodes.data()) : kNone;
}

/// The state after one more letter.
SiteAutomaton::State SiteAutomaton::After(State state, unsigned char letter) const {
    for (; state != kRoot; state = m_nodes[state].fail) {
        const State child = Child(state, letter);
        if (child != kNone) {
            return child;
        }
    }
    return m_rootChildren[letter];
}

bool SiteAutomaton::AnyOccursIn(std::string_view searched) const {
    State state = kRoot;
    for (const char letter : searched) {
        state = After(state, static_cast<unsigned char>(letter));
        if (m_nodes[state].found) {
            return true;
        }
    }
    return false;
}

}  // namespace kestrelguard
