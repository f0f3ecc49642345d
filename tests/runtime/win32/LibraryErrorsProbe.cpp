// What a container throws in a program that, like the product, brings its own versions of the library's
// throwing functions. A program without the test framework: that one brings the library's.
#include <cstddef>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace {

volatile std::size_t g_large = std::numeric_limits<std::size_t>::max();
const char* volatile g_null = nullptr;

enum class Thrown { Nothing, OutOfMemory, OtherException };

template <class Action>
Thrown What(Action action) {
    try {
        action();
    } catch (const std::bad_alloc&) {
        return Thrown::OutOfMemory;
    } catch (const std::exception&) {
        return Thrown::OtherException;
    }
    return Thrown::Nothing;
}

}  // namespace

/// The exit code is the number of the first line that is wrong, or 0.
int main() {
    if (What([] { return std::vector<int>().at(g_large); }) != Thrown::OtherException) {
        return __LINE__;
    }
    if (What([] { std::vector<int>().reserve(g_large); }) != Thrown::OtherException) {
        return __LINE__;
    }
    if (What([] { return std::wstring_view(L"a").substr(g_large).size(); }) != Thrown::OtherException) {
        return __LINE__;
    }
    if (What([] { return std::string(g_null).size(); }) != Thrown::OtherException) {
        return __LINE__;
    }
    if (What([] { std::string().resize(g_large / 2 - 16); }) != Thrown::OutOfMemory) {
        return __LINE__;
    }
    return 0;
}
