// How a fuzz target says that a promise does not hold: the input that led there is kept as a reproducer.
#pragma once

#include <cstdio>
#include <cstdlib>

#define FUZZ_REQUIRE(condition)                                                                 \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (false)
