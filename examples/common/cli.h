// What a small command-line program needs: messages of one line, options and numbers from arguments, progress on
// long work.
#ifndef EXAMPLES_CLI_H
#define EXAMPLES_CLI_H

#include <getopt.h>
#include <stdint.h>

// Name in front of every message; set by the program.
extern const char* programName;

// Ends the program with one line on standard error: exit status 1 for bad files, 2 for bad arguments.
_Noreturn void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));
_Noreturn void failUsage(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The next option of the command line by its letter, -1 behind the last. --help ('h') prints the usage and ends the
// program with status 0, an option that is none with 2.
int nextOption(int argc, char** argv, const struct option* options, void (*usage)(void));
// The file names behind the options; ends the program if there are not `count` of them.
char** operands(int argc, char** argv, int count, const char* wanted);

// Parses `count` numbers separated by commas, each inside its [low, high], or ends the program.
void parseNumbers(const char* option, const char* text, int count, double* values, const double (*range)[2]);

// Seconds on a clock that only moves forward.
double seconds(void);

// Progress on standard error, once the work has lasted a second: a line that rewrites itself on a terminal, a line
// every few seconds elsewhere.
typedef struct {
    const char* what;
    int64_t total;
    double started, shown;
} Progress;
Progress progressStart(const char* what, int64_t total);
void progressShow(Progress* progress, int64_t done);
void progressEnd(Progress* progress);

#endif
