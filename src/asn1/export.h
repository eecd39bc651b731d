// The one export mark. The library is built with hidden visibility; what carries ZR_API is its public interface.
#pragma once

#define ZR_API __attribute__((visibility("default")))
