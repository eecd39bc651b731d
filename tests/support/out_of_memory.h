// Operations for which memory ends, wherever it may.
#pragma once

#include <gtest/gtest.h>

#include "support/allocations.h"

namespace zr_test {

// fail_each_allocation calls attempt(failing) until no allocation fails, each time for the next one: failing(operation)
// runs the operation with that allocation failing, and tells whether it was asked for. The operation must not throw.
// Nothing may be left behind an attempt. Answers how many allocations there were.
template <class Attempt>
size_t fail_each_allocation(Attempt&& attempt) {
    bool failed = true;
    size_t n = 0;
    while (failed && !testing::Test::HasFatalFailure()) {
        SCOPED_TRACE(testing::Message() << "allocation " << ++n << " fails");
        failed = false;
        allocations watched;
        attempt([&](auto&& operation) {
            watched.fail_allocation(n);
            operation();
            failed = watched.failed();
            watched.fail_allocation(0);
            return failed;
        });
        EXPECT_EQ(watched.live(), 0u);
    }
    return n - 1;
}

}  // namespace zr_test
