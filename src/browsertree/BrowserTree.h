#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "controls/MessageLoop.h"
#include "controls/Tree.h"
#include "runtime/Browser.h"
#include "runtime/System.h"

namespace kestrelguard {

/// The browser events control `IEEvents1`, as far as the tree needs it.
class BrowserEventsControl {
 public:
    virtual ~BrowserEventsControl() = default;
    /// Switches the watching of the browser windows on or off. Throws what the first look at them throws.
    virtual void SetEnabled(bool enabled) = 0;
    /// Replaces the watcher by a fresh one. Throws like SetEnabled.
    virtual void Refresh() = 0;
    /// Throws kOverflow when there are more than the 16-bit count holds.
    virtual std::int16_t Count() const = 0;
    /// The browsers in the order of the list. What comes back stays as it is when the list changes.
    virtual std::vector<std::shared_ptr<Browser>> Browsers() const = 0;
};

/// What the menu does to a browser's window. Results are not looked at.
class BrowserWindowActions {
 public:
    virtual ~BrowserWindowActions() = default;
    virtual void ShowNormal(std::int32_t handle) = 0;
    virtual void SetForeground(std::int32_t handle) = 0;
    /// Posts WM_CLOSE: never waits for the browser.
    virtual void PostClose(std::int32_t handle) = 0;
};

/// The menu `bMnu`.
class BrowserMenu {
 public:
    virtual ~BrowserMenu() = default;
    /// Opens the menu at the pointer, `mnuSB` as its default item.
    virtual void PopUp() = 0;
};

/// The images of the nodes, counted from 1.
namespace tree_images {
inline constexpr int kDetail = 1;
inline constexpr int kRoot = 2;
inline constexpr int kBrowser = 3;
}  // namespace tree_images

/// The window handle in a node's key: its first numeric part. Nothing for a key without "_" or without a
/// numeric part. Throws kOverflow when the number is no 32-bit one.
std::optional<std::int32_t> WindowHandleOf(std::wstring_view key);

/// Keeps `tvBrowsers` in line with the running browser windows and acts on the selected one.
class BrowserTree {
 public:
    /// What the tree works on; all of it outlives it.
    struct Parts {
        Tree& tvBrowsers;
        BrowserEventsControl& IEEvents1;
        MessageLoop& messageLoop;
        BrowserWindowActions& windows;
        BrowserMenu& bMnu;
    };

    explicit BrowserTree(const Parts& parts) : m_parts(parts) {}

    /// Switches watching on and rebuilds all nodes. A failing step leaves the rest unbuilt and throws, also
    /// when a window that has gone meanwhile is the reason. Reading a browser lets events in: each adds or
    /// removes its own nodes at once. A rebuild that is asked for within another one is done after it.
    void RefreshBrowserTree();

    /// A read of a window does not come back: a rebuild that waits for it is left behind and all nodes are
    /// rebuilt at once. What is left behind adds no more nodes and tells of no failure.
    void GoOn();

    /// Sets the text of one detail node; `suffix` is "TITLE" or "URL". Nothing happens when the tree does not
    /// show that browser.
    void SetBrowserNodeText(const Browser& browser, const std::wstring& suffix, const std::wstring& text);

    // The handlers below ignore errors, step by step, and may be called in the middle of a rebuild.
    void BrowserCreated(const Browser& browser);
    void BrowserDestroyed();
    void tvBrowsers_Click();
    void tvBrowsers_DblClick();
    /// `button` is 2 for the right one.
    void tvBrowsers_MouseDown(int button);
    void mnuSB_Click();
    void mnuCB_Click();

 private:
    void Rebuild(int number);
    template <class Add>
    void AddUnlessThere(Add&& add);
    void ShowCount();
    void AddBrowserNode(const Browser& browser, const std::wstring& text);
    void AddTitleNode(const Browser& browser);
    void AddAddressNode(const Browser& browser);
    void RemoveFirstStaleNode();
    bool RootIsSelected() const;
    std::optional<std::int32_t> SelectedWindow() const;

    Parts m_parts;
    bool m_rebuilding = false;
    bool m_rebuildAgain = false;
    /// The number of the last rebuild: an earlier one that comes back was left behind.
    int m_lastRebuild = 0;
    /// Whether a created browser was told since the tree was cleared for the last rebuild.
    bool m_createdMeanwhile = false;
    bool m_removing = false;
    int m_windowsGone = 0;
};

}  // namespace kestrelguard
