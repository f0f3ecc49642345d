#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "controls/Controls.h"
#include "controls/Lists.h"
#include "controls/MessageBoxes.h"
#include "controls/MessageLoop.h"
#include "controls/Tree.h"
#include "runtime/Browser.h"
#include "runtime/LineSplitter.h"
#include "runtime/RunTimeError.h"
#include "runtime/System.h"

/// One fake for each interface of controls/ and of runtime/Browser.h and runtime/System.h: what a handler
/// reads are public fields, what it did is kept in public fields.
namespace kestrelguard {

/// Lets one call out of many fail. Hand the same object to all fakes of a test, count the calls of a good
/// run, then let each of them fail in turn.
class Faults {
 public:
    /// The call of that position, counted from 0, throws `number` (kOutOfMemory from the allocator too when
    /// number is 0).
    void FailAt(int position, std::int32_t number) {
        m_failAt = position;
        m_number = number;
        m_calls = 0;
    }
    int Calls() const { return m_calls; }
    bool Hit() const { return m_failAt >= 0 && m_calls > m_failAt; }

    void Call() {
        if (m_calls++ == m_failAt) {
            if (m_number == 0) {
                throw std::bad_alloc();
            }
            throw RunTimeError(m_number);
        }
    }

 private:
    int m_failAt = -1;
    std::int32_t m_number = 0;
    int m_calls = 0;
};

/// What every fake has: its optional Faults.
class Fallible {
 public:
    Faults* faults = nullptr;

 protected:
    ~Fallible() = default;
    void Call() const {
        if (faults != nullptr) {
            faults->Call();
        }
    }
};

class FakeCheckBox : public CheckBox, public Fallible {
 public:
    explicit FakeCheckBox(int first = 0) : value(first) {}
    int Value() const override {
        Call();
        return value;
    }
    void SetValue(int newValue) override {
        Call();
        value = newValue;
    }
    int value;
};

/// Give all buttons of a group each other's addresses with FakeOptionButton::Group.
class FakeOptionButton : public OptionButton, public Fallible {
 public:
    explicit FakeOptionButton(bool first = false) : selected(first) {}
    static void Group(const std::vector<FakeOptionButton*>& buttons) {
        for (FakeOptionButton* const button : buttons) {
            button->m_group = buttons;
        }
    }
    bool Selected() const override {
        Call();
        return selected;
    }
    void Select(bool select) override {
        Call();
        if (select) {
            for (FakeOptionButton* const button : m_group) {
                button->selected = false;
            }
        }
        selected = select;
    }
    bool selected;

 private:
    std::vector<FakeOptionButton*> m_group;
};

class FakeCaption : public Caption, public Fallible {
 public:
    void SetCaption(const std::wstring& newText) override {
        Call();
        text = newText;
        ++changes;
    }
    std::wstring text;
    int changes = 0;
};

class FakeToolTip : public ToolTip, public Fallible {
 public:
    void SetToolTip(const std::wstring& newText) override {
        Call();
        text = newText;
    }
    std::wstring text;
};

class FakeTextBox : public TextBox, public Fallible {
 public:
    explicit FakeTextBox(std::wstring first = {}) : text(std::move(first)) {}
    std::wstring Text() const override {
        Call();
        return text;
    }
    void SetText(const std::wstring& newText) override {
        Call();
        text = newText;
        ++changes;
    }
    std::wstring text;
    int changes = 0;
};

class FakeDropDown : public DropDown, public Fallible {
 public:
    explicit FakeDropDown(std::vector<std::wstring> itemTexts, std::wstring first = {})
        : items(std::move(itemTexts)), text(std::move(first)) {}
    std::wstring Text() const override {
        Call();
        return text;
    }
    void SetText(const std::wstring& newText) override {
        Call();
        if (std::find(items.begin(), items.end(), newText) != items.end()) {
            text = newText;
        }
    }
    std::vector<std::wstring> items;
    std::wstring text;
};

class FakeSwitch : public Switch, public Fallible {
 public:
    explicit FakeSwitch(bool first = false) : enabled(first) {}
    bool Enabled() const override {
        Call();
        return enabled;
    }
    void SetEnabled(bool enable) override {
        Call();
        enabled = enable;
    }
    bool enabled;
};

class FakeVisibility : public Visibility, public Fallible {
 public:
    explicit FakeVisibility(bool first = true) : visible(first) {}
    void SetVisible(bool show) override {
        Call();
        visible = show;
        changes.push_back(show);
    }
    bool visible;
    std::vector<bool> changes;
};

class FakeCheckMark : public CheckMark, public Fallible {
 public:
    explicit FakeCheckMark(bool first = false) : checked(first) {}
    bool Checked() const override {
        Call();
        return checked;
    }
    void SetChecked(bool check) override {
        Call();
        checked = check;
    }
    bool checked;
};

class FakeListRows : public ListRows, public Fallible {
 public:
    std::int32_t Count() const override {
        Call();
        return static_cast<std::int32_t>(rows.size());
    }
    std::wstring Row(std::int32_t row) const override {
        Call();
        return Has(row) ? rows[static_cast<std::size_t>(row)] : std::wstring();
    }
    void Append(const std::wstring& text) override {
        Call();
        appendedWhileDrawn = appendedWhileDrawn || fills == 0;
        rows.push_back(text);
    }
    void Remove(std::int32_t row) override {
        Call();
        if (!Has(row)) {
            throw RunTimeError(RunTimeError::kInvalidCall);
        }
        rows.erase(rows.begin() + row);
    }
    void Clear() override {
        Call();
        rows.clear();
    }
    void BeginFill() override { ++fills; }
    void EndFill() override { --fills; }

