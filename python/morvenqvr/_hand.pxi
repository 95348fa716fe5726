# What objects and functions written by hand share, and the functions whose arguments have a shape of their own.
cdef object taken(object function, object name, object o, int number, int ndim, object copy, Operand* s):
    """An input array of an element type, its last axis contiguous; ndim axes, or any number for -1."""
    cdef object array = o
    if cnp.PyArray_Check(o):
        look(o, s)
        if s.type == number and dense(s) and (ndim < 0 or s.ndim == ndim):
            return o
    if copy:
        kind = kInt16c if number == cnp.NPY_VOID else cnp.PyArray_DescrFromType(number)
        array = numpy.ascontiguousarray(o, dtype=kind).reshape(numpy.shape(o))
        look(array, s)
        if ndim < 0 or s.ndim == ndim:
            return array
    if cnp.PyArray_Check(o) and s.type == number and dense(s):
        raise ArgumentError(function, "qvrErrBadSize", name, f"wanted {ndim} axes; got {describe(o)}")
    wanted = type_name(number) + (" with a contiguous last axis" if cnp.PyArray_Check(o) and s.type == number else "")
    raise ArrayError(function, None, name, f"wanted an array of {wanted}; got {describe(o)}")


cdef object given(object function, object out, int number, tuple shape, Operand* s, object name="out"):
    """The output: made if None, else judged."""
    cdef object array = out
    cdef cnp.npy_intp dims[32]
    cdef int k
    if out is None:
        for k in range(len(shape)):
            dims[k] = shape[k]
        array = new_array(len(shape), dims, number)
        look(array, s)
        return array
    if not cnp.PyArray_Check(out):
        raise ArrayError(function, None, name, f"wanted an array; got {type(out).__name__}")
    look(out, s)
    if s.type != number or not dense(s):
        raise ArrayError(function, None, name, f"wanted an array of {type_name(number)} with a contiguous last axis; got {describe(out)}")
    if not s.flags & NPY_ARRAY_WRITEABLE:
        raise ArgumentError(function, None, name, "wanted a writable array; got a read-only one")
    if array.shape != shape:
        raise ArgumentError(function, "qvrErrBadSize", name, f"wanted the shape {shape}; got {array.shape}")
    return out


cdef int integer(object function, object name, object value, long low, long high, object status) except? -1:
    """An integer argument between bounds."""
    try:
        number = value.__index__()
    except AttributeError:
        raise ArrayError(function, None, name, f"wanted an integer; got {type(value).__name__}") from None
    if number < low or number > high:
        raise ArgumentError(function, status, name, f"wanted {low} to {high}; got {number}")
    return number


cdef tuple several(object function, object name, object values, int count):
    """So many values in a row, as (height, width)."""
    try:
        found = tuple(values)
    except TypeError:
        raise ArrayError(function, None, name, f"wanted {count} numbers; got {type(values).__name__}") from None
    if len(found) != count:
        raise ArgumentError(function, "qvrErrBadSize", name, f"wanted {count} numbers; got {len(found)}")
    return found


cdef double real(object function, object name, object value) except? -1:
    try:
        return value
    except TypeError:
        raise ArrayError(function, None, name, f"wanted a number; got {type(value).__name__}") from None


cdef int done(object function, int status, object argument) except -1:
    """An exception or a warning for a status other than 0."""
    if status < 0:
        raise status_error(function, status, argument)
    if status > 0:
        warnings.warn(Warning(function, STATUSES.get(status, (f"status {status}",))[0]), stacklevel=1)
    return 0


cdef object chosen(object function, object name, object value, dict choices, object status):
    """The value of a named choice; a value itself will do too."""
    if value is None or isinstance(value, str):
        if value in choices:
            return choices[value]
    elif isinstance(value, int) and value in choices.values():
        return value
    raise ArgumentError(function, status, name, f"wanted one of {', '.join(map(repr, choices))}; got {value!r}")


cdef void release_block(object capsule):
    (<void (*)(void*)>entry[E_qvrsFree])(PyCapsule_GetPointer(capsule, b"morvenqvr.block"))


