// morvenqvr-slot: runs a program as on an older processor, at full speed.
//
// The program is traced. At each of its program images the tracer makes it ask the kernel for a fault on every CPUID;
// such a fault stops it, and the tracer gives the answer: to the library's own code without the features above the
// slot, to all other code the processor's. Nothing else is slowed down, and the program's own signals stay its own.
#include <cpuid.h>
#include <elf.h>
#include <fcntl.h>
#include <getopt.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

#include "mask.h"

namespace {

constexpr int kRefused = 125, kNotRun = 126, kNotFound = 127; // as env(1) and timeout(1) have them
constexpr int kArchCpuid = 0x1012;
constexpr uint16_t kCpuid = 0xA20F, kSyscall = 0x050F; // the instructions, low byte first
constexpr int kKernelFault = 0x80;                     // SI_KERNEL: no address belongs to the fault

int slot;
bool verbose;
long libraryAnswers, otherAnswers;
pid_t command;
int commandStatus;                             // as waitpid told it
std::map<std::pair<dev_t, ino_t>, bool> known; // files that hold the library, as far as looked at

[[noreturn]] void refuse(const char* what, const char* why)
{
    fprintf(stderr, "morvenqvr-slot: %s%s%s\n", what, why != nullptr ? ": " : "", why != nullptr ? why : "");
    exit(kRefused);
}

// The shared object by its name, and programs with the archive inside by the load hook in their symbols.
bool holdsLibrary(pid_t pid, const std::string& path)
{
    const size_t name = path.rfind('/') + 1;
    if (path.compare(name, 12, "libmorvenqvr") == 0 && path.find(".so", name) != std::string::npos)
        return true;
    const int file = open(("/proc/" + std::to_string(pid) + "/root" + path).c_str(), O_RDONLY | O_CLOEXEC);
    struct stat s;
    if (file < 0)
        return false;
    bool found = false;
    if (fstat(file, &s) == 0 && S_ISREG(s.st_mode) && s.st_size > 0) {
        const auto [place, fresh] = known.try_emplace({s.st_dev, s.st_ino}, false);
        if (fresh) {
            const size_t bytes = static_cast<size_t>(s.st_size);
            void* text = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, file, 0);
            if (text != MAP_FAILED) {
                static const char hook[] = "\0qvrLoadHook";
                place->second = memmem(text, bytes, hook, sizeof hook) != nullptr;
                munmap(text, bytes);
            }
        }
        found = place->second;
    }
    close(file);
    return found;
}

// Whether the code at an address of the program is the library's.
bool inLibrary(pid_t pid, uint64_t address)
{
    FILE* maps = fopen(("/proc/" + std::to_string(pid) + "/maps").c_str(), "re");
    if (maps == nullptr)
        return false;
    char* line = nullptr;
    size_t room = 0;
    bool found = false;
    while (getline(&line, &room, maps) > 0) {
        unsigned long begin, end;
        int at = 0;
        if (sscanf(line, "%lx-%lx %*s %*s %*s %*s %n", &begin, &end, &at) < 2 || address < begin || address >= end)
            continue;
        std::string path = line + at;
        if (!path.empty() && path.back() == '\n')
            path.pop_back();
        found = path[0] == '/' && holdsLibrary(pid, path);
        break;
    }
    free(line);
    fclose(maps);
    return found;
}

bool read(pid_t pid, uint64_t address, void* to, size_t bytes)
{
    iovec here = {to, bytes}, there = {reinterpret_cast<void*>(address), bytes};
    return process_vm_readv(pid, &here, 1, &there, 1, 0) == static_cast<ssize_t>(bytes);
}

// A stop by SIGSEGV at a CPUID: answers it, and true.
bool answered(pid_t pid)
{
    siginfo_t info;
    user_regs_struct regs;
    uint16_t instruction;
    if (ptrace(PTRACE_GETSIGINFO, pid, nullptr, &info) != 0 || info.si_code != kKernelFault ||
        ptrace(PTRACE_GETREGS, pid, nullptr, &regs) != 0 || !read(pid, regs.rip, &instruction, 2) ||
        instruction != kCpuid)
        return false;
    const uint32_t leaf = static_cast<uint32_t>(regs.rax), subleaf = static_cast<uint32_t>(regs.rcx);
    uint32_t r[4];
    __cpuid_count(leaf, subleaf, r[0], r[1], r[2], r[3]);
    const bool library = inLibrary(pid, regs.rip);
    (library ? libraryAnswers : otherAnswers)++;
    if (library)
        tools::answerFor(slot, leaf, subleaf, r);
    regs.rax = r[0];
    regs.rbx = r[1];
    regs.rcx = r[2];
    regs.rdx = r[3];
    regs.rip += 2;
    return ptrace(PTRACE_SETREGS, pid, nullptr, &regs) == 0;
}

