// A main for fuzz targets without libFuzzer: hands inputs to the target, each in a block of exactly its size, so that a
// sanitizer sees the first octet read past its end.
//
//   NAME [--before FIRST-LAST[:STEP]] PATH...   every file named, and every file below every directory named
//   NAME [--before FIRST-LAST[:STEP]] --all N   all strings of up to N octets
//
// With --before each input is handed over several times, behind each of the prefixes from FIRST to LAST, STEP apart:
// hexadecimal numbers, of two digits for each octet. Replaying nothing is a failure: a test whose seeds are gone must
// not pass.
#include <dirent.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

class replay {
public:
    // `range` is FIRST-LAST[:STEP]; false when it is something else.
    bool before(const char* range) {
        char* end = nullptr;
        first_ = std::strtoul(range, &end, 16);
        const auto digits = static_cast<size_t>(end - range);
        if (*end++ != '-') return false;
        last_ = std::strtoul(end, &end, 16);
        if (*end == ':') step_ = std::strtoul(end + 1, &end, 16);
        prefix_octets_ = digits / 2;
        return *end == 0 && digits != 0 && digits % 2 == 0 && first_ <= last_ && step_ != 0;
    }

    // Every file below a path. C functions read them: the sanitizer for memory that was never written knows these.
    void files(const std::string& path) {
        if (DIR* const directory = opendir(path.c_str())) {
            while (const dirent* const entry = readdir(directory))
                if (entry->d_name[0] != '.') files(path + "/" + entry->d_name);
            closedir(directory);
            return;
        }
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        if (file == nullptr) return;
        std::vector<uint8_t> octets;
        for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file))
            octets.push_back(static_cast<uint8_t>(c));
        std::fclose(file);
        std::fprintf(stderr, "%s\n", path.c_str());
        hand_over(octets);
    }

    void all(size_t octets) {
        for (size_t length = 0; length <= octets; ++length) {
            std::vector<uint8_t> input(length);
            size_t at = 0;
            do {
                hand_over(input);
                for (at = length; at != 0 && ++input[at - 1] == 0; --at)
                    continue;
            } while (at != 0);
        }
    }

    size_t count = 0;

private:
    void hand_over(const std::vector<uint8_t>& octets) {
        for (unsigned long prefix = first_; prefix <= last_; prefix += step_) {
            std::vector<uint8_t> input(prefix_octets_ + octets.size());
            for (size_t i = 0; i < prefix_octets_; ++i)
                input[i] = static_cast<uint8_t>(prefix >> 8 * (prefix_octets_ - 1 - i));
            if (!octets.empty()) std::memcpy(input.data() + prefix_octets_, octets.data(), octets.size());
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++count;
        }
    }

    size_t prefix_octets_ = 0;
    unsigned long first_ = 0;
    unsigned long last_ = 0;
    unsigned long step_ = 1;
};

}  // namespace

int main(int argc, char** argv) {
    replay run;
    int at = 1;
    if (at + 1 < argc && std::strcmp(argv[at], "--before") == 0) {
        if (!run.before(argv[at + 1])) {
            std::fprintf(stderr, "%s is no range of prefixes\n", argv[at + 1]);
            return 1;
        }
        at += 2;
    }
    if (at + 1 < argc && std::strcmp(argv[at], "--all") == 0) {
        run.all(std::strtoul(argv[at + 1], nullptr, 10));
    } else {
        for (; at < argc; ++at)
            run.files(argv[at]);
    }
    std::printf("%zu inputs replayed\n", run.count);
    return run.count == 0 ? 1 : 0;
}
