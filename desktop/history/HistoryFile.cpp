#include "desktop/history/HistoryFile.h"

#include <cwchar>

namespace kestrelguard::desktop {

namespace {

std::wstring Wide(const std::string& text) {
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           wide.data(), static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::string Narrow(const std::wstring& text) {
    std::string narrow(text.size() * 3, '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(length));
    return narrow;
}

std::wstring Moment(const FILETIME& time) {
    wchar_t text[17] = {};
    std::swprintf(text, std::size(text), L"%08lx%08lx", time.dwHighDateTime, time.dwLowDateTime);
    return text;
}

FILETIME Moment(const std::wstring& text) {
    if (text.size() != 16) {
        return FILETIME{};
    }
    return FILETIME{static_cast<DWORD>(std::wcstoul(text.substr(8).c_str(), nullptr, 16)),
                    static_cast<DWORD>(std::wcstoul(text.substr(0, 8).c_str(), nullptr, 16))};
}

/// A field without the characters that separate fields and lines.
std::wstring Field(std::wstring text) {
    for (wchar_t& letter : text) {
        if (letter == L'\t' || letter == L'\n' || letter == L'\r') {
            letter = L' ';
        }
    }
    return text;
}

std::vector<std::wstring> Pieces(const std::wstring& text, wchar_t separator) {
    std::vector<std::wstring> pieces;
    std::size_t start = 0;
    for (std::size_t end = text.find(separator); end != std::wstring::npos;
         end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

}  // namespace

std::wstring HistoryFile::Path() {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetEnvironmentVariableW(L"KESTRELGUARD_HISTORY", path, MAX_PATH);
    return length > 0 && length < MAX_PATH ? path : L"C:\\history.txt";
}

std::vector<HistoryEntry> HistoryFile::Read() {
    const HANDLE file = CreateFileW(Path().c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::string text(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
    CloseHandle(file);
    text.resize(read);

    std::vector<HistoryEntry> entries;
    for (const std::wstring& line : Pieces(Wide(text), L'\n')) {
        const std::vector<std::wstring> fields = Pieces(line, L'\t');
        if (fields.size() == 6) {
            entries.push_back(HistoryEntry{fields[0], fields[1], Moment(fields[2]), Moment(fields[3]),
                                           Moment(fields[4]),
                                           static_cast<DWORD>(std::wcstoul(fields[5].c_str(), nullptr, 16))});
        }
    }
    return entries;
}

bool HistoryFile::Write(const std::vector<HistoryEntry>& entries) {
    std::wstring text;
    for (const HistoryEntry& entry : entries) {
        wchar_t flags[9] = {};
        std::swprintf(flags, std::size(flags), L"%08lx", entry.flags);
        text += Field(entry.url) + L'\t' + Field(entry.title) + L'\t' + Moment(entry.visited) + L'\t' +
                Moment(entry.updated) + L'\t' + Moment(entry.expires) + L'\t' + flags + L'\n';
    }
    const HANDLE file = CreateFileW(Path().c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const std::string bytes = Narrow(text);
    DWORD written = 0;
    const BOOL done = WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
    return done && written == bytes.size();
}

}  // namespace kestrelguard::desktop
