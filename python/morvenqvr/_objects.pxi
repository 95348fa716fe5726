# Objects over prepared transforms. Each owns its memory; close() or the end of the object releases it.
cdef class _Owner:
    """What the library prepared, and the lock that keeps calls in several threads apart."""
    cdef void* handle
    cdef int release, users
    cdef bint gone
    cdef PyThread_type_lock lock
    cdef object __weakref__

    def __cinit__(self):
        self.handle = NULL
        self.release, self.users, self.gone = -1, 0, False
        self.lock = PyThread_allocate_lock()
        if self.lock == NULL:
            raise MemoryError

    def __dealloc__(self):
        self.free()
        if self.lock != NULL:
            PyThread_free_lock(self.lock)

    cdef void free(self):
        if self.handle != NULL and self.release >= 0:
            (<int (*)(void*)>entry[self.release])(self.handle)
        self.handle = NULL

    cdef int begin(self) except -1:
        """An object is made once: calls in other threads rely on what it was made with."""
        if self.handle != NULL or self.gone:
            raise StateError(type(self).__name__, None, None, "the object has been made already")
        return 0

    cdef int enter(self) except -1:
        """Takes the lock: the object belongs to one call at a time."""
        if not PyThread_acquire_lock(self.lock, NOWAIT_LOCK):
            with nogil:
                PyThread_acquire_lock(self.lock, WAIT_LOCK)
        if self.handle == NULL or self.gone:
            PyThread_release_lock(self.lock)
            raise StateError(type(self).__name__, None, None, "the object is closed")
        return 0

    cdef void leave(self):
        PyThread_release_lock(self.lock)

    cdef int share(self, object function) except -1:
        """Enters a call beside others, for what calls only read."""
        if self.handle == NULL or self.gone:
            raise StateError(function, None, None, "the object is closed")
        self.users += 1
        return 0

    cdef void unshare(self):
        self.users -= 1
        if self.gone and self.users == 0:
            self.free()

    @property
    def closed(self):
        """True once the object has been closed."""
        return self.handle == NULL or self.gone

    def close(self):
        """Releases the memory, after a call that is under way; calls that follow raise a StateError."""
        self.gone = True
        if self.users > 0:
            return
        if not PyThread_acquire_lock(self.lock, NOWAIT_LOCK):
            with nogil:
                PyThread_acquire_lock(self.lock, WAIT_LOCK)
        self.free()
        PyThread_release_lock(self.lock)

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()


cdef const QvrKind* kind_of(const QvrKind* kinds, int count, int samples, int taps) noexcept:
    cdef int k
    for k in range(count):
        if kinds[k].samples == samples and (taps < 0 or kinds[k].taps == taps):
            return &kinds[k]
    return NULL


cdef object kinds_text(const QvrKind* kinds, int count):
    return " or ".join(dict.fromkeys(type_name(kinds[k].samples) for k in range(count)))


NORMS = {"backward": CONSTANTS["qvrFftDivInvByN"], "forward": CONSTANTS["qvrFftDivFwdByN"],
         "ortho": CONSTANTS["qvrFftDivBySqrtN"], "none": CONSTANTS["qvrFftNoDiv"]}


