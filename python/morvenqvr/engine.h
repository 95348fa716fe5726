// What describes a function to the engine: its forms by element types, and how each is called.
#ifndef MORVENQVR_PYTHON_ENGINE_H
#define MORVENQVR_PYTHON_ENGINE_H
#include <stddef.h>

enum { kMaxInputs = 3, kMaxExtras = 6, kMaxResults = 3, kNumber = -1, kNone = -2 };

typedef struct {
    char* p[kMaxInputs + 1 + kMaxResults]; // inputs, output, results
    long n[kMaxInputs + 1];                // elements in a row of each input and of the output
    int step[kMaxInputs + 1];              // bytes between image rows
    int width, height;
    double r[kMaxExtras + 1]; // floating-point arguments; the last one is the operand that is a number
    long i[kMaxExtras + 1];   // integer arguments likewise
} QvrArguments;

typedef struct {
    const char* name;
    int (*call)(QvrArguments*);
    signed char input[kMaxInputs];   // numpy type numbers; kNumber for an operand that is a number
    signed char output;              // numpy type number, or kNone
    signed char inPlace;             // the input that the output takes the place of, or kNone
    signed char accuracy;            // correct bits, 0 where there is no choice
    signed char result[kMaxResults]; // numpy type numbers
    char number;                     // letter of the operand that is a number
    const char* extra;               // letters of the arguments; '-' for one that this form does not take
} QvrForm;

typedef struct {
    const char* name;
    const QvrForm* forms;
    int formCount, inputs, extras, results;
    int rank;                           // axes that a call works on: 1, or 2 for images
    int vectors;                        // bit k: input k is one row, whatever the rank
    int elementwise;                    // elements do not know of each other
    int commutative, needsOut, written; // written: extra k is written back
    int selectors;                      // bit k: extra k is chosen by name
    int weight, quadratic;
    long (*length)(const long* n, QvrArguments* a); // of an output row; null: as input 0
    const char* inputName[kMaxInputs];
    const char* extraName[kMaxExtras];
} QvrGroup;

#endif
