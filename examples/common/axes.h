// Steps and labels of plot axes.
#ifndef EXAMPLES_AXES_H
#define EXAMPLES_AXES_H

#include <stddef.h>

// A step of 1, 2 or 5 times a power of ten that cuts `span` into at most `most` parts.
double axisStep(double span, int most);

// The value with the digits that the step needs, and its unit.
void axisLabel(char* text, size_t size, double value, double step, const char* unit);

#endif
