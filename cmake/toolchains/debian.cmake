# What the toolchain files of Debian's cross compilers share. The caller has set zrasn_triplet and zrasn_qemu: the machine's
# name in the names of its compilers, and in that of qemu's program for it. The compilers see the headers of the C and C++
# library for their machine, and behind those /usr/include, where packages of headers alone lie.
set(CMAKE_SYSTEM_NAME Linux)
find_program(ZRASN_CROSS_COMPILER NAMES ${zrasn_triplet}-g++ ${zrasn_triplet}-g++-12
    HINTS ${CMAKE_CURRENT_LIST_DIR}/../../build/cross-compilers/usr/bin REQUIRED)
set(CMAKE_CXX_COMPILER ${ZRASN_CROSS_COMPILER})
string(REPLACE "-g++" "-gcc" CMAKE_C_COMPILER ${ZRASN_CROSS_COMPILER})  # googletest asks for one
find_program(ZRASN_QEMU qemu-${zrasn_qemu} REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${ZRASN_QEMU};-L;/usr/${zrasn_triplet})
set(CMAKE_FIND_ROOT_PATH /usr/${zrasn_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
