// Size of the shared object, and the time from dlopen to the end of a first call, beside dlopen of the OpenMP runtime
// that it needs: load_time LIBRARY. Each load is made by a process of its own; medians are printed as Markdown.
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { kLoads = 101 };

static double now(void)
{
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return 1e3 * (double)t.tv_sec + 1e-6 * (double)t.tv_nsec;
}

static double loadRuntime(const char* path)
{
    const double start = now();
    return dlopen(path, RTLD_NOW) ? now() - start : -1;
}

static double loadAndCall(const char* path)
{
    const double start = now();
    void* library = dlopen(path, RTLD_NOW);
    void* symbol = library ? dlsym(library, "Morven_qvrsAdd_32f") : NULL;
    if (symbol == NULL)
        return -1;
    int (*add)(const float*, const float*, float*, int) = (int (*)(const float*, const float*, float*, int))symbol;
    float a[4] = {1, 2, 3, 4}, sum[4];
    return add(a, a, sum, 4) == 0 ? now() - start : -1;
}

static double inChild(double (*load)(const char*), const char* path)
{
    int ends[2];
    if (pipe(ends) != 0)
        exit(1);
    const pid_t child = fork();
    double taken = -1;
    if (child == 0) {
        taken = load(path);
        _exit(write(ends[1], &taken, sizeof taken) != sizeof taken);
    }
    if (child < 0 || read(ends[0], &taken, sizeof taken) != sizeof taken || taken < 0) {
        fprintf(stderr, "load_time: cannot load %s\n", path);
        exit(1);
    }
    waitpid(child, NULL, 0);
    close(ends[0]);
    close(ends[1]);
    return taken;
}

static int byValue(const void* a, const void* b)
{
    const double x = *(const double*)a, y = *(const double*)b;
    return (x > y) - (x < y);
}

static double median(double* v)
{
    qsort(v, kLoads, sizeof *v, byValue);
    return v[kLoads / 2];
}

int main(int argc, char** argv)
{
    struct stat file;
    if (argc != 2 || stat(argv[1], &file) != 0) {
        fprintf(stderr, "usage: load_time LIBRARY\n");
        return 2;
    }
    double runtime[kLoads], library[kLoads];
    for (int i = 0; i < kLoads; i++) { // in turn, so that both meet the same machine
        runtime[i] = inChild(loadRuntime, "libomp.so.5");
        library[i] = inChild(loadAndCall, argv[1]);
    }
    const double r = median(runtime), l = median(library);
    printf("| size of the shared object | dlopen of the OpenMP runtime alone | dlopen of the library to the end of a "
           "first "
           "call | difference |\n|---|---|---|---|\n| %.2f MB | %.2f ms | %.2f ms | %.2f ms |\n",
           (double)file.st_size / 1e6, r, l, l - r);
    return 0;
}
