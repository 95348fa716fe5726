// Every tagged kernel of every slot that runs here, as a function of one array.
#pragma once

#include <functional>

#include "elementary/kernels.h"
#include "support/slots.h"

using Invoke = std::function<qvrStatus(const float*, float*, int)>;

inline void eachCall(const std::function<void(const Invoke&)>& body)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        for (int c = 0; c < kClasses; c++) {
            SCOPED_TRACE(std::string("slot ") + slots::kNames[slot] + " class " + kClassNames[c]);
            for (const Function1& f : kFunctions1) {
                SCOPED_TRACE(f.name);
                body(f.kernels[slot][c]);
            }
            for (Kernel2* kernel : {powKernels[slot][c], atan2Kernels[slot][c]})
                body([=](const float* x, float* y, int n) { return kernel(x, x, y, n); });
            body([=](const float* x, float* y, int n) { return powxKernels[slot][c](x, -1.5f, y, n); });
        }
    }
}
