# One call of a table-made function: which form fits the arrays, checks, the loop over rows, and what the status becomes.
cdef extern from "numpy/arrayobject.h":
    bint PyArray_CheckAnyScalar(object)
    int NPY_ARRAY_C_CONTIGUOUS, NPY_ARRAY_WRITEABLE

cdef enum:
    kSwapped = -3
    kIrregular = -4
    kLongestRow = 2147483647
    kWorkOfAMicrosecond = 2048

cdef struct Operand:
    char* data
    cnp.npy_intp* dims
    cnp.npy_intp* strides
    int ndim
    int type
    int itemsize
    int flags

INT16C = numpy.dtype([("re", numpy.int16), ("im", numpy.int16)])
cdef object kInt16c = INT16C
cdef object kShares = numpy.shares_memory
cdef object kMasked = numpy.ma.MaskedArray
cdef cnp.npy_intp kOne = 1
cdef cnp.npy_intp kNoStride = 0


cdef inline int look(object o, Operand* s) except -1:
    """Takes an array's geometry; the type is kSwapped where bytes are swapped, kIrregular where it is no plain array."""
    cdef cnp.ndarray array = <cnp.ndarray>o
    s.data = cnp.PyArray_BYTES(array)
    s.ndim = cnp.PyArray_NDIM(array)
    s.dims = cnp.PyArray_DIMS(array)
    s.strides = cnp.PyArray_STRIDES(array)
    s.itemsize = cnp.PyArray_ITEMSIZE(array)
    s.flags = cnp.PyArray_FLAGS(array)
    s.type = cnp.PyArray_TYPE(array)
    if s.ndim == 0:
        s.dims, s.strides = &kOne, &kNoStride
    if cnp.PyArray_ISBYTESWAPPED(array):
        s.type = kSwapped
    elif s.type == cnp.NPY_VOID and <object>cnp.PyArray_DESCR(array) != kInt16c:
        s.type = kIrregular
    elif not cnp.PyArray_CheckExact(o) and isinstance(o, kMasked):
        s.type = kIrregular
    elif s.type == cnp.NPY_LONGLONG or s.type == cnp.NPY_ULONGLONG:
        s.type = kIrregular
    return 0


cdef inline int axes(const Operand* s) nogil:
    return s.ndim if s.ndim > 0 else 1


cdef inline bint same_shape(const Operand* s, const Operand* t) nogil:
    cdef int k
    if s.ndim != t.ndim:
        return False
    for k in range(s.ndim):
        if s.dims[k] != t.dims[k]:
            return False
    return True


cdef cnp.npy_intp elements(const Operand* s) nogil:
    cdef cnp.npy_intp n = 1
    cdef int k
    for k in range(s.ndim):
        n *= s.dims[k]
    return n


cdef inline bint dense(const Operand* s) nogil:
    """Rows lie whole in memory."""
    return s.strides[axes(s) - 1] == s.itemsize or s.dims[axes(s) - 1] <= 1 or elements(s) == 0


cdef inline char* row_at(const Operand* s, int outer, cnp.npy_intp row) nogil:
    """Where a row begins, counted over the first axes."""
    cdef char* place = s.data
    cdef int k
    for k in range(outer - 1, 0, -1):
        place += row % s.dims[k] * s.strides[k]
        row //= s.dims[k]
    return place + row * s.strides[0] if outer > 0 else place


cdef void extent(const Operand* s, char** low, char** high) nogil:
    cdef int k
    low[0] = s.data
    high[0] = s.data + s.itemsize
    for k in range(s.ndim):
        if s.strides[k] < 0:
            low[0] += s.strides[k] * (s.dims[k] - 1)
        else:
            high[0] += s.strides[k] * (s.dims[k] - 1)


cdef bint same_place(const Operand* s, const Operand* t) nogil:
    """The same elements in the same order."""
    cdef int k
    if s.data != t.data or s.type != t.type or not same_shape(s, t):
        return False
    for k in range(s.ndim):
        if s.strides[k] != t.strides[k] and s.dims[k] > 1:
            return False
    return True


cdef bint near(const Operand* s, const Operand* t) nogil:
    """Their ranges of memory overlap."""
    cdef char *low
    cdef char *high
    cdef char *other_low
    cdef char *other_high
    if elements(s) == 0 or elements(t) == 0:
        return False
    extent(s, &low, &high)
    extent(t, &other_low, &other_high)
    return low < other_high and other_low < high


