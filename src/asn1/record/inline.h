// For the small parts that a codec function is made of.
#pragma once

#define ZR_INLINE [[gnu::always_inline]] inline
