// A main for fuzz targets without libFuzzer: hands every file named, and every file below every directory named, to the
// target. Each input lies in a block of exactly its size, so that a sanitizer sees the first octet read past its end.
// Replaying nothing is a failure: a test whose seeds are gone must not pass.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

static size_t replay(const std::filesystem::path& path) {
    if (std::filesystem::is_directory(path)) {
        size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            count += replay(entry.path());
        return count;
    }
    std::ifstream file(path, std::ios::binary);
    std::vector<char> octets(std::istreambuf_iterator<char>(file), {});
    octets.shrink_to_fit();
    std::fprintf(stderr, "%s\n", path.c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(octets.data()), octets.size());
    return 1;
}

int main(int argc, char** argv) {
    size_t count = 0;
    for (int i = 1; i < argc; i++)
        count += replay(argv[i]);
    std::printf("%zu inputs replayed\n", count);
    return count == 0 ? 1 : 0;
}