cdef int apart(function, name, object array, const Operand* s, object out, const Operand* t) except -1:
    """Raises where an input and the output overlap without being the same."""
    if near(s, t) and kShares(array, out):
        raise ArgumentError(function, None, "out", f"wanted an array apart from {name}, or {name} itself where that is allowed; "
                            "got one that overlaps it")
    return 0


cdef object describe(object o):
    """What was got, for a message."""
    if not cnp.PyArray_Check(o):
        return f"{type(o).__name__}"
    cdef object array = o
    if isinstance(o, kMasked):
        return "a masked array"
    text = f"an array of {array.dtype}"
    if not array.dtype.isnative:
        text = f"a byte-swapped array ({array.dtype.str})"
    elif array.ndim and array.size and array.strides[array.ndim - 1] != array.itemsize and array.shape[array.ndim - 1] > 1:
        text += f" with elements {array.strides[array.ndim - 1]} bytes apart"
    return text + f" and shape {array.shape}"


cdef dict kNumbers = {}


cdef int number_of(object dtype) except? -1:
    """numpy's number of a native dtype, kSwapped for another."""
    try:
        return kNumbers[dtype]
    except (KeyError, TypeError):
        pass
    kind = numpy.dtype(dtype)
    number = kind.num if kind.isnative else kSwapped
    if isinstance(dtype, (type, str)):
        kNumbers[dtype] = number
    return number


cdef object type_name(int number):
    return "a number" if number == kNumber else "int16c" if number == cnp.NPY_VOID else \
        cnp.PyArray_DescrFromType(number).name


cdef object wanted_types(const QvrGroup* g, int place):
    names = []
    cdef int f
    for f in range(g.formCount):
        if g.forms[f].input[place] != kNone:
            name = type_name(g.forms[f].input[place])
            if name not in names:
                names.append(name)
    return " or ".join(names)


cdef inline object name_of(const char* text):
    return text.decode()


cdef int parse_number(const QvrGroup* g, const char* argument, object value, char letter, int slot, QvrArguments* a) except -1:
    """A number as C takes it, refused where its type cannot hold it."""
    cdef long low, high, number
    try:
        if letter == c'f' or letter == c'd':
            a.r[slot] = value
            return 0
        number = value if isinstance(value, int) else value.__index__()
    except (TypeError, AttributeError):
        raise ArrayError(name_of(g.name), None, name_of(argument), "wanted "
                         + ("a number" if letter == c'f' or letter == c'd' else "an integer")
                         + f"; got {type(value).__name__}") from None
    except OverflowError:
        low, high = 0, 0
        number = 1
    else:
        if letter == c'B':
            low, high = 0, 255
        elif letter == c'H':
            low, high = 0, 65535
        elif letter == c'h':
            low, high = -32768, 32767
        elif letter == c'I':
            low, high = 0, 4294967295
        else:
            low, high = -2147483648, 2147483647
    if number < low or number > high:
        raise ArgumentError(name_of(g.name), None, name_of(argument), f"{value} is outside the range of its type")
    a.i[slot] = number
    return 0


cdef dict kChoices = {}


cdef dict choices_of(const QvrGroup* g, int k):
    """The choices of an argument by name; found once by text, then by place."""
    key = <uintptr_t>&g.extraName[k]
    found = kChoices.get(key)
    if found is None:
        found = kChoices[key] = SELECTORS[name_of(g.name), name_of(g.extraName[k])]
    return found


cdef int parse_extra(const QvrGroup* g, const QvrForm* form, int k, object value, QvrArguments* a) except -1:
    if g.selectors & (1 << k):
        choices = choices_of(g, k)
        if value is None or isinstance(value, str):
            if value in choices:
                a.i[k] = choices[value]
                return 0
        else:
            parse_number(g, g.extraName[k], value, form.extra[k], k, a)
            if a.i[k] in choices.values():
                return 0
        raise ArgumentError(name_of(g.name), "qvrErrBadSelector", name_of(g.extraName[k]),
                            f"wanted one of {', '.join(repr(c) for c in choices if c)}; got {value!r}")
    if value is None:
        a.i[k] = kNothing if g.length != NULL else 0
        a.r[k] = 0
        return 0
    return parse_number(g, g.extraName[k], value, form.extra[k], k, a)


