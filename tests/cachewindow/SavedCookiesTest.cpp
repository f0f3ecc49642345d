#include "cachewindow/SavedCookies.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "SavedCookiesWorld.h"

namespace kestrelguard {
namespace {

constexpr wchar_t kHeader[] =
    L"'# Kestrelguard v2.0 - Saved Cookies\r\n"
    L"'# Configuration Modified: (5/17/2004 3:05:09 PM)\r\n"
    L"'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING\r\n"
    L"'###################\r\n";

class SavedCookiesTest : public ::testing::Test, protected SavedCookiesWorld {
 protected:
    void Save(const std::wstring& address) {
        saved.Add(address);
        savecLST.rows.push_back(address);
    }

    FakeListRows kg_CLST;
    FakeListSelection cacheSelection;
    FakeListRows savecLST;
    FakeListSelection savedSelection;
    FakeToolTip savedTip;
    SavedCookiesEditor editor{
        SavedCookiesEditor::Parts{kg_CLST, cacheSelection, savecLST, savedSelection, savedTip, saved}};
};

using Texts = std::vector<std::wstring>;
using Rows = std::deque<std::wstring>;

TEST_F(SavedCookiesTest, AMissingFileReadsAsNothing) {
    saved.Add(L"Cookie:kept");
    store.SavedCookiesFile(L"Read");
    EXPECT_EQ(folder.reads, 0);
    EXPECT_EQ(folder.writes, 0);
    EXPECT_EQ(Saved(), (Texts{L"Cookie:kept"}));
}

TEST_F(SavedCookiesTest, HeaderLinesAloneReadAsAnEmptyList) {
    Read(kHeader);
    EXPECT_TRUE(saved.Empty());
}

TEST_F(SavedCookiesTest, ReadsTheLinesThatHoldACookie) {
    Read(std::wstring(kHeader) +
         L"Cookie:jane@bank.example/\r\n"
         L"\r\n"
         L"http://news.example/\r\n"
         L"cookie:lower@case.example/\r\n"
         L"Cookie without its colon\r\n"
         L" a line with Cookie:inside@it.example/ \r\n"
         L"Cookie:last@line.example/");
    EXPECT_EQ(Saved(), (Texts{L"Cookie:jane@bank.example/", L" a line with Cookie:inside@it.example/ ",
                              L"Cookie:last@line.example/"}));
}

TEST_F(SavedCookiesTest, TheFirstFourLinesAreSkippedWhateverTheyHold) {
    Read(L"Cookie:1\r\nCookie:2\r\nCookie:3\r\nCookie:4\r\nCookie:5\r\nCookie:6\r\n");
    EXPECT_EQ(Saved(), (Texts{L"Cookie:5", L"Cookie:6"}));
    Read(L"'#\r\n\r\nCookie:3\r\n");
    EXPECT_TRUE(saved.Empty());
}

TEST_F(SavedCookiesTest, DuplicatesAreReadOnce) {
    Read(std::wstring(kHeader) + L"Cookie:a\r\nCookie:A\r\nCookie:a\r\n");
    EXPECT_EQ(Saved(), (Texts{L"Cookie:a", L"Cookie:A"}));
}

TEST_F(SavedCookiesTest, ReadingReplacesWhatWasThere) {
    saved.Add(L"Cookie:old");
    Read(std::wstring(kHeader) + L"Cookie:new\r\n");
    EXPECT_EQ(Saved(), (Texts{L"Cookie:new"}));
}

TEST_F(SavedCookiesTest, WritesTheWindowsRows) {
    savecLST.rows = {L"Cookie:jane@bank.example/", L"Cookie:jane@news.example/"};
    store.SavedCookiesFile(L"WRITE", &savecLST);
    EXPECT_EQ(folder.files[kFile],
              std::wstring(kHeader) + L"Cookie:jane@bank.example/\r\nCookie:jane@news.example/\r\n");
    store.SavedCookiesFile(L"Read");
    EXPECT_EQ(Saved(), (Texts{L"Cookie:jane@bank.example/", L"Cookie:jane@news.example/"}));
}

TEST_F(SavedCookiesTest, AnEmptyListWritesTheHeaderAlone) {
    store.SavedCookiesFile(L"WRITE", &savecLST);
    EXPECT_EQ(folder.files[kFile], kHeader);
}

TEST_F(SavedCookiesTest, TheModesAreComparedExactly) {
    savecLST.rows = {L"Cookie:row"};
    // No file: only the exact text writes one.
    for (const wchar_t* const mode : {L"write", L"Write", L"READ", L"read", L"", L"WRITE "}) {
        store.SavedCookiesFile(mode, &savecLST);
        EXPECT_EQ(folder.writes, 0);
        EXPECT_EQ(folder.reads, 0);
    }
    store.SavedCookiesFile(L"WRITE", &savecLST);
    EXPECT_EQ(folder.writes, 1);
    // A file: everything but the exact text writes it.
    int writes = 1;
    for (const wchar_t* const mode : {L"write", L"Write", L"READ", L"read", L"", L"Read "}) {
        store.SavedCookiesFile(mode, &savecLST);
        EXPECT_EQ(folder.writes, ++writes);
    }
    EXPECT_EQ(folder.reads, 0);
    store.SavedCookiesFile(L"Read", &savecLST);
    EXPECT_EQ(folder.reads, 1);
    EXPECT_EQ(folder.writes, writes);
}

TEST_F(SavedCookiesTest, WithoutAWindowTheCollectionIsWritten) {
    saved.Add(L"Cookie:kept");
    store.SavedCookiesFile(L"WRITE");
    EXPECT_EQ(folder.files[kFile], std::wstring(kHeader) + L"Cookie:kept\r\n");
}

TEST_F(SavedCookiesTest, FileErrorsReachTheCaller) {
    Faults faults;
    folder.faults = &faults;
    const auto number = [&](const wchar_t* mode, int failAt) {
        faults.FailAt(failAt, RunTimeError::kPermissionDenied);
        try {
            store.SavedCookiesFile(mode, &savecLST);
        } catch (const RunTimeError& error) {
            return error.Number();
        }
        return 0;
    };
    EXPECT_EQ(number(L"WRITE", 0), RunTimeError::kPermissionDenied);
    folder.files[kFile] = kHeader;
    EXPECT_EQ(number(L"Read", 1), RunTimeError::kPermissionDenied);
}

/// Each call of a write fails once: the file holds every saved cookie or is what it was.
TEST_F(SavedCookiesTest, NoFailingWriteLosesASavedCookie) {
    Save(L"Cookie:a");
    Save(L"Cookie:b");
    Save(L"Cookie:c");
    const std::wstring before = std::wstring(kHeader) + L"Cookie:before\r\n";
    const std::wstring after = std::wstring(kHeader) + L"Cookie:a\r\nCookie:b\r\nCookie:c\r\n";
    Faults faults;
    folder.faults = &faults;
    locale.faults = &faults;
    savecLST.faults = &faults;
    folder.files[kFile] = before;
    store.SavedCookiesFile(L"WRITE", &savecLST);
    const int calls = faults.Calls();
    EXPECT_GE(calls, 6);
    for (int position = 0; position < calls; ++position) {
        folder.files[kFile] = before;
        faults.FailAt(position, RunTimeError::kDeviceIOError);
        bool failed = false;
        try {
            store.SavedCookiesFile(L"WRITE", &savecLST);
        } catch (const RunTimeError&) {
            failed = true;
        }
        EXPECT_EQ(folder.files[kFile], failed ? before : after) << position;
        EXPECT_EQ(saved.Count(), 3U);
    }
}

/// Each call of a read fails once: the collection keeps what it held.
TEST_F(SavedCookiesTest, NoFailingReadLosesASavedCookie) {
    Save(L"Cookie:a");
    folder.files[kFile] = std::wstring(kHeader) + L"Cookie:b\r\nCookie:c\r\n";
    Faults faults;
    folder.faults = &faults;
    for (int position = 0;; ++position) {
        faults.FailAt(position, RunTimeError::kDeviceIOError);
        try {
            store.SavedCookiesFile(L"Read");
        } catch (const RunTimeError&) {
            EXPECT_EQ(Saved(), (Texts{L"Cookie:a"})) << position;
            continue;
        }
        EXPECT_GT(position, 6);
        break;
    }
    EXPECT_EQ(Saved(), (Texts{L"Cookie:b", L"Cookie:c"}));
}

TEST_F(SavedCookiesTest, AFailedWriteIsTriedAgain) {
    Save(L"Cookie:a");
    Faults faults;
    folder.faults = &faults;
    EXPECT_FALSE(store.Unwritten());
    faults.FailAt(0, RunTimeError::kPermissionDenied);
    EXPECT_THROW(store.SavedCookiesFile(L"WRITE", &savecLST), RunTimeError);
    EXPECT_TRUE(store.Unwritten());
    // The window is gone: the collection holds the same.
    faults.FailAt(0, RunTimeError::kDiskFull);
    EXPECT_THROW(store.WriteUnwritten(), RunTimeError);
    EXPECT_TRUE(store.Unwritten());
    store.WriteUnwritten();
    EXPECT_FALSE(store.Unwritten());
    EXPECT_EQ(folder.files[kFile], std::wstring(kHeader) + L"Cookie:a\r\n");
    const int writes = folder.writes;
    store.WriteUnwritten();
    EXPECT_EQ(folder.writes, writes);
}

TEST_F(SavedCookiesTest, ALaterWriteMakesUpForAFailedOne) {
    Faults faults;
    folder.faults = &faults;
    faults.FailAt(0, RunTimeError::kPermissionDenied);
    EXPECT_THROW(store.SavedCookiesFile(L"WRITE", &savecLST), RunTimeError);
    store.SavedCookiesFile(L"WRITE", &savecLST);
    EXPECT_FALSE(store.Unwritten());
}

/// The two lists stay the same when the window's takes no further row.
TEST_F(SavedCookiesTest, ACookieThatTheListRefusesIsNotSaved) {
    kg_CLST.rows = {L"Cookie:a"};
    cacheSelection.row = 0;
    Faults faults;
    savecLST.faults = &faults;
    faults.FailAt(0, RunTimeError::kOutOfMemory);
    EXPECT_THROW(editor.SaveC_Click(), RunTimeError);
    EXPECT_TRUE(saved.Empty());
    EXPECT_FALSE(editor.SavedListChanged());
}

TEST_F(SavedCookiesTest, SavesTheSelectedCookie) {
    kg_CLST.rows = {L"http://news.example/", L"Cookie:jane@news.example/"};
    cacheSelection.row = 1;
    editor.SaveC_Click();
    EXPECT_EQ(Saved(), (Texts{L"Cookie:jane@news.example/"}));
    EXPECT_EQ(savecLST.rows, (Rows{L"Cookie:jane@news.example/"}));
    EXPECT_TRUE(editor.SavedListChanged());
}

TEST_F(SavedCookiesTest, SavesCookiesOnly) {
    kg_CLST.rows = {L"http://news.example/", L"cookie:lower@case.example/", L""};
    for (const std::int32_t row : {-1, 0, 1, 2}) {
        cacheSelection.row = row;
        editor.SaveC_Click();
    }
    EXPECT_TRUE(saved.Empty());
    EXPECT_TRUE(savecLST.rows.empty());
    EXPECT_FALSE(editor.SavedListChanged());
}

TEST_F(SavedCookiesTest, WhatMayBeSavedIsToldByALooserText) {
    kg_CLST.rows = {L"http://shop.example/CookieJar.html"};
    cacheSelection.row = 0;
    editor.SaveC_Click();
    EXPECT_EQ(savecLST.rows, (Rows{L"http://shop.example/CookieJar.html"}));
    // Kept: such an address is written but not read back.
    store.SavedCookiesFile(L"WRITE", &savecLST);
    store.SavedCookiesFile(L"Read");
    EXPECT_TRUE(saved.Empty());
}

TEST_F(SavedCookiesTest, SavingTheSameCookieTwiceAddsOneRow) {
    Save(L"Cookie:a");
    kg_CLST.rows = {L"Cookie:a"};
    cacheSelection.row = 0;
    editor.SaveC_Click();
    EXPECT_EQ(savecLST.rows, (Rows{L"Cookie:a"}));
    EXPECT_FALSE(editor.SavedListChanged());
}

TEST_F(SavedCookiesTest, RemovesTheSelectedCookie) {
    Save(L"Cookie:a");
    Save(L"Cookie:b");
    Save(L"Cookie:c");
    savedSelection.row = 1;
    editor.RemoveC_Click();
    EXPECT_EQ(Saved(), (Texts{L"Cookie:a", L"Cookie:c"}));
    EXPECT_EQ(savecLST.rows, (Rows{L"Cookie:a", L"Cookie:c"}));
    EXPECT_TRUE(editor.SavedListChanged());
}

TEST_F(SavedCookiesTest, RemovingWithoutASelectionDoesNothing) {
    Save(L"Cookie:a");
    editor.RemoveC_Click();
    EXPECT_EQ(Saved(), (Texts{L"Cookie:a"}));
    EXPECT_FALSE(editor.SavedListChanged());
}

TEST_F(SavedCookiesTest, TheTipShowsTheSelectedCookie) {
    Save(L"Cookie:a");
    savedSelection.row = 0;
    editor.savecLST_Click();
    EXPECT_EQ(savedTip.text, L"Cookie:a");
    savedSelection.row = -1;
    editor.savecLST_Click();
    EXPECT_EQ(savedTip.text, L"");
}

}  // namespace
}  // namespace kestrelguard
