#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "controls/Faults.h"
#include "controls/Lists.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

template <class Interface>
class FakeRows : public Interface, public Fallible {
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

using FakeListRows = FakeRows<ListRows>;

/// The code page of this list spells 7-bit characters alone.
class FakeAddressRows : public FakeRows<AddressRows> {
 public:
    void AppendAddress(const std::wstring& text, const std::string& address) override {
        Append(text);
        addresses.resize(rows.size() - 1);
        addresses.push_back(address);
    }
    std::string Address(std::int32_t row) const override {
        const auto at = static_cast<std::size_t>(row);
        if (at < addresses.size() && !addresses[at].empty()) {
            Call();
            return addresses[at];
        }
        std::string spelled;
        for (const wchar_t letter : Row(row)) {
            spelled += static_cast<unsigned long>(letter) < 0x80 ? static_cast<char>(letter) : '?';
        }
        return spelled;
    }
    void Remove(std::int32_t row) override {
        FakeRows::Remove(row);
        if (static_cast<std::size_t>(row) < addresses.size()) {
            addresses.erase(addresses.begin() + row);
        }
    }
    void Clear() override {
        FakeRows::Clear();
        addresses.clear();
    }

    /// Those of the rows that came with one; empty for others.
    std::deque<std::string> addresses;
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

}  // namespace kestrelguard