cdef const QvrForm* choose(const QvrGroup* g, const int* types, int output, int accuracy, PyObject** extras, int over) noexcept:
    """The form for these element types: in place where the output takes the place of an input, out of place otherwise, and
    in place on a copy where there is no other."""
    cdef const QvrForm* form
    cdef const QvrForm* found = NULL
    cdef int f, k, rank, best = -1
    for f in range(g.formCount):
        form = &g.forms[f]
        if output != kNone and form.output != output or form.accuracy < accuracy:
            continue
        for k in range(g.inputs):
            if form.input[k] != types[k]:
                break
        else:
            for k in range(g.extras):
                if form.extra[k] == c'-' and <object>extras[k] is not None and <object>extras[k] is not 0:
                    break
            else:
                rank = 2 if form.inPlace == kNone else 3 if over & (1 << form.inPlace) else 1
                # Of two that serve, the one that takes fewer arguments; with a wish for accuracy, the least that is enough.
                if rank > best or (rank == best and accuracy > 0):
                    found, best = form, rank
    return found


cdef object prepared(const QvrGroup* g, list arrays, object out, PyObject** extras, object dtype, object accuracy):
    """Arrays converted for copy=True: to the first form that takes their types without loss, else to the first at all."""
    cdef int f, k
    given = [numpy.asarray(o) if not PyArray_CheckAnyScalar(o) or g.inputs == 1 else o for o in arrays]
    for casting in ("safe", "same_kind", "unsafe"):
        for f in range(g.formCount):
            if accuracy is not None and g.forms[f].accuracy < accuracy:
                continue
            fits = []
            for k in range(g.inputs):
                number = g.forms[f].input[k]
                if number == kNumber:
                    if isinstance(given[k], numpy.ndarray):
                        break
                    fits.append(given[k])
                else:
                    kind = kInt16c if number == cnp.NPY_VOID else cnp.PyArray_DescrFromType(number)
                    if not isinstance(given[k], numpy.ndarray) or not numpy.can_cast(given[k].dtype, kind, casting):
                        break
                    fits.append(numpy.ascontiguousarray(given[k], dtype=kind).reshape(given[k].shape))
            else:
                return fits
    return None


cdef object refuse(const QvrGroup* g, list arrays, object out, PyObject** extras, object dtype, object accuracy):
    """Raises what says why no form takes these arguments."""
    cdef int f, k
    function = name_of(g.name)
    types = []
    for k in range(g.inputs):
        o = arrays[k]
        name = name_of(g.inputName[k])
        possible = {g.forms[f].input[k] for f in range(g.formCount)}
        if cnp.PyArray_Check(o):
            number = cnp.PyArray_TYPE(<cnp.ndarray>o) if o.dtype.isnative and not isinstance(o, kMasked) else kSwapped
        elif PyArray_CheckAnyScalar(o) and not isinstance(o, (str, bytes)):
            number = kNumber
        else:
            number = kIrregular
        types.append(number)
        if number not in possible:
            raise ArrayError(function, None, name, f"wanted an array of {wanted_types(g, k)}; got {describe(o)}")
    if accuracy is not None and not builtins.any(g.forms[f].accuracy >= accuracy for f in range(g.formCount)):
        most = builtins.max(g.forms[f].accuracy for f in range(g.formCount))
        raise ArgumentError(function, None, "accuracy", f"wanted at most {most} bits; got {accuracy}")
    fitting = [f for f in range(g.formCount) if builtins.all(g.forms[f].input[k] == types[k] for k in range(g.inputs))]
    if not fitting:
        combinations = "; ".join(dict.fromkeys(", ".join(type_name(g.forms[f].input[k]) for k in range(g.inputs))
                                               for f in range(g.formCount)))
        raise ArrayError(function, None, name_of(g.inputName[g.inputs - 1]),
                         f"wanted one of the combinations ({combinations}); got "
                         + ", ".join(describe(o) for o in arrays))
    for k in range(g.extras):
        if <object>extras[k] is not None and <object>extras[k] is not 0 and builtins.all(g.forms[f].extra[k] == c'-' for f in fitting):
            raise ArgumentError(function, None, name_of(g.extraName[k]),
                                f"there is none with {', '.join(describe(o) for o in arrays)}")
    outputs = " or ".join(dict.fromkeys(type_name(g.forms[f].output) for f in fitting))
    got = describe(out) if out is not None else f"dtype {numpy.dtype(dtype)}" if dtype is not None else "these arguments"
    raise ArrayError(function, None, "out" if out is not None else "dtype", f"wanted an array of {outputs}; got {got}")


