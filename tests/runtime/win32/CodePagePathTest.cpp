#include "runtime/win32/CodePagePath.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {
namespace {

/// A name in letters that no single code page of one byte a letter holds together.
constexpr wchar_t kName[] = L"\u0438\u043c\u044f-\u03b8\u03c9-\u05d0";

class CodePagePathTest : public testing::Test {
 protected:
    CodePagePathTest() {
        wchar_t temp[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, temp);
        m_folder = std::wstring(temp) + kName;
        m_made = CreateDirectoryW(m_folder.c_str(), nullptr) != FALSE;
    }
    ~CodePagePathTest() override { RemoveDirectoryW(m_folder.c_str()); }

    std::wstring m_folder;
    bool m_made = false;
};

TEST_F(CodePagePathTest, APlainPathStaysAsItIs) {
    EXPECT_TRUE(CodePageSpells(L"C:\\Program Files\\Kestrelguard"));
    EXPECT_EQ(CodePagePath(L"C:\\Program Files\\No such folder"), L"C:\\Program Files\\No such folder");
}

TEST_F(CodePagePathTest, ALetterThatOnlyLooksAlikeIsNotSpelled) {
    EXPECT_FALSE(CodePageSpells(L"Ko\u0142o"));
    EXPECT_FALSE(CodePageSpells(kName));
}

TEST_F(CodePagePathTest, OtherLettersGiveTheShortForm) {
    ASSERT_TRUE(m_made);
    const std::wstring path = CodePagePath(m_folder);
    EXPECT_TRUE(CodePageSpells(path));
    const DWORD attributes = GetFileAttributesA(ToAnsi(path).c_str());
    ASSERT_NE(attributes, INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(attributes & FILE_ATTRIBUTE_DIRECTORY, 0U);
    EXPECT_TRUE(RemoveDirectoryA(ToAnsi(path).c_str()));
    EXPECT_EQ(GetFileAttributesW(m_folder.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(CodePagePathTest, WithoutAShortFormItSaysWhatToDo) {
    ASSERT_TRUE(RemoveDirectoryW(m_folder.c_str()));
    try {
        CodePagePath(m_folder);
        FAIL() << "no error";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.Number(), RunTimeError::kPathNotFound);
        EXPECT_NE(error.Description().find(L"Please move the program"), std::wstring::npos);
    }
}

}  // namespace
}  // namespace kestrelguard
