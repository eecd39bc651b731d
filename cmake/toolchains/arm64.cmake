# 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(zrasn_triplet aarch64-linux-gnu)
set(zrasn_debian arm64)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
