#include "runtime/win32/Win32ProgramFolder.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"
#include "runtime/win32/Owners.h"
#include "tests/support/SpinFor.h"

namespace kestrelguard {
namespace {

constexpr wchar_t kName[] = L"Some.CFG";

/// Reads and writes the raw bytes of a file.
std::string BytesOf(const std::string& path) {
    const File file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr));
    EXPECT_EQ(read, bytes.size());
    return bytes;
}

void PutBytes(const std::string& path, std::string_view bytes) {
    const File file(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    ASSERT_TRUE(file);
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    ASSERT_EQ(written, bytes.size());
}

bool IsThere(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

template <class Step>
std::int32_t ErrorNumberOf(Step&& step) {
    try {
        step();
    } catch (const RunTimeError& error) {
        return error.Number();
    }
    return 0;
}

/// A fresh folder for each test; with the parameter true, writes end as on Windows 98.
class ProgramFolderTest : public testing::TestWithParam<bool> {
 protected:
    void SetUp() override {
        char temp[MAX_PATH] = {};
        ASSERT_NE(GetTempPathA(MAX_PATH, temp), 0U);
        char name[MAX_PATH] = {};
        ASSERT_NE(GetTempFileNameA(temp, "kgf", 0, name), 0U);
        ASSERT_TRUE(DeleteFileA(name));
        ASSERT_TRUE(CreateDirectoryA(name, nullptr));
        m_path = name;
        m_folder.emplace(FromAnsi(m_path));
        if (GetParam()) {
            m_folder->ReplaceAsOnWindows98();
        }
    }

    void TearDown() override {
        for (const std::string& name : Names()) {
            const std::string path = m_path + "\\" + name;
            SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (!DeleteFileA(path.c_str())) {
                RemoveDirectoryA(path.c_str());
            }
        }
        EXPECT_TRUE(RemoveDirectoryA(m_path.c_str()));
    }

    std::string Target() const { return m_path + "\\Some.CFG"; }
    std::string Tmp() const { return Target() + ".tmp"; }
    std::string New() const { return Target() + ".new"; }
    Win32ProgramFolder& Folder() { return *m_folder; }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        WIN32_FIND_DATAA found{};
        const HANDLE search = FindFirstFileA((m_path + "\\*").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE) {
            return names;
        }
        do {
            const std::string name = found.cFileName;
            if (name != "." && name != "..") {
                names.push_back(name);
            }
        } while (FindNextFileA(search, &found));
        FindClose(search);
        std::sort(names.begin(), names.end());
        return names;
    }

    std::vector<std::wstring> Lines() {
        std::vector<std::wstring> lines;
        Folder().ReadLines(kName, [&](std::wstring_view line) { lines.emplace_back(line); });
        return lines;
    }

    std::string m_path;
    std::optional<Win32ProgramFolder> m_folder;
};

using Strings = std::vector<std::string>;
using WideStrings = std::vector<std::wstring>;

TEST_P(ProgramFolderTest, WriteCreatesThenReplaces) {
    EXPECT_FALSE(Folder().Exists(kName));
    Folder().Write(kName, L"first\r\n");
    EXPECT_TRUE(Folder().Exists(kName));
    EXPECT_EQ(BytesOf(Target()), "first\r\n");
    Folder().Write(kName, L"second");
    EXPECT_EQ(BytesOf(Target()), "second");
    Folder().Write(kName, L"");
    EXPECT_EQ(BytesOf(Target()), "");
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
}

TEST_P(ProgramFolderTest, ReadsEveryKindOfLine) {
    PutBytes(Target(), std::string("a\r\nb\rc\nn\0l\r\n\r\nlast", 18));
    EXPECT_EQ(Lines(), (WideStrings{L"a", L"b", L"c", std::wstring(L"n\0l", 3), L"", L"last"}));
    PutBytes(Target(), "");
    EXPECT_EQ(Lines(), WideStrings{});
}

TEST_P(ProgramFolderTest, LineEndBetweenTwoPiecesOfTheFileIsOne) {
    for (std::size_t size = (1U << 16) - 2; size <= (1U << 16) + 1; ++size) {
        PutBytes(Target(), std::string(size, 'x') + "\r\ny");
        EXPECT_EQ(Lines(), (WideStrings{std::wstring(size, L'x'), L"y"}));
    }
}

TEST_P(ProgramFolderTest, EveryByteOfTheCodePageSurvives) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != '\r' && byte != '\n') {
            bytes += static_cast<char>(byte);
        }
    }
    PutBytes(Target(), bytes);
    const WideStrings lines = Lines();
    ASSERT_EQ(lines.size(), 1U);
    Folder().Write(kName, lines[0]);
    EXPECT_EQ(BytesOf(Target()), bytes);
}

