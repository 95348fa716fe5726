# The shared object: beside this package, else where the system looks; MORVENQVR_LIBRARY names another.
cdef extern from "<dlfcn.h>" nogil:
    void* dlopen(const char* name, int mode)
    void* dlsym(void* handle, const char* name)
    char* dlerror()
    int RTLD_NOW, RTLD_LOCAL

cdef extern from "engine.h" nogil:
    enum:
        kMaxInputs, kMaxExtras, kMaxResults, kNumber, kNone
    ctypedef struct QvrArguments:
        char* p[7]
        long n[4]
        int step[4]
        int width
        int height
        double r[7]
        long i[7]
    ctypedef struct QvrForm:
        const char* name
        int (*call)(QvrArguments*) nogil
        signed char input[3]
        signed char output
        signed char inPlace
        signed char accuracy
        signed char result[3]
        char number
        const char* extra
    ctypedef struct QvrGroup:
        const char* name
        const QvrForm* forms
        int formCount, inputs, extras, results
        int rank, vectors, elementwise, commutative, needsOut, written, selectors
        int weight, quadratic
        long (*length)(const long* n, QvrArguments* a)
        const char* inputName[3]
        const char* extraName[6]

cdef extern from "tables.h" nogil:
    ctypedef struct QvrSize "qvriSize":
        int width
        int height
    ctypedef struct QvrRect "qvriRect":
        int x
        int y
        int width
        int height
    enum:
        kEntries, kGroups, kNothing, kKindsFIR, kKindsFFT, kKindsFIRMR, kKindsRESIZE
    const char* entryName[]
    void* entry[]
    const QvrGroup groups[]
    ctypedef struct QvrKind:
        const char* name
        int samples, taps, scaled
        int create, release, run, getDelay, setDelay, getTaps, inverse, inPlace, bufferSize, region
    const QvrKind kindsFIR[]
    const QvrKind kindsFFT[]
    const QvrKind kindsFIRMR[]
    const QvrKind kindsRESIZE[]


def _load():
    """Opens the shared object and finds all its functions; returns the path or name that served."""
    cdef void* handle = NULL
    cdef int k, missing = 0
    soname = "libmorvenqvr.so.1"
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), soname)
    chosen = os.environ.get("MORVENQVR_LIBRARY")
    name = chosen or (beside if os.path.exists(beside) else soname)
    handle = dlopen(os.fsencode(name), RTLD_NOW | RTLD_LOCAL)
    if handle == NULL:
        reason = dlerror().decode(errors="replace")
        raise ImportError(f"morvenqvr cannot load {name}: {reason}. Install the library (libmorvenqvr1), or let "
                          "MORVENQVR_LIBRARY name the file.")
    first = ""
    for k in range(kEntries):
        entry[k] = dlsym(handle, entryName[k])
        if entry[k] == NULL:
            missing += 1
            first = first or entryName[k].decode()
    if missing:
        raise ImportError(f"morvenqvr needs a newer {soname}: {name} lacks {missing} of {kEntries} functions, {first} first.")
    return name


LIBRARY = _load()
