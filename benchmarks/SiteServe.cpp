// Takes measurements on request, one a line of the standard input ("matcher 10000"), and answers each with a
// line: nanoseconds or bytes, and the number of blocked addresses. So a comparison of programs can let them
// take turns.

#include <cstdio>

#include "SiteSubjects.h"

int main() {
    kestrelguard::bench::SiteMeasurements measurements;
    char name[32];
    unsigned long entries = 0;
    while (std::scanf("%31s %lu", name, &entries) == 2) {
        const kestrelguard::bench::Measured measured = measurements.Take(name, entries);
        std::printf("%.1f %lu\n", measured.value, static_cast<unsigned long>(measured.blocked));
        std::fflush(stdout);
    }
    return 0;
}
