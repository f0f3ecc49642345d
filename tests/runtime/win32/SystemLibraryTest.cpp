#include "runtime/win32/SystemLibrary.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace kestrelguard {
namespace {

std::string Lower(std::string text) {
    CharLowerA(text.data());
    return text;
}

std::string FileOf(HMODULE library) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(library, path, MAX_PATH);
    return Lower(path);
}

std::string FolderOf(const std::string& file) {
    return file.substr(0, file.rfind('\\'));
}

/// A copy of this test program beside it, under the name of a library of the system that is not loaded yet.
class PlantedLibrary {
 public:
    static constexpr char kName[] = "cabinet.dll";

    PlantedLibrary() {
        m_path = FolderOf(FileOf(nullptr)) + "\\" + kName;
        CopyFileA(FileOf(nullptr).c_str(), m_path.c_str(), FALSE);
    }
    PlantedLibrary(const PlantedLibrary&) = delete;
    PlantedLibrary& operator=(const PlantedLibrary&) = delete;
    ~PlantedLibrary() { DeleteFileA(m_path.c_str()); }

    const std::string& Path() const { return m_path; }

 private:
    std::string m_path;
};

TEST(SystemLibrary, IsNotTheOneThatLiesBesideTheProgram) {
    ASSERT_EQ(GetModuleHandleA(PlantedLibrary::kName), nullptr);
    const PlantedLibrary planted;
    {
        const Library byName(LoadLibraryExA(PlantedLibrary::kName, nullptr, DONT_RESOLVE_DLL_REFERENCES));
        ASSERT_TRUE(byName);
        ASSERT_EQ(FileOf(byName.Get()), planted.Path()) << "the plant is no temptation";
    }
    ASSERT_EQ(GetModuleHandleA(PlantedLibrary::kName), nullptr);
    const Library library = LoadSystemLibrary(PlantedLibrary::kName);
    ASSERT_TRUE(library);
    char system[MAX_PATH] = {};
    GetSystemDirectoryA(system, MAX_PATH);
    EXPECT_EQ(FolderOf(FileOf(library.Get())), Lower(system));
}

TEST(SystemLibrary, ThatIsNotThereIsEmpty) {
    EXPECT_FALSE(LoadSystemLibrary("no_such_library.dll"));
}

}  // namespace
}  // namespace kestrelguard