// Lets a stopped process go on until it stops for the tracer; signals that come in between are kept for later.
void runToStop(pid_t pid, __ptrace_request how, int stop, int& pending)
{
    for (;;) {
        int status;
        if (ptrace(how, pid, nullptr, 0) != 0 || waitpid(pid, &status, __WALL) != pid)
            return;
        if (!WIFSTOPPED(status)) {
            if (pid == command)
                commandStatus = status;
            return;
        }
        if (WSTOPSIG(status) == stop)
            return;
        if (status >> 16 == 0)
            pending = WSTOPSIG(status);
    }
}

// A new program image stands before its first instruction, and CPUID works there again: it makes the one call that has
// it fault. Returns a signal that came meanwhile, or 0.
int startFaulting(pid_t pid)
{
    int pending = 0;
    runToStop(pid, PTRACE_SYSCALL, SIGTRAP | 0x80, pending); // out of execve
    user_regs_struct before, regs;
    if (ptrace(PTRACE_GETREGS, pid, nullptr, &before) != 0 || before.cs != 0x33)
        return pending; // gone, or a 32-bit program, in which the library cannot be
    errno = 0;
    const long word = ptrace(PTRACE_PEEKTEXT, pid, before.rip, nullptr);
    if (errno != 0)
        return pending;
    regs = before;
    regs.orig_rax = ~0ull;
    regs.rax = SYS_arch_prctl;
    regs.rdi = kArchCpuid;
    regs.rsi = 0;
    ptrace(PTRACE_POKETEXT, pid, before.rip, (word & ~0xFFFFL) | kSyscall);
    ptrace(PTRACE_SETREGS, pid, nullptr, &regs);
    runToStop(pid, PTRACE_SINGLESTEP, SIGTRAP, pending);
    ptrace(PTRACE_GETREGS, pid, nullptr, &regs);
    ptrace(PTRACE_POKETEXT, pid, before.rip, word);
    ptrace(PTRACE_SETREGS, pid, nullptr, &before);
    if (regs.rax != 0) {
        kill(command, SIGKILL);
        refuse("the program could not be made to fault on CPUID", strerror(static_cast<int>(-regs.rax)));
    }
    return pending;
}

