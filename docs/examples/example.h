// Short examples, one for each function. The reference pages show their bodies; the tests run them.
#ifndef QVR_DOCS_EXAMPLE_H
#define QVR_DOCS_EXAMPLE_H

#include <morvenqvr.h>
#include <stddef.h>

void exampleAdd(const char* name, void (*run)(void));
void exampleExpect(const char* file, int line, const double* got, const double* expected, int count);

// EXAMPLE(name) { body } is run by the program and shown beside the function `name`.
#define EXAMPLE(name)                                                                                                  \
    static void example_##name(void);                                                                                  \
    __attribute__((constructor)) static void add_##name(void)                                                          \
    {                                                                                                                  \
        exampleAdd(#name, example_##name);                                                                             \
    }                                                                                                                  \
    static void example_##name(void)

// The elements of an array, or a single value, to a thousandth.
#define EXPECT(array, ...)                                                                                             \
    do {                                                                                                               \
        const double expected[] = {__VA_ARGS__};                                                                       \
        enum { count = sizeof expected / sizeof expected[0] };                                                         \
        double got[count];                                                                                             \
        for (int element = 0; element < count; element++)                                                              \
            got[element] = (double)(array)[element];                                                                   \
        exampleExpect(__FILE__, __LINE__, got, expected, count);                                                       \
    } while (0)
#define EXPECT_VALUE(value, expected) EXPECT(((const double[]){(double)(value)}), expected)

#endif
