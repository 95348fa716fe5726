// Runs all examples, each after its name.
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "example.h"

enum { kMost = 256 };
static struct {
    const char* name;
    void (*run)(void);
} examples[kMost];
static int exampleCount, failures;

void exampleAdd(const char* name, void (*run)(void))
{
    if (exampleCount == kMost)
        abort();
    examples[exampleCount].name = name;
    examples[exampleCount++].run = run;
}

void exampleExpect(const char* file, int line, const double* got, const double* expected, int count)
{
    for (int i = 0; i < count; i++)
        if (!(fabs(got[i] - expected[i]) <= 1e-3 * fmax(1, fabs(expected[i]))) && !(got[i] == expected[i])) {
            fprintf(stderr, "%s:%d: element %d is %g, not %g\n", file, line, i, got[i], expected[i]);
            failures++;
        }
}

int main(void)
{
    for (int i = 0; i < exampleCount; i++) {
        printf("%s\n", examples[i].name);
        examples[i].run();
    }
    printf("%d examples, %d failures\n", exampleCount, failures);
    return failures != 0 || exampleCount == 0;
}
