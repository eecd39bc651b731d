// Settings of the sanitizers for every test program, so that a program started by hand behaves as it does under ctest.
// An impossible size makes malloc return null, as it does in production, instead of ending the program.
extern "C" const char* __asan_default_options();
extern "C" const char* __ubsan_default_options();

extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:detect_stack_use_after_return=1:strict_string_checks=1";
}

extern "C" const char* __ubsan_default_options() { return "print_stacktrace=1"; }

// The C library loses the search path that newlocale makes of LOCPATH.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_options();

extern "C" const char* __lsan_default_suppressions() { return "leak:argz_add_sep\n"; }

extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