cdef object new_array(int ndim, cnp.npy_intp* dims, int number):
    if number == cnp.NPY_VOID:
        return numpy.empty([dims[k] for k in range(ndim)], kInt16c)
    return cnp.PyArray_EMPTY(ndim, dims, number, 0)


cdef object value_of(const char* place, int number):
    if number == cnp.NPY_FLOAT:
        return (<float*>place)[0]
    if number == cnp.NPY_DOUBLE:
        return (<double*>place)[0]
    if number == cnp.NPY_INT:
        return (<int32_t*>place)[0]
    if number == cnp.NPY_SHORT:
        return (<int16_t*>place)[0]
    if number == cnp.NPY_USHORT:
        return (<uint16_t*>place)[0]
    if number == cnp.NPY_UINT:
        return (<uint32_t*>place)[0]
    return (<uint8_t*>place)[0]


cdef object argument_of(const QvrGroup* g, const QvrForm* form, int status):
    """The argument that an error is about."""
    return BLAME.get((name_of(form.name), status)) or (name_of(g.inputName[0]) if g.inputs else None)


cdef int first_with(const QvrForm* form, const QvrGroup* g, const QvrArguments* whole, const int* item, cnp.npy_intp n, int status,
                    cnp.npy_intp* index) nogil:
    """Looks for the first element with a status: block by block into memory of its own, then one by one."""
    cdef char scratch[256 * 16]
    cdef QvrArguments a
    cdef cnp.npy_intp start = 0, count, at
    cdef int k, got
    while start < n:
        count = 256 if n - start > 256 else n - start
        a = whole[0]
        for k in range(g.inputs):
            a.p[k] = whole.p[k] + start * item[k]
        for at in range(-1, count):
            if at >= 0:
                for k in range(g.inputs):
                    a.p[k] = whole.p[k] + (start + at) * item[k]
            for k in range(g.inputs + 1):
                a.n[k] = count if at < 0 else 1
            a.p[g.inputs] = scratch
            if form.inPlace != kNone:
                memcpy(scratch, a.p[form.inPlace], a.n[0] * item[<int>form.inPlace])
            got = form.call(&a)
            if at < 0 and got <= 0:
                break
            if at >= 0 and got == status:
                index[0] = start + at
                return 1
        start += count
    return 0


cdef int report(const QvrGroup* g, const QvrForm* form, int status, object index) except -1:
    """An exception or a warning for a status other than 0."""
    function = name_of(g.name).lstrip("_")
    if status < 0:
        raise status_error(function, status, argument_of(g, form, status))
    warnings.warn(Warning(function, STATUSES.get(status, (f"status {status}",))[0], index), stacklevel=1)
    return 0


cdef inline bint flat(const QvrGroup* g, const Operand* op, const int* types, int count, bint has_out) nogil:
    """All arrays are whole in memory and of one shape."""
    cdef int k, first = -1
    if not g.elementwise or g.rank != 1:
        return False
    for k in range(count + (1 if has_out else 0)):
        if k < count and types[k] == kNumber:
            continue
        if not op[k].flags & NPY_ARRAY_C_CONTIGUOUS:
            return False
        if first < 0:
            first = k
        elif not same_shape(&op[first], &op[k]):
            return False
    return True