cdef class RealFFT(_Owner):
    """RealFFT(n=None, *, order=None, norm="backward", dtype=None, accurate=False)

    Transforms of n real values to the n / 2 + 1 bins of their half spectrum, and back.

        n: length, a power of two; or order: its logarithm
        norm: "backward" (inverse divides by n and undoes forward), "forward" (forward divides by n), "ortho" (both
              divide by the root of n), "none" (neither: forward and inverse in a row give n times the input)
        dtype: float32 or float64, or None for either, as the arrays are; int16 for the fixed-point transform, which has no inverse
        accurate: int16 only: by single precision at every length

    A transform is only read by its calls: one object serves several threads at once. It can be copied and pickled.
    """
    cdef const QvrKind* kind
    cdef int order_, complex_type
    cdef readonly object norm
    cdef readonly bint accurate
    cdef bint either
    cdef object twin
    cdef char* buffer

    def __cinit__(self):
        self.buffer = NULL
        self.kind = &kindsFFT[0]

    def __dealloc__(self):
        free(self.buffer)

    def __init__(self, n=None, *, order=None, norm="backward", dtype=None, accurate=False):
        cdef int flag, status, hint
        cdef void* handle = NULL
        self.begin()
        if (n is None) == (order is None):
            raise ArgumentError("RealFFT", "qvrErrFFTOrder", "n", "wanted a length or an order")
        if n is not None:
            length = integer("RealFFT", "n", n, 1, 1 << 30, "qvrErrFFTOrder")
            order = length.bit_length() - 1
            if length != 1 << order:
                raise ArgumentError("RealFFT", "qvrErrFFTOrder", "n", f"wanted a power of two; got {length}")
        self.order_ = integer("RealFFT", "order", order, 0, 30, "qvrErrFFTOrder")
        self.either = dtype is None
        self.kind = kind_of(kindsFFT, kKindsFFT, cnp.NPY_FLOAT if dtype is None else number_of(dtype), -1)
        if self.kind == NULL:
            self.kind = &kindsFFT[0]
            raise ArrayError("RealFFT", None, "dtype", f"wanted {kinds_text(kindsFFT, kKindsFFT)}; got {numpy.dtype(dtype)}")
        self.complex_type = cnp.NPY_CFLOAT if self.kind.samples == cnp.NPY_FLOAT else \
            cnp.NPY_CDOUBLE if self.kind.samples == cnp.NPY_DOUBLE else cnp.NPY_VOID
        flag = chosen("RealFFT", "norm", norm, NORMS, "qvrErrFFTFlag")
        self.norm = norm
        self.accurate = accurate
        hint = CONSTANTS["qvrHintAccurate"] if accurate else CONSTANTS["qvrHintNone"]
        with nogil:
            status = (<int (*)(void**, int, int, int) nogil>entry[self.kind.create])(&handle, self.order_, flag, hint)
        done("RealFFT", status, "n")
        self.handle, self.release = handle, self.kind.release
        # Work memory for one call at a time; a call that finds it taken lets the library allocate.
        if 6 < self.order_ <= 20 or self.kind.scaled:
            self.buffer = <char*>malloc(builtins.max((8 << self.order_) + 256, 131328 + (4 << self.order_))) if self.order_ <= 20 else NULL

    @property
    def n(self):
        """Length of the signal."""
        return 1 << self.order_

    @property
    def dtype(self):
        """Element type of the signal; None for float32 and float64."""
        return None if self.either else cnp.PyArray_DescrFromType(self.kind.samples)

    def __reduce__(self):
        dtype = None if self.either else self.dtype.str
        return _make, (type(self), (1 << self.order_,), {"norm": self.norm, "dtype": dtype, "accurate": self.accurate})

    cdef object double(self, object x, int number):
        """The transform in double precision, where the array asks for it."""
        if not self.either or not cnp.PyArray_Check(x) or cnp.PyArray_TYPE(<cnp.ndarray>x) != number:
            return None
        if self.closed:
            raise StateError("RealFFT", None, None, "the object is closed")
        if self.twin is None:
            self.twin = RealFFT(1 << self.order_, norm=self.norm, dtype=numpy.float64)
        return self.twin

    def close(self):
        """Releases the memory, after a call that is under way; calls that follow raise a StateError."""
        _Owner.close(self)
        if self.twin is not None:
            self.twin.close()

    def __repr__(self):
        return f"RealFFT({1 << self.order_}, norm={self.norm!r}, dtype={self.dtype})"

    cdef object transform(self, object function, int call, object x, object out, int from_type, int to_type, cnp.npy_intp length,
                          object scale, object copy):
        cdef Operand s, t
        cdef cnp.npy_intp rows = 1, row, n = 1 << self.order_
        cdef int k, outer, status = 0, factor = 0
        cdef bint own
        cdef char* buffer = NULL
        cdef PyThreadState* state = NULL
        x = taken(function, "x", x, from_type, -1, copy, &s)
        expected = n if from_type == self.kind.samples else n // 2 + 1
        if s.ndim < 1 or s.dims[s.ndim - 1] != expected:
            raise ArgumentError(function, "qvrErrBadSize", "x", f"wanted rows of {expected}; got {describe(x)}")
        outer = s.ndim - 1
        out = given(function, out, to_type, (<object>x).shape[:outer] + (length,), &t)
        if self.kind.scaled:
            factor = integer(function, "scale", scale, -kLongestRow - 1, kLongestRow, None)
        elif scale != 0:
            raise ArgumentError(function, None, "scale", f"there is none with {type_name(self.kind.samples)}")
        # Both may begin at one place: signal and spectrum then share an array.
        alike = s.data == t.data
        for k in range(outer):
            rows *= s.dims[k]
            alike = alike and s.strides[k] == t.strides[k]
        if not alike:
            apart(function, "x", x, &s, out, &t)
        self.share(function)
        own = self.buffer != NULL and PyThread_acquire_lock(self.lock, NOWAIT_LOCK)
        if own:
            buffer = self.buffer
        cdef void* spec = self.handle
        if rows * n * 2 >= kWorkOfAMicrosecond:
            state = PyEval_SaveThread()
        for row in range(rows):
            if self.kind.scaled:
                status = (<int (*)(void*, void*, void*, int, void*)>entry[call])(
                    row_at(&s, outer, row), row_at(&t, outer, row), spec, factor, buffer)
            else:
                status = (<int (*)(void*, void*, void*, void*)>entry[call])(
                    row_at(&s, outer, row), row_at(&t, outer, row), spec, buffer)
            if status < 0:
                break
        if state != NULL:
            PyEval_RestoreThread(state)
        if own:
            PyThread_release_lock(self.lock)
        self.unshare()
        done(function, status, "x")
        return out

    def forward(self, x, out=None, *, scale=0, copy=False):
        """forward(x, out=None, *, scale=0, copy=False)

        The half spectrum, n / 2 + 1 complex values, of n real ones, along the last axis.

            x: the signal, of the object's dtype
            out: complex64 or complex128; for int16 the structured type int16c. It may begin where x does.
            scale: int16 only: the spectrum is divided by 2 to the power of it
        """
        twin = self.double(x, cnp.NPY_DOUBLE)
        if twin is not None:
            return twin.forward(x, out, scale=scale, copy=copy)
        return self.transform("RealFFT.forward", self.kind.run, x, out, self.kind.samples, self.complex_type,
                              (1 << self.order_) // 2 + 1, scale, copy)

    def inverse(self, x, out=None, *, copy=False):
        """inverse(x, out=None, *, copy=False)

        n real values from their half spectrum. The imaginary parts of the first and the last bin are not read.
        """
        if self.kind.inverse < 0:
            raise StateError("RealFFT.inverse", None, None, "the fixed-point transform has a forward direction only")
        twin = self.double(x, cnp.NPY_CDOUBLE)
        if twin is not None:
            return twin.inverse(x, out, copy=copy)
        return self.transform("RealFFT.inverse", self.kind.inverse, x, out, self.complex_type, self.kind.samples, 1 << self.order_,
                              0, copy)


def _make(kind, arguments, keywords, state=None):
    """An object from its pickled parts."""
    made = kind(*arguments, **keywords)
    if state is not None:
        made._restore(state)
    return made


cdef class Hilbert(_Owner):
    """Hilbert(n)

    The analytic signal of blocks of n float32 samples, any n up to 2^26: the real part is the block, the imaginary part its
    Hilbert transform. The block counts as one period of a periodic signal.

    Calls do not change the object: it serves several threads at once, and can be copied and pickled.
    """
    cdef int length

    def __init__(self, n):
        cdef void* handle = NULL
        cdef int status
        self.begin()
        self.length = integer("Hilbert", "n", n, 1, kLongestRow, "qvrErrBadSize")
        with nogil:
            status = (<int (*)(void**, int, int) nogil>entry[E_qvrsHilbertInitAlloc_32f32fc])(&handle, self.length, 0)
        done("Hilbert", status, "n")
        self.handle, self.release = handle, E_qvrsHilbertFree_32f32fc

    @property
    def n(self):
        """Samples in a block."""
        return self.length

    def __reduce__(self):
        return _make, (type(self), (self.length,), {})

    def __repr__(self):
        return f"Hilbert({self.length})"

    def __call__(self, x, out=None, *, copy=False):
        """The analytic signal along the last axis: complex64 of the shape of x."""
        cdef Operand s, t
        cdef cnp.npy_intp rows = 1, row
        cdef int k, status = 0
        cdef PyThreadState* state = NULL
        x = taken("Hilbert", "x", x, cnp.NPY_FLOAT, -1, copy, &s)
        if s.ndim < 1 or s.dims[s.ndim - 1] != self.length:
            raise ArgumentError("Hilbert", "qvrErrBadSize", "x", f"wanted rows of {self.length}; got {describe(x)}")
        out = given("Hilbert", out, cnp.NPY_CFLOAT, x.shape, &t)
        apart("Hilbert", "x", x, &s, out, &t)
        for k in range(s.ndim - 1):
            rows *= s.dims[k]
        self.share("Hilbert")
        if rows * self.length * 64 >= kWorkOfAMicrosecond:
            state = PyEval_SaveThread()
        for row in range(rows):
            status = (<int (*)(void*, void*, void*)>entry[E_qvrsHilbert_32f32fc])(
                row_at(&s, s.ndim - 1, row), row_at(&t, s.ndim - 1, row), self.handle)
            if status < 0:
                break
        if state != NULL:
            PyEval_RestoreThread(state)
        self.unshare()
        done("Hilbert", status, "x")
        return out


cdef class Wavelet(_Owner):
    """Wavelet(low, high, inverse_low=None, inverse_high=None, *, offsets=(-1, -1, 0, 0))

    One level of a two-channel filter bank on running streams of float32.

        low, high: taps of the forward channels: y[n] = sum of taps[k] * x[2n - offset - k]
        inverse_low, inverse_high: taps of the inverse channels; without them there is no inverse
        offsets: delays of the four channels in samples; -1 in a forward one takes in the second sample of each pair

    Blocks of any length make the same stream as one long block: an odd sample that is left over waits for the next call.
    With the defaults and filters that reconstruct, the inverse is the input delayed by len(low) - 2 samples. Delay lines
    hold the oldest value first. The object can be copied and pickled in mid-stream.
    """
    cdef void* back
    cdef object taps, offsets
    cdef object waiting

    def __cinit__(self):
        self.back = NULL

    def __dealloc__(self):
        self.drop()

    cdef void drop(self):
        if self.back != NULL:
            (<int (*)(void*)>entry[E_qvrsWTInvFree_32f])(self.back)
        self.back = NULL

    def __init__(self, low, high, inverse_low=None, inverse_high=None, *, offsets=(-1, -1, 0, 0)):
        cdef void* handle = NULL
        self.begin()
        if (inverse_low is None) != (inverse_high is None):
            raise ArgumentError("Wavelet", None, "inverse_low" if inverse_low is None else "inverse_high", "wanted both or neither")
        self.taps = [None if t is None else numpy.array(t, numpy.float32, ndmin=1) for t in (low, high, inverse_low, inverse_high)]
        if len(offsets) != 4:
            raise ArgumentError("Wavelet", "qvrErrBadOffset", "offsets", f"wanted four; got {len(offsets)}")
        self.offsets = tuple([integer("Wavelet", "offsets", o, -1, 1 << 30, "qvrErrBadOffset") for o in offsets])
        for name, t in zip(("low", "high", "inverse_low", "inverse_high"), self.taps):
            if t is not None and (t.ndim != 1 or t.size < 1):
                raise ArgumentError("Wavelet", "qvrErrBadSize", name, f"wanted one or more taps; got {describe(t)}")
        self.create(0, &handle, E_qvrsWTFwdInitAlloc_32f)
        self.handle, self.release = handle, E_qvrsWTFwdFree_32f
        if inverse_low is not None:
            self.create(2, &self.back, E_qvrsWTInvInitAlloc_32f)
        self.waiting = numpy.zeros(0, numpy.float32)

    cdef int create(self, int first, void** place, int call) except -1:
        cdef cnp.ndarray low = self.taps[first], high = self.taps[first + 1]
        cdef void* low_taps = cnp.PyArray_DATA(low)
        cdef void* high_taps = cnp.PyArray_DATA(high)
        cdef int low_length = cnp.PyArray_SIZE(low), high_length = cnp.PyArray_SIZE(high), status
        cdef int low_offset = self.offsets[first], high_offset = self.offsets[first + 1]
        with nogil:
            status = (<int (*)(void**, void*, int, int, void*, int, int) nogil>entry[call])(
                place, low_taps, low_length, low_offset, high_taps, high_length, high_offset)
        return done("Wavelet", status, "low")

    cdef list delay_arrays(self, bint inverse):
        """Arrays of the lengths of the delay lines."""
        lines = []
        for k in range(2):
            length, offset = len(self.taps[k + 2 * inverse]), self.offsets[k + 2 * inverse]
            if inverse:
                size = (length + (1 if offset < 0 else offset) - 1) // 2 + 1
            else:
                size = length - 1 + builtins.max(offset, 0)
            lines.append(numpy.zeros(builtins.max(size, 1), numpy.float32))
        return lines

    cdef int lines(self, void* handle, int call, list arrays) except -1:
        return done("Wavelet", (<int (*)(void*, void*, void*)>entry[call])(
            handle, cnp.PyArray_DATA(<cnp.ndarray>arrays[0]), cnp.PyArray_DATA(<cnp.ndarray>arrays[1])), None)

    def _state(self):
        self.enter()
        try:
            state = [self.waiting.copy(), self.delay_arrays(False), None]
            self.lines(self.handle, E_qvrsWTFwdGetDlyLine_32f, state[1])
            if self.back != NULL:
                state[2] = self.delay_arrays(True)
                self.lines(self.back, E_qvrsWTInvGetDlyLine_32f, state[2])
            return state
        finally:
            self.leave()

    def _restore(self, state):
        self.enter()
        try:
            self.waiting = state[0]
            self.lines(self.handle, E_qvrsWTFwdSetDlyLine_32f, state[1])
            if self.back != NULL:
                self.lines(self.back, E_qvrsWTInvSetDlyLine_32f, state[2])
        finally:
            self.leave()

    def __reduce__(self):
        return _make, (type(self), tuple(self.taps), {"offsets": self.offsets}, self._state())

    def __repr__(self):
        return "Wavelet()" if self.taps is None else f"Wavelet({len(self.taps[0])} and {len(self.taps[1])} taps)"

    def reset(self):
        """Back to a history of zeros."""
        state = [numpy.zeros(0, numpy.float32), self.delay_arrays(False), None]
        if self.back != NULL:
            state[2] = self.delay_arrays(True)
        self._restore(state)

    def close(self):
        """Releases the memory at once; calls that follow raise a StateError."""
        _Owner.close(self)
        self.drop()

    def forward(self, x, *, copy=False):
        """forward(x, *, copy=False)

        (low, high): the values of both channels for as many whole pairs as there are.
        """
        cdef Operand s, a, b
        cdef int pairs, status = 0
        x = taken("Wavelet.forward", "x", x, cnp.NPY_FLOAT, 1, copy, &s)
        self.enter()
        try:
            total = self.waiting.shape[0] + x.shape[0]
            if total > kLongestRow:
                raise ArgumentError("Wavelet.forward", "qvrErrBadSize", "x", "wanted fewer than 2^31 samples")
            pairs = total // 2
            low, high = given("Wavelet.forward", None, cnp.NPY_FLOAT, (pairs,), &a), given("Wavelet.forward", None, cnp.NPY_FLOAT, (pairs,), &b)
            if self.waiting.shape[0] or total % 2:
                whole = numpy.concatenate([self.waiting, x])
                self.waiting = whole[2 * pairs:].copy()
                look(whole, &s)
            if pairs:
                with nogil:
                    status = (<int (*)(void*, void*, void*, int, void*) nogil>entry[E_qvrsWTFwd_32f])(s.data, a.data, b.data, pairs, self.handle)
                done("Wavelet.forward", status, "x")
            return low, high
        finally:
            self.leave()

    def inverse(self, low, high, out=None, *, copy=False):
        """inverse(low, high, out=None, *, copy=False)

        2 * len(low) samples from the values of both channels.
        """
        cdef Operand s, t, o
        cdef int length, status = 0
        low = taken("Wavelet.inverse", "low", low, cnp.NPY_FLOAT, 1, copy, &s)
        high = taken("Wavelet.inverse", "high", high, cnp.NPY_FLOAT, 1, copy, &t)
        if s.dims[0] != t.dims[0]:
            raise ArgumentError("Wavelet.inverse", "qvrErrBadSize", "high", f"wanted {s.dims[0]} values; got {t.dims[0]}")
        length = integer("Wavelet.inverse", "low", s.dims[0], 0, kLongestRow // 2, "qvrErrBadSize")
        out = given("Wavelet.inverse", out, cnp.NPY_FLOAT, (2 * length,), &o)
        apart("Wavelet.inverse", "low", low, &s, out, &o)
        apart("Wavelet.inverse", "high", high, &t, out, &o)
        self.enter()
        try:
            if self.back == NULL:
                raise StateError("Wavelet.inverse", None, None, "the object was made without inverse taps")
            if length:
                with nogil:
                    status = (<int (*)(void*, void*, int, void*, void*) nogil>entry[E_qvrsWTInv_32f])(s.data, t.data, length, o.data, self.back)
                done("Wavelet.inverse", status, "low")
            return out
        finally:
            self.leave()
