#pragma once

#include <windows.h>

#include <objbase.h>
#include <shlguid.h>
#include <urlhist.h>

#include <sstream>
#include <string>
#include <vector>

#include "desktop/Com.h"
#include "desktop/driver/Files.h"
#include "desktop/driver/Process.h"
#include "desktop/driver/StandInLibraries.h"

/// What the browser leaves behind for the program to clean: the cache is the platform's (see CacheFiller),
/// the history the stand-in's.
namespace kestrelguard::testing {

inline constexpr wchar_t kHistoryFile[] = L"C:\\history.txt";
/// The first lines of the file of saved cookies.
inline constexpr char kHeader[] = "'#\r\n'#\r\n'#\r\n'#\r\n";
inline constexpr UINT_PTR kWasherTimer = 1;

/// Programs started from now on bind to the stand-in's wininet.dll in their own folder, and everybody finds
/// the stand-in's history. For the life of the session.
inline bool UseStandInLibraries() {
    const HMODULE library = LoadLibraryW((OwnFolder() + L"\\url_history.dll").c_str());
    if (!BindToOwnWinInet() || library == nullptr) {
        return false;
    }
    const auto registration = reinterpret_cast<HRESULT(WINAPI*)()>(
        reinterpret_cast<void*>(GetProcAddress(library, "DllRegisterServer")));
    return registration != nullptr && registration() == S_OK;
}

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

/// Puts two addresses into the history.
inline bool VisitTwoPages() {
    desktop::ComPtr<IUrlHistoryStg2> history;
    if (CoCreateInstance(CLSID_CUrlHistory, nullptr, CLSCTX_INPROC_SERVER, IID_IUrlHistoryStg2,
                         history.PutVoid()) != S_OK) {
        return false;
    }
    for (const wchar_t* const address : {L"http://news.example/", L"http://shop.example/"}) {
        if (history->AddUrl(address, L"A page", 0) != S_OK) {
            return false;
        }
    }
    return true;
}
/// The addresses in the history.
inline std::size_t Visited() {
    return Lines(ReadBytes(kHistoryFile)).size();
}

}  // namespace kestrelguard::testing
