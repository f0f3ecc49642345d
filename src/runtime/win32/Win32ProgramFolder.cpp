#include "runtime/win32/Win32ProgramFolder.h"

#include <windows.h>

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

#include "runtime/LineSplitter.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"
#include "runtime/win32/CodePagePath.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

namespace {

std::int32_t RunTimeErrorOf(DWORD systemError) noexcept {
    switch (systemError) {
        case ERROR_FILE_NOT_FOUND:
            return RunTimeError::kFileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            return RunTimeError::kPathNotFound;
        case ERROR_ACCESS_DENIED:  // a read-only file or folder, a folder in the file's place
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS:
            return RunTimeError::kPathFileAccess;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT:
            return RunTimeError::kPermissionDenied;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return RunTimeError::kDiskFull;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return RunTimeError::kOutOfMemory;
        default:
            return RunTimeError::kDeviceIOError;
    }
}

[[noreturn]] void Fail(DWORD systemError) {
    throw RunTimeError(RunTimeErrorOf(systemError));
}

/// Throws the last system error as a run-time error unless a platform call succeeded.
void Require(BOOL succeeded) {
    if (succeeded == FALSE) {
        Fail(GetLastError());
    }
}

/// Opens a file; throws when that fails.
File Open(const std::string& path, DWORD access, DWORD share, DWORD creation) {
    File file(CreateFileA(path.c_str(), access, share, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        Fail(GetLastError());
    }
    return file;
}

/// Whether a file is there. A file about which the system cannot tell is there: whoever opens it next gets
/// the reason.
bool IsFile(const std::string& path) noexcept {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        return (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    }
    const DWORD error = GetLastError();
    return error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND;
}

/// Throws the error of a file that may not be written, as long as nothing has been done: a rename that
/// replaces it fails with less telling ones, or not at all. A missing file is no error.
void RequireWritable(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return;
    }
    if ((attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0) {
        Fail(ERROR_ACCESS_DENIED);
    }
    Open(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
}

std::string CompleteBeside(const std::string& path) {
    return path + ".new";
}

/// Ends a replacement on Windows 98 and Me that a kill interrupted: the complete text takes its place.
/// Answers whether there is nothing left to end.
bool EndReplacement(const std::string& path) {
    const std::string complete = CompleteBeside(path);
    if (!IsFile(complete)) {
        return true;
    }
    return (!IsFile(path) || DeleteFileA(path.c_str()) != FALSE) &&
           MoveFileA(complete.c_str(), path.c_str()) != FALSE;
}

/// Deletes a file at the end of the scope unless it was kept.
class Leftover {
 public:
    explicit Leftover(const std::string& path) : m_path(path) {}
    ~Leftover() {
        if (!m_kept) {
            DeleteFileA(m_path.c_str());
        }
    }
    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;
    void Keep() noexcept { m_kept = true; }

 private:
    const std::string& m_path;
    bool m_kept = false;
};

template <class Letter>
using ModuleFileName = DWORD WINAPI(HMODULE, Letter*, DWORD);

/// The name of the program's file, however long; empty when the system does not tell it.
template <class Letter>
std::basic_string<Letter> NameFrom(ModuleFileName<Letter>* getModuleFileName) {
    std::basic_string<Letter> name(MAX_PATH, Letter());
    DWORD length = getModuleFileName(nullptr, name.data(), MAX_PATH);
    while (length >= name.size()) {
        name.resize(name.size() * 2);
        length = getModuleFileName(nullptr, name.data(), static_cast<DWORD>(name.size()));
    }
    name.resize(length);
    return name;
}

std::wstring NameOfProgram() {
    std::wstring name = NameFrom<wchar_t>(GetModuleFileNameW);
    if (name.empty()) {
        // Windows 98 and Me, where names consist of the code page's letters anyway.
        name = FromAnsi(NameFrom<char>(GetModuleFileNameA));
    }
    Require(name.empty() ? FALSE : TRUE);
    return name;
}

/// Creates a file with that text and sees it through to the disk.
void WriteWhole(const std::string& path, std::string_view text) {
    const File file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    while (!text.empty()) {
        const auto size = static_cast<DWORD>(std::min<std::size_t>(text.size(), 1U << 20));
        DWORD written = 0;
        Require(WriteFile(file.Get(), text.data(), size, &written, nullptr));
        if (written == 0) {
            Fail(ERROR_DISK_FULL);
        }
        text.remove_prefix(written);
    }
    Require(FlushFileBuffers(file.Get()));
}

}  // namespace

std::wstring FolderOfProgram() {
    std::wstring folder = NameOfProgram();
    folder.resize(std::min(folder.size(), folder.rfind(L'\\')));
    return CodePagePath(folder);
}

Win32ProgramFolder::Win32ProgramFolder(std::wstring folder) : m_folder(std::move(folder)) {}

std::string Win32ProgramFolder::PathOf(const std::wstring& name) const {
    return ToAnsi(m_folder + L"\\" + name);
}

bool Win32ProgramFolder::Exists(const std::wstring& name) const {
    const std::string path = PathOf(name);
    return IsFile(path) || IsFile(CompleteBeside(path));
}

void Win32ProgramFolder::ReadLines(const std::wstring& name,
                                   const std::function<void(std::wstring_view)>& line) const {
    const std::string path = PathOf(name);
    const std::string& toRead = EndReplacement(path) ? path : CompleteBeside(path);
    const File file = Open(toRead, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);

    std::wstring wide;  // kept from line to line
    const auto handOver = [&](std::string_view text) {
        if (text.size() > INT_MAX) {
            throw RunTimeError(RunTimeError::kOutOfMemory);
        }
        // No code page has a byte that becomes more than one character.
        if (wide.size() < text.size()) {
            wide.resize(text.size());
        }
        const int size = static_cast<int>(text.size());
        const int length =
            size == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), size);
        line(std::wstring_view(wide.data(), static_cast<std::size_t>(length)));
    };

