#include "cachewindow/SavedCookies.h"

#include <string_view>
#include <utility>

#include "runtime/ErrorsIgnored.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr wchar_t kFileName[] = L"KestrelC.CFG";
constexpr std::wstring_view kRead = L"Read";
constexpr std::wstring_view kWrite = L"WRITE";

constexpr wchar_t kTitleLine[] = L"'# Kestrelguard v2.0 - Saved Cookies";
constexpr wchar_t kModifiedStart[] = L"'# Configuration Modified: (";
constexpr wchar_t kModifiedEnd[] = L")";
constexpr wchar_t kWarningLine[] = L"'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING";
constexpr wchar_t kRulerLine[] = L"'###################";
constexpr int kHeaderLines = 4;

constexpr std::wstring_view kCookieMark = L"Cookie:";
/// Kept: what may be saved is told by a looser text than what is read back and spared.
constexpr std::wstring_view kLooseCookieMark = L"Cookie";

std::wstring SelectedText(const ListRows& rows, const ListSelection& selection) {
    const std::int32_t row = selection.SelectedRow();
    return row < 0 ? std::wstring() : rows.Row(row);
}

}  // namespace

void SavedCookiesStore::SavedCookiesFile(std::wstring_view Mode, const ListRows* savecLST) {
    if (Mode != kWrite && !m_folder.Exists(kFileName)) {
        return;
    }
    if (Mode != kRead) {
        Write(savecLST);
    } else {
        Read();
    }
}

/// The header lines are skipped by their position, whatever they hold.
void SavedCookiesStore::Read() {
    TextSet fresh;
    int lines = 0;
    m_folder.ReadLines(kFileName, [&](std::wstring_view line) {
        if (lines < kHeaderLines) {
            ++lines;
        } else if (Contains(line, kCookieMark)) {
            // A line that is there twice is read once. No other failure drops a cookie.
            const std::int32_t error = ErrorOf([&] { fresh.Add(line); });
            if (error != 0 && error != RunTimeError::kDuplicateKey) {
                throw RunTimeError(error);
            }
        }
    });
    m_savedCookies = std::move(fresh);
}

void SavedCookiesStore::WriteUnwritten() {
    if (m_unwritten) {
        Write(nullptr);
    }
}

void SavedCookiesStore::Write(const ListRows* savecLST) {
    m_unwritten = true;  // until it is
    std::wstring text;
    const auto writeLine = [&text](std::wstring_view line) { text.append(line).append(kLineEnd); };
    writeLine(kTitleLine);
    writeLine(kModifiedStart + m_locale.GeneralDateNow() + kModifiedEnd);
    writeLine(kWarningLine);
    writeLine(kRulerLine);
    std::wstring rows;
    const auto readRows = [&] {
        const std::int32_t count = savecLST->Count();
        for (std::int32_t row = 0; row < count; ++row) {
            rows.append(savecLST->Row(row)).append(kLineEnd);
        }
    };
    // The collection holds the same texts: a list that cannot be read loses no cookie.
    if (savecLST == nullptr || ErrorOf(readRows) != 0) {
        rows.clear();
        for (const std::wstring& address : m_savedCookies) {
            rows.append(address).append(kLineEnd);
        }
    }
    text += rows;
    m_folder.Write(kFileName, text);
    m_unwritten = false;
}

void SavedCookiesEditor::SaveC_Click() {
    const std::wstring address = SelectedText(m_parts.cacheRows, m_parts.cacheSelection);
    if (address.empty() || !Contains(address, kLooseCookieMark)) {
        return;
    }
    // One that is saved already, or cannot be added, is passed over without a word.
    if (ErrorOf([&] { m_parts.savedCookies.Add(address); }) == 0) {
        try {
            m_parts.savedRows.Append(address);
        } catch (...) {
            m_parts.savedCookies.Remove(address);  // the two hold the same, also when the list is full
            throw;
        }
        m_savedListChanged = true;
    }
}

void SavedCookiesEditor::RemoveC_Click() {
    const std::int32_t row = m_parts.savedSelection.SelectedRow();
    const std::wstring address = SelectedText(m_parts.savedRows, m_parts.savedSelection);
    if (address.empty()) {
        return;
    }
    m_parts.savedCookies.Remove(address);
    m_parts.savedRows.Remove(row);
    m_savedListChanged = true;
}

void SavedCookiesEditor::savecLST_Click() {
    m_parts.savedTip.SetToolTip(SelectedText(m_parts.savedRows, m_parts.savedSelection));
}

}  // namespace kestrelguard