def empty(shape, dtype=numpy.float32):
    """empty(shape, dtype=float32)

    An array that begins on a 64-byte boundary, its content undefined. Such arrays are the fastest; any other will do.
    """
    kind = numpy.dtype(dtype)
    if kind.hasobject:
        raise ArrayError("empty", None, "dtype", f"wanted numbers; got {kind}")
    sizes = tuple(shape) if numpy.ndim(shape) else (shape,)
    size = 1
    for length in sizes:
        size *= integer("empty", "shape", length, 0, 2**62, "qvrErrBadSize")
    if size * kind.itemsize > kLongestRow:
        raise ArgumentError("empty", "qvrErrBadSize", "shape", f"wanted less than 2^31 bytes; got {size * kind.itemsize}")
    cdef void* block = (<void* (*)(int)>entry[E_qvrsMalloc_8u])(builtins.max(size * kind.itemsize, 1))
    if block == NULL:
        raise NoMemoryError("empty", "qvrErrNoMemory", "shape")
    cdef cnp.npy_intp bytes_ = size * kind.itemsize
    cdef object flat = cnp.PyArray_SimpleNewFromData(1, &bytes_, cnp.NPY_UBYTE, block)
    cdef object owner = PyCapsule_New(block, b"morvenqvr.block", release_block)
    Py_INCREF(owner)
    cnp.PyArray_SetBaseObject(<cnp.ndarray>flat, owner)
    return flat.view(kind).reshape(sizes)


