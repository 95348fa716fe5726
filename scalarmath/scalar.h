// The scalar layer: one value at a time, with libc's contract for values in range; its processor forms; its errors.
//
// By contract: the layer is whole, though kernels work on arrays and most of its routines, and all of its error
// reports, are reached by nothing exported.
#ifndef QVR_SCALARMATH_SCALAR_H
#define QVR_SCALARMATH_SCALAR_H

#include <stddef.h>
#include <stdint.h>

#include "frame/processor.h"

extern "C" {

// ---- Routines. None of them touches errno. --------------------------------------------------------------------------

QVR_HIDDEN double qvrmFloor(double x);
QVR_HIDDEN double qvrmCeil(double x);
QVR_HIDDEN double qvrmSin(double x);
QVR_HIDDEN double qvrmCos(double x);
QVR_HIDDEN double qvrmAtan2(double y, double x);
QVR_HIDDEN float qvrmExpf(float x);
QVR_HIDDEN float qvrmLogf(float x);
QVR_HIDDEN float qvrmAtanf(float x);
QVR_HIDDEN void* qvrmFill(void* to, int value, size_t bytes);
QVR_HIDDEN void* qvrmCopy(void* to, const void* from, size_t bytes);

// ---- Processor forms ------------------------------------------------------------------------------------------------

enum {
    qvrmDetected = 0x1, // detection has run
    qvrmX87 = 0x2,
    qvrmCmov = 0x4,
    qvrmMmx = 0x8,
    qvrmFxsr = 0x10,
    qvrmSse = 0x20,
    qvrmSse2 = 0x40,
    qvrmSse3 = 0x80,
    qvrmSsse3 = 0x100,
    qvrmSse41 = 0x200,
    qvrmSse42 = 0x400,
    qvrmAvx = 0x10000,
    qvrmAvx2Level = 0x840000,
};

// What the forms of a routine are chosen by: no more than qvrmDetected on a processor of a foreign vendor. And the
// capabilities whoever made the processor, which the classes are chosen by.
extern QVR_HIDDEN uint64_t qvrmFeatureMask, qvrmFeatureMaskAny;

// Fills both masks. With mode 0 the first one keeps a value that it already has.
QVR_HIDDEN void qvrmDetectFeatures(int mode);

// 0: base, 1: SSE3, 2: SSE4.1. Detection runs at the first call.
QVR_HIDDEN int qvrmForm(void);

// 1 .. 9, from qvrmFeatureMaskAny; 0 before the first use.
extern QVR_HIDDEN int32_t qvrmClassIndex;
QVR_HIDDEN int32_t qvrmClass(void);

// ---- Errors ---------------------------------------------------------------------------------------------------------

enum { qvrmTypeDouble, qvrmTypeExtended, qvrmTypeQuad, qvrmTypeCount };
enum { qvrmNoKind, qvrmDomain, qvrmSing, qvrmOverflow, qvrmUnderflow, qvrmTloss, qvrmPloss, qvrmKindCount };
enum { qvrmResultInfinity, qvrmResultMinusInfinity, qvrmResultZero, qvrmResultNan, qvrmResultCount };
enum { qvrmErrnoRange, qvrmErrnoDomain }; // 34 and 33
enum { qvrmMessageCount = 5 };

enum {
    qvrmActEnd = 0,
    qvrmActErrno = 1,          // errno takes the row's value
    qvrmActSkipIfZero = 2,     // the next action is skipped if the significand of the first argument is zero
    qvrmActConstant = 3,       // the row's constant becomes the result, negative if the running sign test is set
    qvrmActArgument = 4,       // the first argument becomes the result
    qvrmActSignOfArgument = 5, // the operand of the following sign test
    qvrmActSignOfResult = 6,   // the operand of the following sign test
    qvrmActSign = 7,           // its sign bit joins the running sign test
    qvrmActExtend = 8,         // three more actions
    qvrmActExtendIfZero = 9,   // three more actions if the first argument is zero, else the end
    qvrmActExtendLast = 10,    // as qvrmActExtend
    qvrmActPrint = 11,         // the row's message on standard error
    qvrmActHook = 12,          // the user's hook gets a record of the exception
};

// One error number. A program holds actions of 4 bits, the first one lowest; an extension three actions in 12 bits.
typedef struct {
    uint8_t name, type, kind, errnoIndex, result, message;
    uint32_t program[3];   // by error mode 0 .. 2
    uint16_t extension[4]; // taken in order
} qvrmErrorRow;

typedef struct {
    int kind;
    char name[20];
    const void *argument1, *argument2;
    void* result;
} qvrmException;

// The rows in force: none unless somebody supplies them, since no routine of the layer reports errors of its own.
extern QVR_HIDDEN const qvrmErrorRow* qvrmErrorRows;
extern QVR_HIDDEN int qvrmErrorRowCount;
extern QVR_HIDDEN int qvrmErrorMode; // -1: no action at all
extern QVR_HIDDEN int (*qvrmUserHook)(qvrmException*);

// The name table in alphabetical order.
constexpr int qvrmNameCount = 103;
extern QVR_HIDDEN const char* const qvrmNames[qvrmNameCount];

// Carries out what the row of the error number says; may replace the result.
QVR_HIDDEN void qvrmMathError(void* result, const void* argument1, const void* argument2, int errorNumber);

// Writes a message to standard error: from the message catalogue libm.cat if there is one, else the built-in text.
// The arguments are strings: name, width suffix, kind.
QVR_HIDDEN void qvrmPrintError(int messageNumber, ...);

extern QVR_HIDDEN int qvrmCatalogueEnabled;
extern QVR_HIDDEN void* qvrmCatalogue; // open catalogue, or null

} // extern "C"

#endif