cdef object run(const QvrGroup* g, PyObject** inputs, object out, PyObject** extras, object dtype, object accuracy, object copy):
    cdef Operand op[4]
    cdef int types[3]
    cdef int item[4]
    cdef int k, wanted = kNone, bits = 0, over = 0, status = 0, m = g.inputs
    cdef bint irregular = False, has_out = out is not None
    cdef const QvrForm* form
    cdef QvrArguments a
    cdef cnp.npy_intp n, done, at
    cdef PyThreadState* state
    cdef char* source = NULL
    for k in range(m):
        o = <object>inputs[k]
        if cnp.PyArray_Check(o) and (cnp.PyArray_NDIM(<cnp.ndarray>o) > 0 or m == 1):
            look(o, &op[k])
            types[k] = op[k].type
        elif PyArray_CheckAnyScalar(o) and not isinstance(o, (str, bytes)):
            types[k] = kNumber
        else:
            types[k] = kIrregular
    if g.commutative and m == 2 and types[0] == kNumber and types[1] != kNumber:
        inputs[0], inputs[1] = inputs[1], inputs[0]
        types[0], types[1], op[0] = types[1], kNumber, op[1]
    if has_out:
        if not cnp.PyArray_Check(out):
            raise ArrayError(name_of(g.name), None, "out", f"wanted an array; got {type(out).__name__}")
        look(out, &op[m])
        wanted = op[m].type
        if not op[m].flags & NPY_ARRAY_WRITEABLE:
            raise ArgumentError(name_of(g.name), None, "out", "wanted a writable array; got a read-only one")
        for k in range(m):
            if types[k] >= 0 and op[k].data == op[m].data and same_place(&op[k], &op[m]):
                over |= 1 << k
    elif g.needsOut:
        raise ArrayError(name_of(g.name), None, "out", "wanted an array; got None")
    elif dtype is not None:
        wanted = number_of(dtype)
    if accuracy is not None:
        bits = accuracy
    form = choose(g, types, wanted, bits, extras, over)
    if form == NULL:
        arrays = [<object>inputs[k] for k in range(m)]
        if copy:
            fits = prepared(g, arrays, out, extras, dtype, accuracy)
            if fits is not None:
                return run_list(g, fits, out, extras, dtype, accuracy)
        return refuse(g, arrays, out, extras, dtype, accuracy)
    for k in range(m):
        if types[k] == kNumber:
            parse_number(g, g.inputName[k], <object>inputs[k], form.number, kMaxExtras, &a)
    for k in range(g.extras):
        if form.extra[k] != c'-':
            parse_extra(g, form, k, <object>extras[k], &a)
    if not flat(g, op, types, m, has_out):
        return run_rows(g, form, inputs, op, types, out, extras, &a, over, dtype, accuracy, copy)
    # The elements of all axes in one row.
    cdef int first = m
    for k in range(m):
        if types[k] != kNumber:
            first = k
            break
    if not has_out:
        out = new_array(op[first].ndim, op[first].dims, form.output)
        look(out, &op[m])
    elif m > 0:
        for k in range(m):
            if types[k] != kNumber and not over & (1 << k) and near(&op[k], &op[m]):
                apart(name_of(g.name), name_of(g.inputName[k]), <object>inputs[k], &op[k], out, &op[m])
    n = elements(&op[m])
    if n == 0:
        return out
    if form.inPlace != kNone and not over & (1 << form.inPlace):
        if over and not (g.commutative and m == 2):
            raise ArgumentError(name_of(g.name), None, "out",
                                f"wanted {name_of(g.inputName[form.inPlace])} or an array apart from the others; got another input")
        if over:
            op[0], op[1] = op[1], op[0]
        else:
            source = op[form.inPlace].data
    state = NULL
    if n * g.weight >= kWorkOfAMicrosecond:
        state = PyEval_SaveThread()
    if source != NULL:
        memcpy(op[m].data, source, n * op[m].itemsize)
    done = 0
    while done < n:
        at = n - done if n - done <= (1 << 30) else 1 << 30
        for k in range(m + 1):
            if k == m or types[k] != kNumber:
                a.p[k] = op[k].data + done * op[k].itemsize
            a.n[k] = at
        k = form.call(&a)
        if k != 0 and status >= 0 and (k < 0 or status == 0):
            status = k
        if k < 0:
            break
        done += at
    if state != NULL:
        PyEval_RestoreThread(state)
    if status != 0:
        index = None
        if status > 0 and not over:
            for k in range(m + 1):
                item[k] = 0 if k < m and types[k] == kNumber else op[k].itemsize
                a.p[k] = op[k].data if k == m or types[k] != kNumber else NULL
            with nogil:
                k = first_with(form, g, &a, item, n, status, &at)
            if k:
                index = at if op[m].ndim == 1 else numpy.unravel_index(at, out.shape)
                if op[m].ndim != 1:
                    index = tuple([int(i) for i in index])
        report(g, form, status, index)
    return out


cdef object run_list(const QvrGroup* g, list arrays, object out, PyObject** extras, object dtype, object accuracy):
    cdef PyObject* inputs[3]
    cdef int k
    for k in range(g.inputs):
        inputs[k] = <PyObject*>arrays[k]
    return run(g, inputs, out, extras, dtype, accuracy, False)


