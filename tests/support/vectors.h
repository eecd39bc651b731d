// The golden vectors (vectors/README.md).
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "support/ber_rewriter.h"
#include "support/hex.h"

namespace zr_test {

// The next line that is neither empty nor a comment; empty at the end.
inline std::string next_line(std::istream& file) {
    std::string line;
    while (std::getline(file, line))
        if (!line.empty() && line[0] != '#') return line;
    return "";
}

// Calls check(record, JSON text, octets) for each vector.
template <class Check>
void each_vector(Check&& check) {
    for (const auto& entry : std::filesystem::directory_iterator(ZRASN_VECTORS)) {
        if (entry.path().extension() != ".txt") continue;
        std::ifstream file(entry.path());
        for (std::string name = next_line(file); !name.empty(); name = next_line(file)) {
            const std::string text = next_line(file);
            check(name, text, bytes(next_line(file)));
        }
    }
}

}  // namespace zr_test
