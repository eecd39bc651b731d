// Values in memory at places of any alignment.
//
// The compiler's own memcpy is used, not the C library's checked one (-D_FORTIFY_SOURCE), for which clang keeps a value
// on the stack: slower, and a secret would stay there.
#pragma once

namespace zr {

template <class T>
inline T load(const void* at) {
    T value;
    __builtin_memcpy(&value, at, sizeof value);
    return value;
}

template <class T>
inline void store(void* at, T value) {
    __builtin_memcpy(at, &value, sizeof value);
}

}  // namespace zr
