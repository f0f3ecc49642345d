// What becomes of the saved cookies when memory runs out, at any allocation.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "cachewindow/SavedCookies.h"
#include "controls/Fakes.h"

// NOLINTBEGIN(cppcoreguidelines-no-malloc, cppcoreguidelines-owning-memory): this is the memory's own place.
namespace {

/// Allocations that still succeed; negative: all of them.
long g_left = -1;

void* Allocate(std::size_t size) {
    if (g_left == 0) {
        throw std::bad_alloc();
    }
    if (g_left > 0) {
        --g_left;
    }
    if (void* const block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}

void* AllocateOrNull(std::size_t size) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

// All forms: a block of the library's own operator could not go to this one's free.
void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
    return AllocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
    return AllocateOrNull(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
// NOLINTEND(cppcoreguidelines-no-malloc, cppcoreguidelines-owning-memory)

namespace kestrelguard {
namespace {

using Texts = std::vector<std::wstring>;

/// Runs the action with that many allocations. Answers whether it ended without an exception.
template <class Action>
bool WithMemoryFor(long allocations, Action&& action) {
    g_left = allocations;
    bool done = true;
    try {
        action();
    } catch (...) {
        done = false;
    }
    g_left = -1;
    return done;
}

struct SavedCookiesMemoryTest : testing::Test {
    Texts Saved() const { return {saved.begin(), saved.end()}; }

    FakeProgramFolder folder;
    FakeLocale locale;
    TextSet saved;
    SavedCookiesStore store{folder, locale, saved};
};

TEST_F(SavedCookiesMemoryTest, AReadThatRunsOutOfMemoryThrowsAndDropsNothing) {
    const Texts all = {L"Cookie:a.long.name@that.needs.memory.of.its.own/",
                       L"Cookie:another@of.the.kind.example/"};
    folder.files[L"KestrelC.CFG"] =
        L"1\r\n2\r\n3\r\n4\r\n" + all[0] + L"\r\n" + all[1] + L"\r\n" + all[0] + L"\r\n";
    int failed = 0;
    for (long memory = 0;; ++memory) {
        saved = TextSet();
        if (WithMemoryFor(memory, [this] { store.SavedCookiesFile(L"Read"); })) {
            EXPECT_EQ(Saved(), all) << memory;
            break;
        }
        ++failed;
        EXPECT_TRUE(Saved().empty()) << memory;
        ASSERT_LT(memory, 1000);
    }
    EXPECT_GT(failed, 4);
}

TEST_F(SavedCookiesMemoryTest, AWriteThatRunsOutOfMemoryIsStillToBeDone) {
    saved.Add(L"Cookie:a.long.name@that.needs.memory.of.its.own/");
    int failed = 0;
    for (long memory = 0;; ++memory) {
        folder.files[L"KestrelC.CFG"] = L"old";
        if (WithMemoryFor(memory, [this] { store.SavedCookiesFile(L"WRITE"); })) {
            break;
        }
        ++failed;
        EXPECT_EQ(folder.files[L"KestrelC.CFG"], L"old");
        EXPECT_TRUE(store.Unwritten()) << memory;
        ASSERT_LT(memory, 1000);
    }
    EXPECT_GT(failed, 4);
    EXPECT_FALSE(store.Unwritten());
}

}  // namespace
}  // namespace kestrelguard
