// How a function is called: a specialisation of Shape for its name, or the usual call of arguments.h.
#pragma once

#include "calls/arguments.h"

namespace calls {

// One type per export, to specialise on.
#define QVR_SHARED(name) struct name;
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"

template<class Name> struct Shape {
    static constexpr bool kUsual = true;
    template<class F> static void call(F f, Input& in) { callUsual(f, in); }
};

} // namespace calls
