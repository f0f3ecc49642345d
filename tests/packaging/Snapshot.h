#pragma once

#include <map>
#include <string>
#include <vector>

namespace kestrelguard::testing {

/// All that an installer might touch: the files of drive C: with their sizes and times, and the values below
/// HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE\Software. Left out is the folder for temporary files: an
/// uninstaller runs from there and cannot delete itself; and what Wine notes of the session.
class Snapshot {
 public:
    static Snapshot Take();

    /// What is in `now` and was not before, is no more, or is another: "+ path", "- path", "* path", sorted.
    std::vector<std::string> Changes(const Snapshot& now) const;

 private:
    std::map<std::string, std::string> m_things;
};

}  // namespace kestrelguard::testing
