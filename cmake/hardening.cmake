# zrasn_hardening: linked privately by everything that is installed. The compiler checks the sizes that it knows, guards
# the stack's return addresses and marks where calls may land; the linker leaves no table of addresses writable. With a
# sanitizer these checks would stand in the way of its own, and without optimisation the C library has none. The
# options are those of ELF.
option(ZRASN_HARDENING "Build with the compiler's protection against memory faults" ON)
add_library(zrasn_hardening INTERFACE)
set(zrasn_quick_sources_options "")
if(ZRASN_HARDENING AND NOT ZRASN_SANITIZE AND NOT WIN32)
    include(CheckCXXCompilerFlag)
    target_compile_options(zrasn_hardening INTERFACE
        -fstack-protector-strong
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
        $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    foreach(flag -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
        string(MAKE_C_IDENTIFIER "ZRASN_HAS${flag}" known)
        set(CMAKE_REQUIRED_FLAGS -Werror)
        check_cxx_compiler_flag(${flag} ${known})
        unset(CMAKE_REQUIRED_FLAGS)
        if(${known})
            target_compile_options(zrasn_hardening INTERFACE ${flag})
        endif()
    endforeach()
    # For sources that a call passes many times over and whose functions have single values on the stack but no array: a
    # guard for each value whose address is handed on would make the calls 2 % longer.
    set(zrasn_quick_sources_options -fstack-protector)
    target_link_options(zrasn_hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
