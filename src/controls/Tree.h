#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kestrelguard {

struct TreeNode {
    std::wstring key;
    std::wstring text;
    /// The parent's key; empty for a root.
    std::wstring parent;
};

/// A tree of nodes, each with a key that is unique in the tree.
class Tree {
 public:
    virtual ~Tree() = default;
    virtual void Clear() = 0;
    /// Adds a node as the last child of `parent`; a root when `parent` is empty. `image` counts from 1.
    /// Throws kKeyNotUnique, and kElementNotFound when the parent is not there.
    virtual void Add(const std::wstring& parent, const std::wstring& key, const std::wstring& text,
                     int image) = 0;
    /// The three below throw kElementNotFound when there is no such node.
    virtual void Expand(const std::wstring& key) = 0;
    virtual void SetText(const std::wstring& key, const std::wstring& text) = 0;
    virtual void Remove(const std::wstring& key) = 0;
    /// All nodes, in the tree's own order.
    virtual std::vector<TreeNode> Nodes() const = 0;
    virtual std::optional<TreeNode> Selected() const = 0;
};

}  // namespace kestrelguard