cdef int check_layout(const QvrGroup* g, const char* name, object array, const Operand* s, int rank) except -1:
    """Rows whole in memory, axes enough, row steps that C can hold."""
    if not dense(s):
        raise ArrayError(name_of(g.name), None, name_of(name), "wanted an array whose last axis is contiguous; got " + describe(array)
                         + ("; copy=True copies it" if name_of(name) != "out" else ""))
    if rank == 2 and (s.ndim < 2 or s.strides[s.ndim - 2] > kLongestRow or s.strides[s.ndim - 2] < -kLongestRow):
        raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(name),
                            f"wanted an image, an array of two axes or more with rows less than 2^31 bytes apart; got {describe(array)}")
    return 0


cdef object run_rows(const QvrGroup* g, const QvrForm* form, PyObject** inputs, Operand* op, const int* types, object out,
                     PyObject** extras, QvrArguments* a, int over, object dtype, object accuracy, object copy):
    """Row by row, or image by image, over the axes before."""
    cdef int m = g.inputs, rank = g.rank, k, j, lead = -1, status = 0, outer, got, core
    cdef bint has_out = out is not None
    cdef int depth[4]
    cdef cnp.npy_intp dims[32]
    cdef cnp.npy_intp rows = 1, work, size, row
    cdef char buffers[3][16]
    cdef PyThreadState* state = NULL
    cdef long last
    for k in range(m):
        if types[k] != kNumber:
            if not dense(&op[k]) and copy:
                return run_list(g, [numpy.ascontiguousarray(<object>inputs[k]) if cnp.PyArray_Check(<object>inputs[k])
                                    else <object>inputs[k] for k in range(m)], out, extras, dtype, accuracy)
            check_layout(g, g.inputName[k], <object>inputs[k], &op[k], 1 if g.vectors & (1 << k) else rank)
            if lead < 0 or (axes(&op[k]) > axes(&op[lead]) and not g.elementwise):
                lead = k
    if has_out:
        check_layout(g, b"out", out, &op[m], rank)
        if lead < 0:
            lead = m
    # Axes before the row are those of the lead.
    outer = axes(&op[lead]) - rank if lead >= 0 else 0
    if outer > 30:
        raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(g.inputName[lead]), "wanted at most 31 axes")
    for k in range(outer):
        rows *= op[lead].dims[k]
        dims[k] = op[lead].dims[k]
    for k in range(m):
        if types[k] == kNumber:
            continue
        core = 1 if g.vectors & (1 << k) else rank
        a.n[k] = op[k].dims[axes(&op[k]) - 1]
        if a.n[k] > kLongestRow:
            raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(g.inputName[k]), "wanted rows shorter than 2^31 elements")
        # One row for all is for functions of whole rows only.
        if k != lead and not (axes(&op[k]) == core and (not g.elementwise or core < rank)):
            if axes(&op[k]) - core != outer:
                raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(g.inputName[k]), shapes_differ(inputs, k, lead))
            for j in range(outer + (rank if g.elementwise or rank == 2 else 0)):
                if op[k].dims[j] != op[lead].dims[j]:
                    raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(g.inputName[k]), shapes_differ(inputs, k, lead))
        elif rank == 2 and core == 2 and k != lead:
            for j in range(2):
                if op[k].dims[op[k].ndim - 2 + j] != op[lead].dims[op[lead].ndim - 2 + j]:
                    raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(g.inputName[k]), shapes_differ(inputs, k, lead))
    if rank == 2:
        a.width, a.height = 0, 0
        if op[lead].dims[op[lead].ndim - 1] > kLongestRow or op[lead].dims[op[lead].ndim - 2] > kLongestRow:
            raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(g.inputName[lead]), "wanted fewer than 2^31 rows and columns")
        a.width, a.height = op[lead].dims[op[lead].ndim - 1], op[lead].dims[op[lead].ndim - 2]
        dims[outer], dims[outer + 1] = a.height, a.width
    # The output's row.
    size = 0
    if g.length != NULL:
        size = g.length(a.n, a)
        if size > kLongestRow:
            raise ArgumentError(name_of(g.name), "qvrErrBadSize", None, f"the result would have {size} elements in a row")
    elif lead >= 0:
        size = op[lead].dims[axes(&op[lead]) - 1]
    a.n[m] = size
    if rank == 1:
        dims[outer] = size if size > 0 else 0
    if form.output != kNone:
        if not has_out:
            out = new_array(0 if lead >= 0 and op[lead].ndim == 0 and g.length == NULL else outer + rank, dims, form.output)
            look(out, &op[m])
        else:
            fits = axes(&op[m]) == outer + rank
            if fits:
                for k in range(outer + rank):
                    fits = fits and op[m].dims[k] == dims[k]
            if not fits:
                raise ArgumentError(name_of(g.name), "qvrErrBadSize", "out", f"wanted the shape {tuple([dims[k] for k in range(outer + rank)])}; "
                                    f"got {out.shape}")
            for k in range(m):
                if types[k] != kNumber and not (over & (1 << k) and g.length == NULL) and near(&op[k], &op[m]):
                    apart(name_of(g.name), name_of(g.inputName[k]), <object>inputs[k], &op[k], out, &op[m])
        if form.inPlace != kNone and not over & (1 << form.inPlace):
            if over:
                raise ArgumentError(name_of(g.name), None, "out", f"wanted {name_of(g.inputName[form.inPlace])} or an array apart from the "
                                    "others; got another input")
            cnp.PyArray_CopyInto(<cnp.ndarray>out, <cnp.ndarray><object>inputs[<int>form.inPlace])
    results = []
    for k in range(g.results):
        if outer > 0:
            results.append(new_array(outer, dims, form.result[k]))
            a.p[m + 1 + k] = cnp.PyArray_BYTES(<cnp.ndarray>results[k])
        else:
            memset(buffers[k], 0, 16)
            a.p[m + 1 + k] = buffers[k]
    if form.output != kNone and elements(&op[m]) == 0 and g.results == 0 and (g.length == NULL or lead < 0 or elements(&op[lead]) == 0):
        rows = 0
    if g.written >= 0 and rows > 1 and form.extra[g.written] in b"fd":
        raise ArgumentError(name_of(g.name), "qvrErrBadSize", name_of(g.inputName[0]), "wanted one row, since the call returns what the next one takes")
    work = rows * g.weight
    for k in range(m):
        if types[k] != kNumber:
            work = work * (a.n[k] if a.n[k] > 0 else 1) if g.quadratic or k == lead else work
    if m == 0:
        work = size * g.weight
    if rank == 2:
        work *= a.height
    last = a.i[g.written] if g.written >= 0 else 0
    if work >= kWorkOfAMicrosecond:
        state = PyEval_SaveThread()
    for k in range(m + (1 if form.output != kNone else 0)):
        if k == m or types[k] != kNumber:
            a.step[k] = op[k].strides[axes(&op[k]) - 2] if rank == 2 and axes(&op[k]) >= 2 else 0
            # An array without these axes gives its one row each time.
            depth[k] = outer if axes(&op[k]) > (1 if k < m and g.vectors & (1 << k) else rank) else 0
    for row in range(rows):
        for k in range(m + (1 if form.output != kNone else 0)):
            if k == m or types[k] != kNumber:
                a.p[k] = row_at(&op[k], depth[k], row)
        if g.written >= 0:
            a.i[g.written] = last
        got = form.call(a)
        if got < 0:
            status = got
            break
        if got > 0 and status == 0:
            status = got
        for k in range(g.results):
            if outer > 0:
                a.p[m + 1 + k] += size_of(form.result[k])
    if state != NULL:
        PyEval_RestoreThread(state)
    if status != 0:
        report(g, form, status, None)
    if outer == 0 or rows == 0:
        results = [value_of(buffers[k], form.result[k]) if outer == 0 else results[k] for k in range(g.results)]
    if form.output != kNone:
        results.insert(0, out)
    if g.written >= 0:
        results.append(a.r[g.written] if form.extra[g.written] in b"fd" else a.i[g.written])
    return results[0] if len(results) == 1 else tuple(results)


cdef int size_of(int number) noexcept nogil:
    return 8 if number == cnp.NPY_DOUBLE else 2 if number == cnp.NPY_SHORT or number == cnp.NPY_USHORT else \
        1 if number == cnp.NPY_UBYTE else 4


cdef object shapes_differ(PyObject** inputs, int k, int lead):
    return f"wanted the shape {(<object>inputs[lead]).shape}; got {(<object>inputs[k]).shape}"
