#include "runtime/win32/SystemLibrary.h"

#include <array>
#include <string>

namespace kestrelguard {

Library LoadSystemLibrary(const char* name) {
    std::array<char, MAX_PATH> folder;
    const UINT length = GetSystemDirectoryA(folder.data(), static_cast<UINT>(folder.size()));
    if (length == 0 || length >= folder.size()) {
        return {};
    }
    return Library(LoadLibraryA((std::string(folder.data(), length) + "\\" + name).c_str()));
}

}  // namespace kestrelguard
