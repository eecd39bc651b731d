#include "asn1/status.h"

#include <cstdio>

namespace zr {

void throw_out_of_memory(const char* message, const char* file, int line) {
    throw zr_asn_memexception(file, line, message, zr_err_out_of_memory);
}

void throw_unsupported(const char* message, int line) {
    throw zr_asn_unsupportederror(asnbase_file, line, message, zr_err_unsupported);
}

int report_exception(const zr_asn_exception& exception) {
    std::fprintf(stderr, "Exception: %s [%8.8x] in %s at line %d\n", exception.message, exception.code, exception.file,
                 exception.line);
    return static_cast<int>(exception.code);
}

}  // namespace zr