// Serves the program and all that it starts until the last of them has ended.
void serve()
{
    for (;;) {
        int status;
        const pid_t pid = waitpid(-1, &status, __WALL);
        if (pid < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (!WIFSTOPPED(status)) {
            if (pid == command)
                commandStatus = status;
            continue;
        }
        const int event = status >> 16;
        int signal = WSTOPSIG(status);
        if (event == PTRACE_EVENT_STOP) {
            const bool group = signal == SIGSTOP || signal == SIGTSTP || signal == SIGTTIN || signal == SIGTTOU;
            ptrace(group ? PTRACE_LISTEN : PTRACE_CONT, pid, nullptr, 0);
            continue;
        }
        if (event == PTRACE_EVENT_EXEC)
            signal = startFaulting(pid);
        else if (event != 0 || (signal == SIGSEGV && answered(pid)))
            signal = 0;
        ptrace(PTRACE_CONT, pid, nullptr, signal);
    }
}

void forward(int signal)
{
    kill(command, signal);
}

// Refuses what this machine cannot do, before anything has started.
void checkMachine()
{
    // Switching CPUID on, as it is, tells whether it can be switched off.
    if (syscall(SYS_arch_prctl, kArchCpuid, 1) != 0)
        refuse(errno == ENODEV ? "this processor, or the virtual machine it is in, cannot fault on CPUID"
                               : "this kernel cannot make CPUID fault (arch_prctl, Linux 4.12)",
               strerror(errno));
    uint64_t features = 0;
    qvrGetFeatures(&features, nullptr);
    if (!tools::runs(features, slot)) {
        fprintf(stderr, "morvenqvr-slot: this processor cannot run slot %s\n", tools::kSlots[slot].name);
        exit(kRefused);
    }
}

void usage(FILE* to)
{
    fputs("usage: morvenqvr-slot [-v] SLOT COMMAND [ARGUMENT...]\n"
          "Runs COMMAND with libmorvenqvr's functions as an older processor would choose them, at full speed.\n"
          "SLOT is one of",
          to);
    for (const tools::Slot& s : tools::kSlots)
        fprintf(to, " %s", s.name);
    fputs(".\n  -v, --verbose  tell at the end how many CPUID instructions were answered\n"
          "  -l, --list     list the slots, and whether this machine can run them\n"
          "  -h, --help     print this\n      --version  print the version\n",
          to);
}

void list()
{
    uint64_t features = 0;
    qvrGetFeatures(&features, nullptr);
    for (int i = 0; i < qvrSlotCount; i++)
        printf("%s  %-32s %s\n", tools::kSlots[i].name, *tools::kSlots[i].flags ? tools::kSlots[i].flags : "SSE2",
               tools::runs(features, i) ? "runs here" : "does not run here");
}

pid_t start(char** arguments)
{
    int gate[2];
    if (pipe2(gate, O_CLOEXEC) != 0)
        refuse("no pipe", strerror(errno));
    const pid_t pid = fork();
    if (pid < 0)
        refuse("no process", strerror(errno));
    if (pid == 0) {
        // Until the tracer is there; it closes the gate without a word if it cannot be.
        char go;
        close(gate[1]);
        if (::read(gate[0], &go, 1) != 1)
            _exit(kRefused);
        execvp(arguments[0], arguments);
        fprintf(stderr, "morvenqvr-slot: %s: %s\n", arguments[0], strerror(errno));
        _exit(errno == ENOENT ? kNotFound : kNotRun);
    }
    close(gate[0]);
    const long options = PTRACE_O_TRACEEXEC | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                         PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL;
    if (ptrace(PTRACE_SEIZE, pid, nullptr, options) != 0) {
        const int reason = errno;
        close(gate[1]);
        refuse("this system does not let a program be traced", strerror(reason));
    }
    if (write(gate[1], "", 1) != 1)
        refuse("the command cannot be started", strerror(errno));
    close(gate[1]);
    return pid;
}

} // namespace

int main(int argc, char** argv)
{
    const option options[] = {{"verbose", no_argument, nullptr, 'v'},
                              {"list", no_argument, nullptr, 'l'},
                              {"help", no_argument, nullptr, 'h'},
                              {"version", no_argument, nullptr, 'V'},
                              {nullptr, 0, nullptr, 0}};
    for (int c; (c = getopt_long(argc, argv, "+vlh", options, nullptr)) != -1;) {
        if (c == 'v') {
            verbose = true;
        } else if (c == 'l') {
            list();
            return 0;
        } else if (c == 'h') {
            usage(stdout);
            return 0;
        } else if (c == 'V') {
            puts("morvenqvr-slot " QVR_VERSION);
            return 0;
        } else {
            usage(stderr);
            return kRefused;
        }
    }
    if (argc - optind < 2) {
        usage(stderr);
        return kRefused;
    }
    slot = tools::slotNumber(argv[optind]);
    if (slot < 0)
        refuse("there is no slot of that name", argv[optind]);
    checkMachine();
    command = start(argv + optind + 1);
    // A terminal sends these to the command too, which decides what they mean.
    signal(SIGINT, SIG_IGN);
    signal(SIGQUIT, SIG_IGN);
    signal(SIGTERM, forward);
    signal(SIGHUP, forward);
    serve();
    const int status = commandStatus;
    if (verbose)
        fprintf(stderr, "morvenqvr-slot: answered %ld CPUID of the library as slot %s, and %ld of other code\n",
                libraryAnswers, tools::kSlots[slot].name, otherAnswers);
    if (WIFSIGNALED(status)) {
        signal(WTERMSIG(status), SIG_DFL);
        raise(WTERMSIG(status));
        return 128 + WTERMSIG(status);
    }
    return WEXITSTATUS(status);
}
