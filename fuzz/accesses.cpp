#include "accesses.h"

uint64_t zr_test::accesses = 0;

// What clang calls before each access by code compiled with -fsanitize-coverage=trace-loads,trace-stores.
extern "C" {
#define ZR_COUNT_ACCESS(name) \
    void name(void*);         \
    void name(void*) { ++zr_test::accesses; }
ZR_COUNT_ACCESS(__sanitizer_cov_load1)
ZR_COUNT_ACCESS(__sanitizer_cov_load2)
ZR_COUNT_ACCESS(__sanitizer_cov_load4)
ZR_COUNT_ACCESS(__sanitizer_cov_load8)
ZR_COUNT_ACCESS(__sanitizer_cov_load16)
ZR_COUNT_ACCESS(__sanitizer_cov_store1)
ZR_COUNT_ACCESS(__sanitizer_cov_store2)
ZR_COUNT_ACCESS(__sanitizer_cov_store4)
ZR_COUNT_ACCESS(__sanitizer_cov_store8)
ZR_COUNT_ACCESS(__sanitizer_cov_store16)
}
