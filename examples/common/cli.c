// Messages, options and numbers from arguments, progress.
#include "cli.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

const char* programName = "example";

static void message(const char* format, va_list arguments)
{
    fprintf(stderr, "%s: ", programName);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
}

_Noreturn void fail(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    message(format, arguments);
    exit(1);
}

_Noreturn void failUsage(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    message(format, arguments);
    exit(2);
}

int nextOption(int argc, char** argv, const struct option* options, void (*usage)(void))
{
    const int option = getopt_long(argc, argv, "", options, NULL);
    if (option == 'h') {
        usage();
        exit(0);
    }
    if (option == '?')
        exit(2); // getopt has said what is wrong
    return option;
}

char** operands(int argc, char** argv, int count, const char* wanted)
{
    if (argc - optind != count)
        failUsage("%s; --help tells more", wanted);
    return argv + optind;
}

void parseNumbers(const char* option, const char* text, int count, double* values, const double (*range)[2])
{
    const char* rest = text;
    for (int i = 0; i < count; i++) {
        char* end;
        values[i] = strtod(rest, &end);
        if (end == rest || *end != (i == count - 1 ? '\0' : ','))
            failUsage("%s takes %s, not '%s'", option, count == 1 ? "a number" : "numbers separated by commas", text);
        // Written so that a NaN is refused.
        if (!(values[i] >= range[i][0] && values[i] <= range[i][1]))
            failUsage("%s: %g is not between %g and %g", option, values[i], range[i][0], range[i][1]);
        rest = end + 1;
    }
}

double seconds(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec + 1e-9 * (double)now.tv_nsec;
}

Progress progressStart(const char* what, int64_t total)
{
    const double now = seconds();
    return (Progress){what, total, now, 0};
}

void progressShow(Progress* progress, int64_t done)
{
    const int terminal = isatty(STDERR_FILENO);
    const double now = seconds();
    if (now - progress->started < 1 || now - progress->shown < (terminal ? 0.2 : 3))
        return;
    progress->shown = now;
    fprintf(stderr, "%s%s: %s %3.0f%%%s", terminal ? "\r" : "", programName, progress->what,
            100 * (double)done / (double)progress->total, terminal ? "" : "\n");
}

void progressEnd(Progress* progress)
{
    if (progress->shown > 0 && isatty(STDERR_FILENO))
        fputs("\r\033[K", stderr);
}
