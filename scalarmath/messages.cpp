// Messages of the scalar layer: names, kinds, texts, and the catalogue that may replace the texts.
#include <nl_types.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "scalarmath/messages.h"

namespace {

constexpr char kCatalogueName[] = "libm.cat";
constexpr size_t kBuffer = 512;

const nl_catd kNotOpen = reinterpret_cast<nl_catd>(-1);

// A catalogue is looked for under the language as it stands, then with what follows the first dot of LANG cut off in
// the environment of the process. If there is none, one line says so and the built-in texts stay.
void openCatalogue()
{
    nl_catd catalogue = catopen(kCatalogueName, 0);
    if (catalogue == kNotOpen) {
        if (const char* language = getenv("LANG")) {
            char cut[kBuffer];
            const size_t length = strcspn(language, ".");
            const size_t kept = length < kBuffer ? length : kBuffer - 1;
            memcpy(cut, language, kept);
            cut[kept] = 0;
            setenv("LANG", cut, 1);
        }
        catalogue = catopen(kCatalogueName, 0);
    }
    if (catalogue == kNotOpen) {
        fprintf(stderr, "Cannot open message catalog %s\n", kCatalogueName);
        qvrmCatalogue = nullptr;
        qvrmCatalogueEnabled = 0;
    } else {
        qvrmCatalogue = catalogue;
    }
}

} // namespace

extern "C" {

int qvrmCatalogueEnabled = 1;
void* qvrmCatalogue;

const char* const qvrmKindWords[qvrmKindCount] = {"__dummy",   "DOMAIN", "SING", "OVERFLOW",
                                                  "UNDERFLOW", "TLOSS",  "PLOSS"};

const char* const qvrmSuffixes[qvrmTypeCount] = {"", "l", "q"};

const char* const qvrmMessages[qvrmMessageCount] = {
    "\rUn-used message\n",
    "\r%s%s: %s error\n",
    "\r%s%s(0,0): %s error\n",
    "\r%s%s(0,negative): %s error\n",
    "\r%s%s(negative,non-integer): %s error\n",
};

const char* const qvrmNames[qvrmNameCount] = {
    "acos",    "acosd",     "acosdq",     "acosh",      "acoshq",     "acosq",      "annuity",     "annuityq",
    "asin",    "asind",     "asindq",     "asinq",      "atan2",      "atan2d",     "atan2dq",     "atan2q",
    "atanh",   "atanhq",    "cdfnorm",    "cdfnorminv", "compound",   "compoundq",  "cot",         "cotd",
    "cotdq",   "cotq",      "erfc",       "erfcinv",    "erfcq",      "erfcx",      "erfcxq",      "erfinv",
    "exp",     "exp10",     "exp10q",     "exp2",       "exp2q",      "expm1",      "expm1q",      "expq",
    "fdim",    "fdimq",     "fmod",       "fmodq",      "gamma",      "gammaq",     "hypot",       "hypotq",
    "ilogb",   "ilogbq",    "j0q",        "j1q",        "jnq",        "ldexp",      "ldexpq",      "lgamma",
    "lgammaq", "llrint",    "llrintq",    "llround",    "llroundq",   "log",        "log10",       "log10q",
    "log1p",   "log1pq",    "log2",       "log2q",      "logb",       "logbq",      "logq",        "lrint",
    "lrintq",  "lround",    "lroundq",    "nextafter",  "nextafterq", "nexttoward", "nexttowardq", "pow",
    "powq",    "remainder", "remainderq", "remquo",     "remquoq",    "scalb",      "scalbln",     "scalblnq",
    "scalbn",  "scalbnq",   "scalbq",     "sinh",       "sinhcosh",   "sinhcoshq",  "sinhq",       "sqrt",
    "sqrtq",   "tand",      "tandq",      "tgamma",     "y0q",        "y1q",        "ynq",
};

void qvrmPrintError(int messageNumber, ...)
{
    if (messageNumber < 0 || messageNumber >= qvrmMessageCount)
        messageNumber = 0;
    const char* text = qvrmMessages[messageNumber];
    if (qvrmCatalogueEnabled && !qvrmCatalogue)
        openCatalogue();
    if (qvrmCatalogue)
        text = catgets(qvrmCatalogue, 1, messageNumber, text);
    char line[kBuffer];
    va_list arguments;
    va_start(arguments, messageNumber);
    vsnprintf(line, sizeof line, text, arguments);
    va_end(arguments);
    fputs(line, stderr);
}

} // extern "C"
