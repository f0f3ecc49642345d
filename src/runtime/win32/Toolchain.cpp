// The thread model of the compiler decides what the C++ library imports: with the posix model any use of
// std::string pulls in functions that Windows before Vista does not have.
#include <bits/c++config.h>

#ifdef _GLIBCXX_HAS_GTHREADS
#error "Build with the win32 thread model (i686-w64-mingw32-g++-win32)."
#endif
