// What the build asks of the compiler.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>

namespace kestrelguard {
namespace {

class Answers {
 public:
    virtual ~Answers() = default;
    virtual bool ToObject(void*) = 0;
    virtual bool ToText(const char*) = 0;
};

/// Functions that do the same, but take their arguments off the stack themselves, which a function object's
/// do not.
class Yes final : public Answers {
 public:
    bool ToObject(void*) override { return true; }
    bool ToText(const char*) override { return true; }
};

[[gnu::noipa]] std::unique_ptr<Answers> MakeYes() {
    return std::make_unique<Yes>();
}

[[gnu::noipa]] std::function<bool(const char*)> MakeYesFunction() {
    return [](const char*) { return true; };
}

std::uintptr_t StackPointer() {
    std::uintptr_t pointer = 0;
    asm volatile("movl %%esp, %0" : "=r"(pointer));
    return pointer;
}

// GCC 12 makes one function of several that have the same instructions, whoever takes the arguments off the
// stack.
TEST(CallingConventionTest, FunctionsThatDoTheSameStayApart) {
    const std::unique_ptr<Answers> yes = MakeYes();
    ASSERT_TRUE(yes->ToObject(nullptr) && yes->ToText(nullptr));
    const std::function<bool(const char*)> function = MakeYesFunction();
    const std::uintptr_t before = StackPointer();
    const bool answer = function("text");
    const std::uintptr_t after = StackPointer();
    EXPECT_TRUE(answer);
    EXPECT_EQ(before, after);
}

}  // namespace
}  // namespace kestrelguard
