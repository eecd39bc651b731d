#include "asn1/status.h"

#include <atomic>
#include <cstdio>

namespace zr {

void throw_out_of_memory(const char* message, const char* file, int line) {
    throw zr_asn_memexception(file, line, message, zr_err_out_of_memory);
}

void throw_unsupported(const char* message, int line) {
    throw zr_asn_unsupportederror(asnbase_file, line, message, zr_err_unsupported);
}

namespace {

// What a program stored before it set a sink, the sink finds.
std::atomic<message_sink> current_sink{print_exception};

}  // namespace

void print_exception(const zr_asn_exception& exception) {
    std::fprintf(stderr, "Exception: %s [%8.8x] in %s at line %d\n", exception.message, exception.code, exception.file,
                 exception.line);
}

message_sink set_message_sink(message_sink sink) noexcept {
    return current_sink.exchange(sink != nullptr ? sink : print_exception, std::memory_order_acq_rel);
}

int report_exception(const zr_asn_exception& exception) {
    current_sink.load(std::memory_order_acquire)(exception);
    return static_cast<int>(exception.code);
}

}  // namespace zr
