#pragma once

#include <string>
#include <string_view>

#include "controls/Controls.h"
#include "controls/Lists.h"
#include "runtime/System.h"
#include "runtime/TextSet.h"

namespace kestrelguard {

/// The file of the saved cookies and the collection that it fills.
class SavedCookiesStore {
 public:
    /// `savedCookies` is the program-wide collection `SavedCookies`; all three outlive this object.
    SavedCookiesStore(ProgramFolder& folder, const Locale& locale, TextSet& savedCookies)
        : m_folder(folder), m_locale(locale), m_savedCookies(savedCookies) {}

    /// "Read" fills the collection from the file, "WRITE" writes the file from the rows of `savecLST` (from
    /// the collection when there is no such list). Kept: the texts are compared as they stand, so that any
    /// other mode writes a file that is there, and does nothing when there is none. The file's errors
    /// (kPermissionDenied, kPathFileAccess, kDiskFull, kDeviceIOError, ...) are thrown; then the collection
    /// or the file is what it was before.
    void SavedCookiesFile(std::wstring_view Mode, const ListRows* savecLST = nullptr);

    /// The last write failed: the file does not hold what was saved or removed.
    bool Unwritten() const noexcept { return m_unwritten; }
    /// Tries a failed write once more, from the collection.
    void WriteUnwritten();

 private:
    void Read();
    void Write(const ListRows* savecLST);

    ProgramFolder& m_folder;
    const Locale& m_locale;
    TextSet& m_savedCookies;
    bool m_unwritten = false;
};

/// The cache window's saving and removing of cookies: every change is made to the collection and to the
/// window's list.
class SavedCookiesEditor {
 public:
    /// All of it belongs to the caller and outlives this object.
    struct Parts {
        /// `kg_CLST`, the cache entries.
        const ListRows& cacheRows;
        const ListSelection& cacheSelection;
        /// `savecLST`, the saved cookies.
        ListRows& savedRows;
        const ListSelection& savedSelection;
        ToolTip& savedTip;
        TextSet& savedCookies;
    };

    explicit SavedCookiesEditor(const Parts& parts) : m_parts(parts) {}

    void SaveC_Click();
    void RemoveC_Click();
    void savecLST_Click();

    /// Whether a cookie was saved or removed since the window was created.
    bool SavedListChanged() const { return m_savedListChanged; }

 private:
    Parts m_parts;
    bool m_savedListChanged = false;
};

}  // namespace kestrelguard
