#pragma once

#include <string>

namespace kestrelguard::testing {

/// A new, empty folder among the session's temporary files; it goes with everything in it when this does.
class TemporaryFolder {
 public:
    /// Throws std::runtime_error when it cannot be made.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Without a backslash at its end.
    const std::wstring& Path() const { return m_path; }

 private:
    std::wstring m_path;
};

bool FileExists(const std::wstring& path);
/// The bytes of a file. Empty when there is none; see FileExists.
std::string ReadBytes(const std::wstring& path);
/// Makes or replaces a file. Throws std::runtime_error when it cannot.
void WriteBytes(const std::wstring& path, const std::string& bytes);

}  // namespace kestrelguard::testing
