#pragma once

#include <windows.h>

#include <wininet.h>

#include <string>

#include "desktop/driver/CacheFiller.h"
#include "desktop/driver/StandInLibraries.h"
#include "desktop/scenario/Scenario.h"

/// What the scenes about the browser's cache have in common.
namespace kestrelguard::desktop::scenario {

/// Empties the platform's cache and lays the stand-in's wininet.dll beside the guard that is about to start.
inline void PrepareCache(Stage& stage) {
    stage.transcript.Expect(testing::BindToOwnWinInet(),
                            L"the program uses the wininet.dll in its own folder");
    stage.folder.Add(testing::OwnFolder() + L"\\wininet.dll");
    CacheFiller::Empty();
}

/// An entry in the platform's cache and the file behind it, which was there when it was made.
inline std::string MakeEntry(Transcript& say, const std::string& address, const std::string& content) {
    std::string file = CacheFiller::Add(address, content);
    const std::wstring name(address.begin(), address.end());
    say.Expect(!file.empty() && FileExists(file), name + L" -> " + std::wstring(file.begin(), file.end()));
    return file;
}

}  // namespace kestrelguard::desktop::scenario