    LineSplitter<char> splitter;
    std::vector<char> piece(1U << 16);
    DWORD read = 0;
    do {
        Require(ReadFile(file.Get(), piece.data(), static_cast<DWORD>(piece.size()), &read, nullptr));
        splitter.Take(std::string_view(piece.data(), read), handOver);
    } while (read != 0);
    splitter.Finish(handOver);
}

void Win32ProgramFolder::Write(const std::wstring& name, std::wstring_view text) {
    const std::string path = PathOf(name);
    if (!EndReplacement(path)) {
        Fail(GetLastError());
    }
    RequireWritable(path);
    const std::string beside = path + ".tmp";
    Leftover leftover(beside);
    WriteWhole(beside, ToAnsi(text));
    Replace(path, beside);
    leftover.Keep();
}

/// Puts a complete file in the place of another, or of none.
void Win32ProgramFolder::Replace(const std::string& path, const std::string& complete) {
    if (m_renameReplaces) {
        // Somebody who reads a file just when it is replaced (a virus scanner) is soon done.
        for (int tries = 20;; --tries) {
            if (MoveFileExA(complete.c_str(), path.c_str(),
                            MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE) {
                return;
            }
            const DWORD error = GetLastError();
            if (error == ERROR_CALL_NOT_IMPLEMENTED) {
                m_renameReplaces = false;
                break;
            }
            const bool held = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
            if (!held || tries == 0) {
                // The file could be written to a moment ago: access is denied because it is open elsewhere.
                Fail(held ? ERROR_SHARING_VIOLATION : error);
            }
            Sleep(10);
        }
    }
    // From the first rename on the new text is the valid one, wherever a kill comes between.
    const std::string valid = CompleteBeside(path);
    Require(MoveFileA(complete.c_str(), valid.c_str()));
    if (!EndReplacement(path)) {
        const DWORD error = GetLastError();
        if (GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
            DeleteFileA(valid.c_str());  // failed as a whole: the old file stays the valid one
        }
        Fail(error);
    }
}

}  // namespace kestrelguard
