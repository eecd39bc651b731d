# s390x, which stores the most significant octet first.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(zrasn_triplet s390x-linux-gnu)
set(zrasn_debian s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