TEST_P(ProgramFolderTest, WhatTheReaderThrowsPassesThrough) {
    PutBytes(Target(), "a\r\nb\r\n");
    int lines = 0;
    EXPECT_EQ(ErrorNumberOf([&] {
                  Folder().ReadLines(kName, [&](std::wstring_view) {
                      ++lines;
                      throw RunTimeError(RunTimeError::kOverflow);
                  });
              }),
              RunTimeError::kOverflow);
    EXPECT_EQ(lines, 1);
    // And the file is closed again.
    Folder().Write(kName, L"c");
    EXPECT_EQ(BytesOf(Target()), "c");
}

TEST_P(ProgramFolderTest, MissingFileAndFolderHaveTheirErrors) {
    EXPECT_EQ(ErrorNumberOf([&] { Lines(); }), RunTimeError::kFileNotFound);
    Win32ProgramFolder nowhere(FromAnsi(m_path) + L"\\nowhere");
    EXPECT_FALSE(nowhere.Exists(kName));
    EXPECT_EQ(ErrorNumberOf([&] { nowhere.ReadLines(kName, [](std::wstring_view) {}); }),
              RunTimeError::kPathNotFound);
    EXPECT_EQ(ErrorNumberOf([&] { nowhere.Write(kName, L"x"); }), RunTimeError::kPathNotFound);
}

