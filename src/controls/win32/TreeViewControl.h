#pragma once

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>
#include <unordered_map>

#include "controls/Tree.h"

namespace kestrelguard {

/// A tree view whose nodes have keys. It does not own its window: the form creates and destroys it. Nobody
/// else may add or remove items, or use their `lParam`.
class TreeViewControl final : public Tree {
 public:
    void Attach(HWND window) { m_window = window; }
    /// The images of the nodes; the list stays the caller's.
    void UseImages(HIMAGELIST images);

    void Clear() override;
    void Add(const std::wstring& parent, const std::wstring& key, const std::wstring& text,
             int image) override;
    /// A node without children is expanded as soon as it has some.
    void Expand(const std::wstring& key) override;
    /// The control is only told of a text that differs: it would draw anew.
    void SetText(const std::wstring& key, const std::wstring& text) override;
    void Remove(const std::wstring& key) override;
    std::vector<TreeNode> Nodes() const override;
    std::optional<TreeNode> Selected() const override;

 private:
    struct Item {
        TreeNode node;
        HTREEITEM item = nullptr;
        Item* parent = nullptr;
        bool expandWithChildren = false;
    };

    Item& Existing(const std::wstring& key) const;
    const Item& ItemOf(HTREEITEM item) const;
    bool Expanded(const Item& node) const;
    void ExpandWithChildren(Item& node);
    HTREEITEM Next(UINT relation, HTREEITEM item) const;
    void Walk(HTREEITEM first, std::vector<TreeNode>& nodes) const;
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const {
        return SendMessageA(m_window, message, wParam, lParam);
    }

    HWND m_window = nullptr;
    // The items' `lParam` points into here.
    std::unordered_map<std::wstring, std::unique_ptr<Item>> m_items;
};

}  // namespace kestrelguard
