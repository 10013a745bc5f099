#pragma once

// Every public header includes this header before the standard headers, so that a compiler with an older language
// version reports this error first.
#if __cplusplus < 202002L
#error "tkosqllite needs C++20: compile with -std=c++20 or later"
#endif

// Marks the exported classes and functions of the library.
#define TKOSQLLITE_EXPORT __attribute__((visibility("default")))
