# 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(zrasn_triplet aarch64-linux-gnu)
set(zrasn_debian arm64)
# Pointers are signed by a quick code of qemu's own: with the architecture's the tests take many times as long.
set(zrasn_qemu_options -cpu max,pauth-impdef=on)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
