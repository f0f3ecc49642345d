// What the C++ library calls when a container is asked for what it cannot do. Its own versions throw errors
// that carry a text, and bring ninety kilobytes of strings along; no handler here reads that text. A use of
// one that is missing below fails to link: the library's own would then define the others a second time.
#include <bits/functexcept.h>

#include <exception>
#include <new>

namespace {

/// A mistake in this program, to be told like any exception that is none of its own.
class LibraryError : public std::exception {};

}  // namespace

namespace std {

void __throw_bad_alloc() {
    throw bad_alloc();
}

void __throw_bad_array_new_length() {
    throw bad_array_new_length();
}

void __throw_length_error(const char* /*text*/) {
    throw LibraryError();
}

void __throw_logic_error(const char* /*text*/) {
    throw LibraryError();
}

void __throw_out_of_range_fmt(const char* /*format*/, ...) {
    throw LibraryError();
}

}  // namespace std
