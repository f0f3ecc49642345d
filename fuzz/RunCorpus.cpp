#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Stands in for the fuzzer where there is none: runs every file of the given folders once.
int main(int count, char** arguments) {
    int files = 0;
    for (int folder = 1; folder < count; ++folder) {
        for (const auto& entry : std::filesystem::directory_iterator(arguments[folder])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++files;
        }
    }
    std::printf("%d files\n", files);
    return files == 0 ? 1 : 0;
}