def split_scaled(x, channels, out=None, *, copy=False):
    """split_scaled(x, channels, out=None, *, copy=False)

    Splits int16 samples that are interleaved by channel into one row of float32 for each channel, mapped on -1..1:
    out[c, i] = x[i * channels + c] * (2 / 65535) + 1 / 65535.

        x: int16 samples, a whole number for each channel
        channels: at least 1
        out: float32 of shape (channels, len(x) // channels)
    """
    cdef Operand s, t
    cdef int count = integer("split_scaled", "channels", channels, 1, kLongestRow, "qvrErrBadSize"), k, status
    x = taken("split_scaled", "x", x, cnp.NPY_SHORT, 1, copy, &s)
    if s.dims[0] % count or s.dims[0] > kLongestRow:
        raise ArgumentError("split_scaled", "qvrErrBadSize", "x", f"wanted a multiple of {count} samples, below 2^31; got {s.dims[0]}")
    out = given("split_scaled", out, cnp.NPY_FLOAT, (count, s.dims[0] // count), &t)
    if s.dims[0] == 0:
        return out
    apart("split_scaled", "x", x, &s, out, &t)
    cdef void** rows = <void**>malloc(count * sizeof(void*))
    if rows == NULL:
        raise NoMemoryError("split_scaled", "qvrErrNoMemory")
    for k in range(count):
        rows[k] = row_at(&t, 1, k)
    cdef int length = s.dims[0] // count
    with nogil:
        status = (<int (*)(void*, void*, int, int) nogil>entry[E_qvrsSplitScaled_16s32f_D2L])(s.data, rows, count, length)
        free(rows)
    done("split_scaled", status, "x")
    return out


def copy_columns(x, index, out=None, *, copy=False):
    """copy_columns(x, index, out=None, *, copy=False)

    Gathers columns: out[r, c] = x[r, index[c]].

        x: int16, two axes; or a list of rows, int16 arrays of one length
        index: int32 columns of x
        out: int16, (rows, len(index)); with a list of rows, a list of rows
    """
    cdef Operand s, t, i
    cdef int status = 0, rows, k, width, columns
    cdef void** sources
    cdef void** targets
    index = taken("copy_columns", "index", index, cnp.NPY_INT, 1, copy, &i)
    columns = integer("copy_columns", "index", i.dims[0], 0, kLongestRow, "qvrErrBadSize")
    if isinstance(x, (list, tuple)):
        rows = len(x)
        held = [taken("copy_columns", "x", row, cnp.NPY_SHORT, 1, copy, &s) for row in x]
        width = held[0].shape[0] if rows else 0
        if builtins.any(row.shape[0] != width for row in held):
            raise ArgumentError("copy_columns", "qvrErrBadSize", "x", "wanted rows of one length")
        check_columns(index, width)
        out = [None] * rows if out is None else list(out)
        if len(out) != rows:
            raise ArgumentError("copy_columns", "qvrErrBadSize", "out", f"wanted {rows} rows; got {len(out)}")
        out = [given("copy_columns", row, cnp.NPY_SHORT, (columns,), &t) for row in out]
        if rows == 0 or columns == 0:
            return out
        for source in held:
            look(source, &s)
            for target in out:
                look(target, &t)
                apart("copy_columns", "x", source, &s, target, &t)
        sources = <void**>malloc(2 * rows * sizeof(void*))
        if sources == NULL:
            raise NoMemoryError("copy_columns", "qvrErrNoMemory")
        targets = sources + rows
        for k in range(rows):
            sources[k], targets[k] = cnp.PyArray_DATA(<cnp.ndarray>held[k]), cnp.PyArray_DATA(<cnp.ndarray>out[k])
        with nogil:
            status = (<int (*)(void*, int, void*, void*, int, int) nogil>entry[E_qvrsCopyColumn_Indirect_16s_D2L])(
                sources, width, targets, i.data, columns, rows)
            free(sources)
        done("copy_columns", status, "x")
        return out
    x = taken("copy_columns", "x", x, cnp.NPY_SHORT, 2, copy, &s)
    rows = integer("copy_columns", "x", s.dims[0], 0, kLongestRow, "qvrErrBadSize")
    width = integer("copy_columns", "x", s.dims[1], 0, kLongestRow, "qvrErrBadSize")
    out = given("copy_columns", out, cnp.NPY_SHORT, (rows, columns), &t)
    check_columns(index, width)
    if rows == 0 or columns == 0:
        return out
    apart("copy_columns", "x", x, &s, out, &t)
    cdef cnp.npy_intp stride = s.strides[0] // 2 if rows > 1 else width, target_stride = t.strides[0] // 2 if rows > 1 else columns
    if stride < width or target_stride < columns or stride > kLongestRow or target_stride > kLongestRow:
        raise ArrayError("copy_columns", "qvrErrBadColumns", "x" if stride < width else "out", "wanted rows one behind the other")
    with nogil:
        status = (<int (*)(void*, int, int, void*, void*, int, int, int) nogil>entry[E_qvrsCopyColumn_Indirect_16s_D2])(
            s.data, width, stride, t.data, i.data, columns, target_stride, rows)
    done("copy_columns", status, "index")
    return out


cdef int check_columns(index, int width) except -1:
    """The indices are judged before anything is written."""
    if index.size and (index.min() < 0 or index.max() >= width):
        raise ArgumentError("copy_columns", "qvrErrBadSize", "index", f"wanted columns 0 to {width - 1}; got {index.min()} to {index.max()}")
    return 0


def check_find_peaks(x, search_size, moving_average_size):
    """check_find_peaks(x, search_size, moving_average_size)

    Judges its arguments as the library's FindPeaks does, which finds nothing: float32 of 1..65535 elements, both sizes in
    1..127. Returns None, or raises.
    """
    cdef Operand s
    x = taken("check_find_peaks", "x", x, cnp.NPY_FLOAT, 1, False, &s)
    cdef char unused = 0
    cdef int length = s.dims[0] if s.dims[0] <= kLongestRow else kLongestRow
    cdef int status = (<int (*)(void*, void*, int, int, int)>entry[E_qvrsFindPeaks_32f8u])(
        s.data, &unused, length, integer("check_find_peaks", "search_size", search_size, -kLongestRow, kLongestRow, None),
        integer("check_find_peaks", "moving_average_size", moving_average_size, -kLongestRow, kLongestRow, None))
    done("check_find_peaks", status, "x" if status == CONSTANTS_["qvrErrBadCount"] else
         "moving_average_size" if 1 <= search_size <= 127 else "search_size")


CONSTANTS_ = {name: value for value, (name, _) in STATUSES.items()}


def convolve_cyclic(a, b, out=None, *, copy=False):
    """convolve_cyclic(a, b, out=None, *, copy=False)

    Cyclic convolution of 8 by 8 values of float32: out[n] = sum of a[k] * b[(n - k) % 8].
    """
    cdef Operand s, t, o
    a = taken("convolve_cyclic", "a", a, cnp.NPY_FLOAT, 1, copy, &s)
    b = taken("convolve_cyclic", "b", b, cnp.NPY_FLOAT, 1, copy, &t)
    for name, length in (("a", s.dims[0]), ("b", t.dims[0])):
        if length != 8:
            raise ArgumentError("convolve_cyclic", "qvrErrBadSize", name, f"wanted 8 values; got {length}")
    out = given("convolve_cyclic", out, cnp.NPY_FLOAT, (8,), &o)
    apart("convolve_cyclic", "a", a, &s, out, &o)
    apart("convolve_cyclic", "b", b, &t, out, &o)
    (<int (*)(void*, void*, void*)>entry[E_qvrsConvCyclic8x8_32f])(s.data, t.data, o.data)
    return out


def block_min_max(x, block, *, copy=False):
    """block_min_max(x, block, *, copy=False)

    Minimum and maximum of each block of an int16 image, and of all of it: (minima, maxima, minimum, maximum). Blocks are
    laid from the top left; those at the right and bottom edges hold what is there.

        x: int16, two axes
        block: (height, width) of a block
    """
    cdef Operand s, low, high
    x = taken("block_min_max", "x", x, cnp.NPY_SHORT, 2, copy, &s)
    cdef int height = integer("block_min_max", "x", s.dims[0], 1, kLongestRow, "qvrErrBadSize")
    cdef int width = integer("block_min_max", "x", s.dims[1], 1, kLongestRow, "qvrErrBadSize")
    block = several("block_min_max", "block", block, 2)
    cdef int block_height = integer("block_min_max", "block", block[0], 1, kLongestRow, "qvrErrBadSize")
    cdef int block_width = integer("block_min_max", "block", block[1], 1, kLongestRow, "qvrErrBadSize")
    cdef int step = integer("block_min_max", "x", s.strides[0] if height > 1 else 2 * width, -kLongestRow, kLongestRow, "qvrErrBadStep")
    shape = ((height + <long>block_height - 1) // block_height, (width + <long>block_width - 1) // block_width)
    minima = given("block_min_max", None, cnp.NPY_SHORT, shape, &low)
    maxima = given("block_min_max", None, cnp.NPY_SHORT, shape, &high)
    cdef int16_t least = 0, most = 0
    cdef int low_step = 2 * shape[1], status
    cdef QvrSize size, blocks
    size.width, size.height, blocks.width, blocks.height = width, height, block_width, block_height
    with nogil:
        status = (<int (*)(void*, int, QvrSize, void*, int, void*, int, QvrSize, int16_t*, int16_t*) nogil>
                  entry[E_qvriBlockMinMax_16s_C1R])(s.data, step, size, low.data, low_step, high.data, low_step, blocks, &least, &most)
    done("block_min_max", status, "x")
    return minima, maxima, least, most


def split_row_tiff(x, out=None, *, copy=False):
    """split_row_tiff(x, out=None, *, copy=False)

    Splits 16-bit little-endian samples into a plane of high bytes, out[0], and one of low bytes, out[1].

        x: uint8, two bytes for each sample
        out: uint8 of shape (2, len(x) // 2)
    """
    cdef Operand s, t
    cdef void* planes[2]
    cdef int status, length
    x = taken("split_row_tiff", "x", x, cnp.NPY_UBYTE, 1, copy, &s)
    if s.dims[0] % 2:
        raise ArgumentError("split_row_tiff", "qvrErrBadSize", "x", f"wanted an even number of bytes; got {s.dims[0]}")
    length = integer("split_row_tiff", "x", s.dims[0] // 2, 0, kLongestRow, "qvrErrBadSize")
    out = given("split_row_tiff", out, cnp.NPY_UBYTE, (2, length), &t)
    if length == 0:
        return out
    apart("split_row_tiff", "x", x, &s, out, &t)
    planes[0], planes[1] = t.data, t.data + t.strides[0]
    with nogil:
        status = (<int (*)(void*, void*, int) nogil>entry[E_qvriSplitRow_TIFF_16u8u_C1])(s.data, planes, length)
    done("split_row_tiff", status, "x")
    return out


def join_row_tiff(x, out=None, *, copy=False):
    """join_row_tiff(x, out=None, *, copy=False)

    Joins what split_row_tiff splits: x is uint8 of shape (2, samples), out takes two bytes for each sample.
    """
    cdef Operand s, t
    cdef void* planes[2]
    cdef int status, length
    x = taken("join_row_tiff", "x", x, cnp.NPY_UBYTE, 2, copy, &s)
    if s.dims[0] != 2:
        raise ArgumentError("join_row_tiff", "qvrErrBadSize", "x", f"wanted two planes; got {s.dims[0]}")
    length = integer("join_row_tiff", "x", s.dims[1], 0, kLongestRow // 2, "qvrErrBadSize")
    out = given("join_row_tiff", out, cnp.NPY_UBYTE, (2 * length,), &t)
    if length == 0:
        return out
    apart("join_row_tiff", "x", x, &s, out, &t)
    planes[0], planes[1] = s.data, s.data + s.strides[0]
    with nogil:
        status = (<int (*)(void*, void*, int) nogil>entry[E_qvriJoinRow_TIFF_8u16u_C1])(planes, t.data, length)
    done("join_row_tiff", status, "x")
    return out


def window(name, length, *, periodic=False):
    """window(name, length, *, periodic=False)

    The weights of a window as float32: "bartlett", "hann", "hamming" or "blackman". They are single precision and
    symmetric; periodic=True makes one element more and leaves the last one out. A length of 1 gives 1.
    """
    functions = {"bartlett": win_bartlett, "hann": win_hann, "hamming": win_hamming, "blackman": win_blackman_std}
    if name not in functions:
        raise ArgumentError("window", "qvrErrBadSelector", "name", f"wanted one of {', '.join(map(repr, functions))}; got {name!r}")
    cdef int n = integer("window", "length", length, 0, kLongestRow - 1, "qvrErrBadSize")
    if n < 2:
        return numpy.ones(n, numpy.float32)
    cdef int m = n + (1 if periodic else 0)
    # Two samples have ends alone, for which the formulas hold as for three without the middle.
    weights = functions[name](numpy.ones(m if m > 2 else 3, numpy.float32))
    return weights[:n] if m > 2 else weights[::2].copy()
