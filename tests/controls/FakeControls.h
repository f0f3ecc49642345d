#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "controls/Controls.h"
#include "controls/Faults.h"

/// One fake for each interface of controls/Controls.h: what a handler reads are public fields, what it did is
/// kept in public fields.
namespace kestrelguard {

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

}  // namespace kestrelguard
