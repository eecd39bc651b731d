# What the toolchain files of Debian's cross compilers share. The caller has set CMAKE_SYSTEM_PROCESSOR, zrasn_triplet, the
# machine's name in the names of its compilers, zrasn_debian, Debian's own name of it, and what else qemu is told, if anything,
# in zrasn_qemu_options. Compilers that are not installed are taken from where cmake/cross-compilers.sh unpacks them. They see
# the headers of the C and C++ library for their machine, and behind those /usr/include, where packages of headers alone lie.
# Programs run under qemu, with the unpacked converters between code sets: the packages for cross builds have none.
set(CMAKE_SYSTEM_NAME Linux)
get_filename_component(zrasn_unpacked ${CMAKE_CURRENT_LIST_DIR}/../../build/cross-compilers/usr ABSOLUTE)
find_program(ZRASN_CROSS_COMPILER NAMES ${zrasn_triplet}-g++ ${zrasn_triplet}-g++-12 HINTS ${zrasn_unpacked}/bin)
find_program(ZRASN_QEMU qemu-${CMAKE_SYSTEM_PROCESSOR})
if(NOT ZRASN_CROSS_COMPILER OR NOT ZRASN_QEMU)
    message(FATAL_ERROR "${zrasn_triplet}-g++ or qemu-${CMAKE_SYSTEM_PROCESSOR} is missing: `make cross` gets both")
endif()
set(CMAKE_CXX_COMPILER ${ZRASN_CROSS_COMPILER})
string(REPLACE "-g++" "-gcc" CMAKE_C_COMPILER ${ZRASN_CROSS_COMPILER})  # googletest asks for one
set(CMAKE_CROSSCOMPILING_EMULATOR
    ${ZRASN_QEMU};${zrasn_qemu_options};-L;/usr/${zrasn_triplet};-E;GCONV_PATH=${zrasn_unpacked}/lib/gconv-${zrasn_debian})
set(CMAKE_FIND_ROOT_PATH /usr/${zrasn_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
