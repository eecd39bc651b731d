# zrasn_warnings: for every target whose sources are ours. The runtime classes have no virtual
# destructors by design, so that warning stays off; changes of sign are part of reading octets.
add_library(zrasn_warnings INTERFACE)
target_compile_options(zrasn_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast -Wcast-qual -Wformat=2
    -Wundef -Wno-non-virtual-dtor
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op>
    $<$<BOOL:${ZRASN_WERROR}>:-Werror>)
