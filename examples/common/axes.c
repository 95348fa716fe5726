#include "axes.h"

#include <math.h>
#include <stdio.h>

double axisStep(double span, int most)
{
    double step = pow(10, floor(log10(span / most)));
    while (span / step > most)
        step *= span / (2 * step) <= most ? 2 : span / (5 * step) <= most ? 5 : 10;
    return step;
}

void axisLabel(char* text, size_t size, double value, double step, const char* unit)
{
    const int digits = step < 1 ? (int)ceil(-log10(step) - 1e-9) : 0;
    snprintf(text, size, "%.*f%s", digits, value, unit);
}