TEST_P(ProgramFolderTest, ReadOnlyFileStaysAsItIs) {
    PutBytes(Target(), "old");
    ASSERT_TRUE(SetFileAttributesA(Target().c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(ErrorNumberOf([&] { Folder().Write(kName, L"new"); }), RunTimeError::kPathFileAccess);
    EXPECT_EQ(Lines(), WideStrings{L"old"});
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
}

TEST_P(ProgramFolderTest, FolderThatTakesNoNewFileLeavesTheOldOne) {
    PutBytes(Target(), "old");
    ASSERT_TRUE(CreateDirectoryA(Tmp().c_str(), nullptr));
    EXPECT_EQ(ErrorNumberOf([&] { Folder().Write(kName, L"new"); }), RunTimeError::kPathFileAccess);
    EXPECT_EQ(Lines(), WideStrings{L"old"});
    EXPECT_EQ(Names(), (Strings{"Some.CFG", "Some.CFG.tmp"}));
}

TEST_P(ProgramFolderTest, ReadOnlyFolderTakesNoFile) {
    // A folder of the machine below Wine that its private root does not let anybody write to.
    const std::string folder = "Z:\\usr";
    const std::string probe = folder + "\\kestrelguard-probe";
    if (const File file(CreateFileA(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        file || !IsThere(folder)) {
        GTEST_SKIP() << "no read-only folder here";
    }
    Win32ProgramFolder readOnly(FromAnsi(folder));
    EXPECT_FALSE(readOnly.Exists(kName));
    const std::int32_t error = ErrorNumberOf([&] { readOnly.Write(kName, L"x"); });
    EXPECT_TRUE(error == RunTimeError::kPathFileAccess || error == RunTimeError::kPermissionDenied) << error;
    EXPECT_FALSE(readOnly.Exists(kName));
}

TEST_P(ProgramFolderTest, FolderInTheFilesPlaceIsAnError) {
    ASSERT_TRUE(CreateDirectoryA(Target().c_str(), nullptr));
    EXPECT_FALSE(Folder().Exists(kName));
    EXPECT_NE(ErrorNumberOf([&] { Folder().Write(kName, L"new"); }), 0);
    EXPECT_EQ(ErrorNumberOf([&] { Lines(); }), RunTimeError::kPathFileAccess);
    RemoveDirectoryA(Target().c_str());
    Folder().Write(kName, L"new");
    EXPECT_EQ(Lines(), WideStrings{L"new"});
}

TEST_P(ProgramFolderTest, LockedFileIsAnErrorAndStaysAsItIs) {
    PutBytes(Target(), "old");
    {
        const File lock(CreateFileA(Target().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    0, nullptr));
        ASSERT_TRUE(lock);
        EXPECT_TRUE(Folder().Exists(kName));
        EXPECT_EQ(ErrorNumberOf([&] { Lines(); }), RunTimeError::kPermissionDenied);
        EXPECT_EQ(ErrorNumberOf([&] { Folder().Write(kName, L"new"); }), RunTimeError::kPermissionDenied);
    }
    EXPECT_EQ(Lines(), WideStrings{L"old"});
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
    Folder().Write(kName, L"new");
    EXPECT_EQ(Lines(), WideStrings{L"new"});
}

TEST_P(ProgramFolderTest, FileThatSomebodyKeepsOpenIsReplacedWholeOrNotAtAll) {
    PutBytes(Target(), "old");
    std::int32_t error = 0;
    {
        const File reader(CreateFileA(Target().c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(reader);
        error = ErrorNumberOf([&] { Folder().Write(kName, L"new"); });
    }
    if (error != 0) {
        EXPECT_EQ(error, RunTimeError::kPermissionDenied);
    }
    EXPECT_EQ(Lines(), WideStrings{error == 0 ? L"new" : L"old"});
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
}

TEST_P(ProgramFolderTest, LeftoverOfAKilledWriteIsReplaced) {
    PutBytes(Tmp(), "half a te");
    EXPECT_FALSE(Folder().Exists(kName));
    PutBytes(Target(), "old");
    EXPECT_EQ(Lines(), WideStrings{L"old"});
    Folder().Write(kName, L"new");
    EXPECT_EQ(BytesOf(Target()), "new");
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
}

TEST_P(ProgramFolderTest, CompleteTextBesideTheOldOneCounts) {
    PutBytes(Target(), "old");
    PutBytes(New(), "new");
    EXPECT_TRUE(Folder().Exists(kName));
    EXPECT_EQ(Lines(), WideStrings{L"new"});
    EXPECT_EQ(BytesOf(Target()), "new");
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
}

TEST_P(ProgramFolderTest, CompleteTextWithoutTheOldOneCounts) {
    PutBytes(New(), "new");
    EXPECT_TRUE(Folder().Exists(kName));
    EXPECT_EQ(Lines(), WideStrings{L"new"});
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
}

TEST_P(ProgramFolderTest, CompleteTextIsReadWhereItCannotTakeItsPlace) {
    PutBytes(Target(), "old");
    PutBytes(New(), "new");
    ASSERT_TRUE(SetFileAttributesA(Target().c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(Lines(), WideStrings{L"new"});
}

TEST_P(ProgramFolderTest, WriteLeavesNoCompleteTextOfAnEarlierOne) {
    PutBytes(New(), "newer than old");
    Folder().Write(kName, L"newest");
    EXPECT_EQ(BytesOf(Target()), "newest");
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
}

TEST_P(ProgramFolderTest, HundredMegabytesAreReadInLinearTime) {
    constexpr std::size_t kSize = 100'000'000;
    for (const std::size_t lineSize : {kSize, std::size_t{50}}) {
        {
            std::string bytes(kSize, 'x');
            for (std::size_t at = lineSize; at < kSize; at += lineSize) {
                bytes[at - 1] = '\n';
            }
            PutBytes(Target(), bytes);
        }
        std::size_t lines = 0;
        std::size_t characters = 0;
        Folder().ReadLines(kName, [&](std::wstring_view line) {
            ++lines;
            characters += line.size();
        });
        EXPECT_EQ(lines, kSize / lineSize);
        EXPECT_EQ(characters, kSize - (lines - 1));
    }
}

// --- kill

constexpr char kChildFolder[] = "KESTRELGUARD_TEST_FOLDER";
constexpr char kChildEvent[] = "kestrelguard-folder-test-wrote";

std::wstring Version(wchar_t letter) {
    return std::wstring(300'000, letter) + L"\r\nend";
}

/// Runs in a process of its own: writes one text after the other until it is killed.
TEST(ProgramFolderChild, DISABLED_WritesUntilKilled) {
    char path[MAX_PATH] = {};
    ASSERT_NE(GetEnvironmentVariableA(kChildFolder, path, MAX_PATH), 0U);
    const bool asOn98 = GetEnvironmentVariableA("KESTRELGUARD_TEST_98", nullptr, 0) != 0;
    const Handle wrote(OpenSemaphoreA(SEMAPHORE_ALL_ACCESS, FALSE, kChildEvent));
    ASSERT_TRUE(wrote);
    Win32ProgramFolder folder(FromAnsi(path));
    if (asOn98) {
        folder.ReplaceAsOnWindows98();
    }
    for (std::size_t turn = 0;; ++turn) {
        folder.Write(kName, Version(static_cast<wchar_t>(L'a' + turn % 26)));
        ReleaseSemaphore(wrote.Get(), 1, nullptr);
    }
}

TEST_P(ProgramFolderTest, KillInTheMiddleOfAHundredWritesLeavesAWholeText) {
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    std::string command = std::string("\"") + self +
                          "\" --gtest_also_run_disabled_tests --gtest_brief=1 "
                          "--gtest_filter=ProgramFolderChild.DISABLED_WritesUntilKilled";
    SetEnvironmentVariableA(kChildFolder, m_path.c_str());
    SetEnvironmentVariableA("KESTRELGUARD_TEST_98", GetParam() ? "1" : nullptr);
    for (int round = 0; round < 10; ++round) {
        const Handle wrote(CreateSemaphoreA(nullptr, 0, 1'000'000, kChildEvent));
        STARTUPINFOA start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION child{};
        ASSERT_TRUE(CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &start, &child));
        const Handle process(child.hProcess);
        const Handle thread(child.hThread);
        for (int writes = 0; writes < 5 + round * 11; ++writes) {
            const HANDLE either[] = {wrote.Get(), process.Get()};
            ASSERT_EQ(WaitForMultipleObjects(2, either, FALSE, 30'000), WAIT_OBJECT_0) << "the child is gone";
        }
        // A different moment of the next write each time.
        SpinFor(round * 700);
        ASSERT_TRUE(TerminateProcess(process.Get(), 1));
        ASSERT_EQ(WaitForSingleObject(process.Get(), 30'000), WAIT_OBJECT_0);

        ASSERT_TRUE(Folder().Exists(kName));
        const WideStrings lines = Lines();
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_TRUE(lines[0] + L"\r\n" + lines[1] == Version(lines[0].at(0)));
        EXPECT_FALSE(IsThere(New()));
    }
    Folder().Write(kName, L"after all");
    EXPECT_EQ(Names(), Strings{"Some.CFG"});
    SetEnvironmentVariableA(kChildFolder, nullptr);
    SetEnvironmentVariableA("KESTRELGUARD_TEST_98", nullptr);
}

INSTANTIATE_TEST_SUITE_P(Replacing, ProgramFolderTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& suite) {
                             return suite.param ? "AsOnWindows98" : "ByOneRename";
                         });

TEST(FolderOfProgram, HoldsTheProgram) {
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    const std::wstring path = FromAnsi(self);
    const std::wstring folder = FolderOfProgram();
    EXPECT_EQ(path.substr(0, folder.size()), folder);
    EXPECT_EQ(path.rfind(L'\\'), folder.size());
}

}  // namespace
}  // namespace kestrelguard
