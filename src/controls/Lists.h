#pragma once

#include <cstdint>
#include <string>

namespace kestrelguard {

/// The rows of a list box, counted from 0.
class ListRows {
 public:
    virtual ~ListRows() = default;
    virtual std::int32_t Count() const = 0;
    /// The row's text; an empty text for a row that is not there.
    virtual std::wstring Row(std::int32_t row) const = 0;
    /// The same text behind what is there: a list that has it in memory makes no text of its own for each
    /// row.
    virtual void AppendRow(std::int32_t row, std::wstring& to) const { to.append(Row(row)); }
    virtual void Append(const std::wstring& text) = 0;
    /// Throws kInvalidCall for a row that is not there.
    virtual void Remove(std::int32_t row) = 0;
    virtual void Clear() = 0;
    /// Many appends are coming / are over: the list is not drawn between the two. Calls nest.
    virtual void BeginFill() {}
    virtual void EndFill() {}
};

/// Rows that also hold the 8-bit texts that they came from: the code page may be unable to spell these back.
class AddressRows : public ListRows {
 public:
    /// Appends the text, which is how the code page reads the address.
    virtual void AppendAddress(const std::wstring& text, const std::string& address) = 0;
    /// The bytes that the row came with; for one that came as a text alone what the code page makes of it,
    /// for a row that is not there nothing.
    virtual std::string Address(std::int32_t row) const = 0;
};

/// BeginFill now, EndFill at the end of the scope.
class ListFill {
 public:
    explicit ListFill(ListRows& rows) : m_rows(rows) { m_rows.BeginFill(); }
    ~ListFill() { m_rows.EndFill(); }
    ListFill(const ListFill&) = delete;
    ListFill& operator=(const ListFill&) = delete;

 private:
    ListRows& m_rows;
};

/// A window that shows rows which somebody else holds: from the first on, as many as it can. What it cannot
/// show is held all the same, so showing never fails.
class ListDisplay {
 public:
    virtual ~ListDisplay() = default;
    /// Shows these rows from now on, which call the two below after every change; null for none.
    virtual void ShowRowsOf(const ListRows* rows) noexcept = 0;
    virtual void RowsAppended() noexcept = 0;
    virtual void RowRemoved(std::int32_t row) noexcept = 0;
};

/// The selected row of a list box.
class ListSelection {
 public:
    virtual ~ListSelection() = default;
    /// -1 when no row is selected.
    virtual std::int32_t SelectedRow() const = 0;
    virtual void SelectRow(std::int32_t row) = 0;
};

}  // namespace kestrelguard
