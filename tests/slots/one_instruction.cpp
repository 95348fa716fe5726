// Executes one instruction of an extension and tells whether the processor stopped at it:
// one_instruction EXTENSION runs|stops. A test of the simulated processors themselves.
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

sigjmp_buf back;

void onIllegal(int)
{
    siglongjmp(back, 1);
}

void execute(const char* extension)
{
    const auto is = [extension](const char* name) { return std::strcmp(extension, name) == 0; };
    if (is("sse3"))
        __asm__ volatile("haddps %%xmm0, %%xmm0" ::: "xmm0");
    else if (is("ssse3"))
        __asm__ volatile("pshufb %%xmm0, %%xmm0" ::: "xmm0");
    else if (is("movbe"))
        __asm__ volatile("movbel (%%rsp), %%eax" ::: "eax");
    else if (is("sse41"))
        __asm__ volatile("pmulld %%xmm0, %%xmm0" ::: "xmm0");
    else if (is("avx"))
        __asm__ volatile("vaddps %%ymm0, %%ymm0, %%ymm0" ::: "xmm0");
    else if (is("avx2"))
        __asm__ volatile("vpaddd %%ymm0, %%ymm0, %%ymm0" ::: "xmm0");
    else if (is("fma"))
        __asm__ volatile("vfmadd213ps %%xmm0, %%xmm0, %%xmm0" ::: "xmm0");
    else if (is("bmi1"))
        __asm__ volatile("andnl %%eax, %%eax, %%eax" ::: "eax", "cc");
    else
        __asm__ volatile("pextl %%eax, %%eax, %%eax" ::: "eax");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    std::signal(SIGILL, onIllegal);
    const char* verdict = "stops";
    if (sigsetjmp(back, 1) == 0) {
        execute(argv[1]);
        verdict = "runs";
    }
    std::printf("%s: %s\n", argv[1], verdict);
    return std::strcmp(verdict, argv[2]) == 0 ? 0 : 1;
}
