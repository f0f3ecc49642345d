#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "controls/Faults.h"
#include "controls/Tree.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

class FakeTree : public Tree, public Fallible {
 public:
    void Clear() override {
        Call();
        nodes.clear();
        images.clear();
        expanded.clear();
        selected.reset();
    }
    void Add(const std::wstring& parent, const std::wstring& key, const std::wstring& text,
             int image) override {
        Call();
        if (Find(key) != nodes.end()) {
            throw RunTimeError(RunTimeError::kKeyNotUnique);
        }
        if (!parent.empty()) {
            Existing(parent);
        }
        nodes.push_back(TreeNode{key, text, parent});
        images[key] = image;
    }
    void Expand(const std::wstring& key) override {
        Call();
        Existing(key);
        expanded.push_back(key);
    }
    void SetText(const std::wstring& key, const std::wstring& text) override {
        Call();
        Existing(key).text = text;
    }
    /// Takes the node's children along.
    void Remove(const std::wstring& key) override {
        Call();
        const std::wstring gone = Existing(key).key;  // `key` may be the node's own
        for (auto child = ChildOf(gone); child != nodes.end(); child = ChildOf(gone)) {
            const std::wstring childKey = child->key;
            Remove(childKey);
        }
        if (selected == gone) {
            selected.reset();
        }
        nodes.erase(Find(gone));
    }
    std::vector<TreeNode> Nodes() const override {
        Call();
        return nodes;
    }
    std::optional<TreeNode> Selected() const override {
        Call();
        for (const TreeNode& node : nodes) {
            if (selected == node.key) {
                return node;
            }
        }
        return std::nullopt;
    }

    /// In the order of their addition.
    std::vector<TreeNode> nodes;
    std::map<std::wstring, int> images;
    std::vector<std::wstring> expanded;
    /// The selected node's key.
    std::optional<std::wstring> selected;

 private:
    std::vector<TreeNode>::iterator Find(const std::wstring& key) {
        return std::find_if(nodes.begin(), nodes.end(),
                            [&key](const TreeNode& node) { return node.key == key; });
    }
    std::vector<TreeNode>::iterator ChildOf(const std::wstring& key) {
        return std::find_if(nodes.begin(), nodes.end(),
                            [&key](const TreeNode& node) { return node.parent == key; });
    }
    TreeNode& Existing(const std::wstring& key) {
        const auto found = Find(key);
        if (found == nodes.end()) {
            throw RunTimeError(RunTimeError::kElementNotFound);
        }
        return *found;
    }
};

}  // namespace kestrelguard
