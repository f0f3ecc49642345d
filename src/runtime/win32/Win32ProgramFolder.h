#pragma once

#include <string>

#include "runtime/System.h"

namespace kestrelguard {

/// The folder that holds the running program, without a backslash at its end and in letters of the system
/// code page. Throws as CodePagePath does, and when the system does not tell the program's file.
std::wstring FolderOfProgram();

/// The program's text files, 8-bit text in the system code page, in one real folder.
///
/// Beside a file NAME there may lie, after a kill in the middle of a write:
/// - NAME.tmp: a text that was not complete; the next write replaces it;
/// - NAME.new (Windows 98 and Me alone, which cannot rename onto an existing file): a complete text that is
///   on its way to replace NAME. It counts as NAME, and whatever is done with NAME next ends the replacement.
class Win32ProgramFolder final : public ProgramFolder {
 public:
    /// `folder` has no backslash at its end.
    explicit Win32ProgramFolder(std::wstring folder);

    bool Exists(const std::wstring& name) const override;
    void ReadLines(const std::wstring& name,
                   const std::function<void(std::wstring_view)>& line) const override;
    void Write(const std::wstring& name, std::wstring_view text) override;

    /// Makes every later write end as on Windows 98 and Me; for tests.
    void ReplaceAsOnWindows98() { m_renameReplaces = false; }

 private:
    std::string PathOf(const std::wstring& name) const;
    void Replace(const std::string& path, const std::string& complete);

    std::wstring m_folder;
    bool m_renameReplaces = true;
};

}  // namespace kestrelguard
