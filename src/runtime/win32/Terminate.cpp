// What the C++ library's own handler would print nobody could read: this program has no console. Ours ends it
// as plainly, without the forty kilobytes that make type names readable.
#include <cstdlib>
#include <exception>

namespace __cxxabiv1 {
extern std::terminate_handler __terminate_handler;
std::terminate_handler __terminate_handler = std::abort;
}  // namespace __cxxabiv1
