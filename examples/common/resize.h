// Resizing of a photograph by any method of the library, with the work buffer that it asks for.
#ifndef EXAMPLES_RESIZE_H
#define EXAMPLES_RESIZE_H

#include "morvenqvr.h"
#include "photo.h"

typedef struct {
    const char *name, *title;
    int selector;
} Method;

extern const Method kMethods[];
extern const int kMethodCount;

// The method of that name, or the program ends.
const Method* methodNamed(const char* name);

// The region of the source, resized to fill the whole of `to`.
void photoResize(const Photo* from, qvriRect region, const Photo* to, int interpolation);

#endif