    std::deque<std::wstring> rows;
    int fills = 0;
    bool appendedWhileDrawn = false;

 private:
    bool Has(std::int32_t row) const { return row >= 0 && static_cast<std::size_t>(row) < rows.size(); }
};

/// A list window that is looked at all the time and takes so many rows, or any number.
class FakeListDisplay : public ListDisplay {
 public:
    void ShowRowsOf(const ListRows* newSource) noexcept override {
        source = newSource;
        shown.clear();
        RowsAppended();
    }
    void RowsAppended() noexcept override {
        ++looks;
        while (source != nullptr && static_cast<std::int32_t>(shown.size()) < source->Count() &&
               shown.size() < room) {
            shown.push_back(source->Row(static_cast<std::int32_t>(shown.size())));
        }
    }
    void RowRemoved(std::int32_t row) noexcept override {
        if (static_cast<std::size_t>(row) < shown.size()) {
            shown.erase(shown.begin() + row);
        }
        RowsAppended();
    }

    const ListRows* source = nullptr;
    std::deque<std::wstring> shown;
    std::size_t room = static_cast<std::size_t>(-1);
    /// How often it was told of rows.
    int looks = 0;
};

class FakeListSelection : public ListSelection, public Fallible {
 public:
    std::int32_t SelectedRow() const override {
        Call();
        return row;
    }
    void SelectRow(std::int32_t newRow) override {
        Call();
        row = newRow;
    }
    std::int32_t row = -1;
};

class FakeMessageBoxes : public MessageBoxes, public Fallible {
 public:
    struct Box {
        std::wstring text;
        std::wstring caption;
        std::uint32_t style;
    };
    int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t style) override {
        Call();
        shown.push_back(Box{text, caption, style});
        if (whileShown) {
            whileShown();
        }
        return answer;
    }
    std::vector<Box> shown;
    int answer = 1;
    /// What happens while the box waits for the user.
    std::function<void()> whileShown;
};

class FakeBrowser : public Browser, public Fallible {
 public:
    explicit FakeBrowser(std::int32_t frame = 0) : handle(frame) {}
    std::int32_t Handle() const override {
        Call();
        return handle;
    }
    std::wstring LocationName() const override {
        Call();
        return locationName;
    }
    std::wstring LocationURL() const override {
        Call();
        return locationURL;
    }
    std::wstring StatusText() const override {
        Call();
        return statusText;
    }
    void Navigate(const std::wstring& address) override {
        Call();
        navigated.push_back(address);
    }
    void Navigate2(const std::wstring& address) override {
        Call();
        navigated2.push_back(address);
    }
    std::int32_t handle;
    std::wstring locationName;
    std::wstring locationURL;
    std::wstring statusText;
    std::vector<std::wstring> navigated;
    std::vector<std::wstring> navigated2;
};

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

class FakeLocale : public Locale, public Fallible {
 public:
    std::wstring GeneralDateNow() const override {
        Call();
        return now;
    }
    std::wstring ThousandsSeparator() const override {
        Call();
        return thousandsSeparator;
    }
    std::wstring now = L"5/17/2004 3:05:09 PM";
    std::wstring thousandsSeparator = L",";
};

/// Files as texts in memory.
class FakeProgramFolder : public ProgramFolder, public Fallible {
 public:
    bool Exists(const std::wstring& name) const override {
        ++existsCalls;
        Call();
        return files.contains(name);
    }
    void ReadLines(const std::wstring& name,
                   const std::function<void(std::wstring_view)>& line) const override {
        ++reads;
        Call();
        const auto file = files.find(name);
        if (file == files.end()) {
            throw RunTimeError(RunTimeError::kFileNotFound);
        }
        // Each line comes from a read that may fail.
        LineSplitter<wchar_t> splitter;
        const auto handOver = [&](std::wstring_view text) {
            Call();
            line(text);
        };
        splitter.Take(file->second, handOver);
        splitter.Finish(handOver);
    }
    void Write(const std::wstring& name, std::wstring_view text) override {
        ++writes;
        Call();
        files[name] = text;
    }
    std::map<std::wstring, std::wstring> files;
    mutable int existsCalls = 0;
    mutable int reads = 0;
    int writes = 0;
};

class FakeMessageLoop : public MessageLoop, public Fallible {
 public:
    void DoEvents() override {
        ++runs;
        if (pending) {
            pending();
        }
    }
    int runs = 0;
    /// What arrives during the run.
    std::function<void()> pending;
};

}  // namespace kestrelguard
