// Operations for which memory ends, wherever it may.
#pragma once

#include <gtest/gtest.h>

#include "support/allocations.h"

namespace zr_test {

// fail_each_allocation calls attempt(failing) until no allocation fails, each time for the next one, and before that
// with all behind it too where `also_for_ever`: failing(operation) runs the operation so, and tells how many were asked
// for in vain. The operation must not throw. Nothing may be left behind an attempt. Answers how many allocations there
// were.
template <class Attempt>
size_t fail_each_allocation(Attempt&& attempt, bool also_for_ever = false) {
    size_t failed = 1;
    size_t n = 0;
    while (failed != 0 && !testing::Test::HasFatalFailure()) {
        ++n;
        for (const bool for_ever : {true, false}) {
            if (for_ever && !also_for_ever) continue;
            SCOPED_TRACE(testing::Message() << "allocation " << n << " fails" << (for_ever ? " and all others" : ""));
            failed = 0;
            allocations watched;
            attempt([&](auto&& operation) {
                watched.fail_allocation(n, for_ever);
                operation();
                failed = watched.failed();
                watched.fail_allocation(0);
                return failed;
            });
            EXPECT_EQ(watched.live(), 0u);
        }
    }
    return n - 1;
}

}  // namespace zr_test
