# Filters that carry a stream from call to call.
cdef object parameters(object function, object name, object values, int number):
    """A filter's coefficients, which the object copies: any sequence of numbers."""
    try:
        array = numpy.array(values, cnp.PyArray_DescrFromType(number), ndmin=1)
    except (TypeError, ValueError):
        raise ArrayError(function, None, name, f"wanted numbers; got {type(values).__name__}") from None
    if array.ndim != 1 or array.size > kLongestRow:
        raise ArgumentError(function, "qvrErrBadSize", name, f"wanted one axis; got {describe(array)}")
    return array


cdef class FIR(_Owner):
    """FIR(taps, *, dtype=None, delay=None)

    y[n] = sum of taps[k] * x[n - k], over a stream that may come in blocks of any lengths.

        taps: one or more; sums are made in their type
        dtype: element type of the samples: float32, float64 or int16; that of taps if None. float32 samples with float64
               taps are summed in double; int16 ones always are, and take a scale.
        delay: the past samples, as many as taps, the newest first; None for zeros

    One object filters one stream and is used by one call at a time: calls in several threads wait for each other. It can be
    copied and pickled in mid-stream, but for int16 samples, whose delay line cannot be read back.
    """
    cdef const QvrKind* kind
    cdef object taps_, start
    cdef bint used

    def __cinit__(self):
        self.kind = &kindsFIR[0]

    def __init__(self, taps, *, dtype=None, delay=None):
        cdef int samples
        self.begin()
        own = getattr(taps, "dtype", None)
        samples = number_of(dtype) if dtype is not None else number_of(own) if own in (numpy.float32, numpy.float64) else cnp.NPY_DOUBLE
        self.kind = NULL
        if own is not None:
            self.kind = kind_of(kindsFIR, kKindsFIR, samples, number_of(own))
        if self.kind == NULL:
            self.kind = kind_of(kindsFIR, kKindsFIR, samples, cnp.NPY_DOUBLE)
        if self.kind == NULL:
            self.kind = &kindsFIR[0]
            raise ArrayError("FIR", None, "dtype", f"wanted {kinds_text(kindsFIR, kKindsFIR)}; got {numpy.dtype(dtype)}")
        self.taps_ = parameters("FIR", "taps", taps, self.kind.taps)
        self.start = None if delay is None else self.line(delay)
        self.release, self.handle = self.kind.release, self.made()

    cdef void* made(self) except? NULL:
        """A filter with the start that was given."""
        cdef cnp.ndarray array = self.taps_
        cdef cnp.ndarray start = self.start if self.start is not None else self.taps_
        cdef void* handle = NULL
        cdef void* taps = cnp.PyArray_DATA(array)
        cdef void* line = NULL if self.start is None else cnp.PyArray_DATA(start)
        cdef int length = cnp.PyArray_SIZE(array), status
        with nogil:
            status = (<int (*)(void**, void*, int, void*) nogil>entry[self.kind.create])(&handle, taps, length, line)
        # The plan of the transform path is memory too, whatever the status says of pointers.
        done("FIR", CONSTANTS_["qvrErrNoMemory"] if status == CONSTANTS_["qvrErrNullPointer"] else status, "taps")
        return handle

    cdef object line(self, object delay):
        array = parameters("FIR", "delay", delay, self.kind.samples)
        if array.size != self.taps_.size:
            raise ArgumentError("FIR", "qvrErrBadSize", "delay", f"wanted {self.taps_.size} samples; got {array.size}")
        return array

    @property
    def taps(self):
        """The taps, as a new array."""
        cdef cnp.ndarray array
        if self.kind.getTaps < 0 or self.handle == NULL:
            return self.taps_.copy()
        array = numpy.empty_like(self.taps_)
        self.enter()
        status = (<int (*)(void*, void*)>entry[self.kind.getTaps])(self.handle, cnp.PyArray_DATA(array))
        self.leave()
        done("FIR.taps", status, None)
        return array

    @property
    def dtype(self):
        """Element type of the samples."""
        return cnp.PyArray_DescrFromType(self.kind.samples)

    @property
    def delay(self):
        """The past samples, as many as taps, the newest first. Setting it continues another stream."""
        cdef cnp.ndarray array = numpy.empty(self.taps_.size, self.dtype)
        self.enter()
        try:
            if self.kind.getDelay < 0:
                if self.used:
                    raise StateError("FIR.delay", None, None, f"the delay line of {self.dtype} samples cannot be read back")
                return numpy.zeros(self.taps_.size, self.dtype) if self.start is None else self.start.copy()
            done("FIR.delay", (<int (*)(void*, void*)>entry[self.kind.getDelay])(self.handle, cnp.PyArray_DATA(array)), None)
            return array
        finally:
            self.leave()

    @delay.setter
    def delay(self, values):
        cdef cnp.ndarray array = self.line(values)
        self.enter()
        try:
            if self.kind.setDelay < 0:
                raise StateError("FIR.delay", None, None, f"the delay line of {self.dtype} samples cannot be set; give it to a new FIR")
            done("FIR.delay", (<int (*)(void*, void*)>entry[self.kind.setDelay])(self.handle, cnp.PyArray_DATA(array)), None)
        finally:
            self.leave()

    def reset(self):
        """Back to a past of zeros."""
        cdef void* fresh
        self.enter()
        try:
            self.used, self.start = False, None
            if self.kind.setDelay < 0:
                fresh = self.made()
                self.free()
                self.handle = fresh
            else:
                done("FIR.reset", (<int (*)(void*, void*)>entry[self.kind.setDelay])(self.handle, NULL), None)
        finally:
            self.leave()

    def __reduce__(self):
        if self.used and self.kind.getDelay < 0:
            raise StateError("FIR", None, None, f"a filter of {self.dtype} samples cannot be copied or pickled in mid-stream, since its "
                             "delay line cannot be read back")
        return _make, (type(self), (self.taps_,), {"dtype": self.dtype.str, "delay": self.delay})

    def __repr__(self):
        return f"FIR({0 if self.taps_ is None else self.taps_.size} taps of {type_name(self.kind.taps)}, dtype={self.dtype})"

    def __call__(self, x, out=None, *, scale=0, copy=False):
        """Filters the next samples of the stream; out may be x. int16 sums are divided by 2 to the power of scale."""
        cdef Operand s, t
        cdef int status = 0, length, factor = 0
        cdef PyThreadState* state = NULL
        x = taken("FIR", "x", x, self.kind.samples, 1, copy, &s)
        length = integer("FIR", "x", s.dims[0], 0, kLongestRow, "qvrErrBadSize")
        out = given("FIR", out, self.kind.samples, x.shape, &t)
        if self.kind.scaled:
            factor = integer("FIR", "scale", scale, -kLongestRow - 1, kLongestRow, None)
        elif scale != 0:
            raise ArgumentError("FIR", None, "scale", f"there is none with {self.dtype}")
        if not same_place(&s, &t):
            apart("FIR", "x", x, &s, out, &t)
        self.enter()
        if length:
            self.used = True
            if <long>length * self.taps_.size >= kWorkOfAMicrosecond or length >= 256:
                state = PyEval_SaveThread()
            if self.kind.scaled:
                status = (<int (*)(void*, void*, int, void*, int)>entry[self.kind.run])(s.data, t.data, length, self.handle, factor)
            else:
                status = (<int (*)(void*, void*, int, void*)>entry[self.kind.run])(s.data, t.data, length, self.handle)
            if state != NULL:
                PyEval_RestoreThread(state)
        self.leave()
        done("FIR", status, "x")
        return out


cdef class IIR(_Owner):
    """IIR(b, a, *, delay=None)

    A recursive filter over a stream of float64 that may come in blocks of any lengths:
    a[0] y[n] = sum of b[k] x[n - k], k from 0, minus sum of a[k] y[n - k], k from 1.

        b, a: coefficients; the shorter is filled with zeros
        delay: as many values as the order, the start of the transposed delay line, in which value k is what the k + 1 newest
               samples owe the output; as scipy's zi. None for zeros

    One object filters one stream and is used by one call at a time: calls in several threads wait for each other. It can be
    copied and pickled until it has filtered the first sample, not in mid-stream: its delay line cannot be read back.
    """
    cdef object b_, a_, start
    cdef int order_
    cdef bint used

    def __init__(self, b, a, *, delay=None):
        self.begin()
        self.b_, self.a_ = parameters("IIR", "b", b, cnp.NPY_DOUBLE), parameters("IIR", "a", a, cnp.NPY_DOUBLE)
        self.order_ = builtins.max(self.b_.size, self.a_.size) - 1
        if self.b_.size == 0 or self.a_.size == 0 or self.order_ < 1:
            raise ArgumentError("IIR", "qvrErrBadOrder", "b", "wanted an order of 1 or more")
        if not numpy.isfinite(self.a_).all() or not numpy.isfinite(self.b_).all():
            raise ArgumentError("IIR", None, "a", "wanted finite coefficients")
        self.start = None if delay is None else parameters("IIR", "delay", delay, cnp.NPY_DOUBLE)
        if self.start is not None and self.start.size != self.order_:
            raise ArgumentError("IIR", "qvrErrBadSize", "delay", f"wanted {self.order_} values; got {self.start.size}")
        self.release, self.handle = E_qvrsIIRFree_64f, self.made()

    cdef void* made(self) except? NULL:
        """A filter with the start that was given."""
        coefficients = numpy.zeros((2, self.order_ + 1))
        coefficients[0, :self.b_.size], coefficients[1, :self.a_.size] = self.b_, self.a_
        cdef cnp.ndarray array = coefficients
        cdef cnp.ndarray start = coefficients if self.start is None else self.start
        cdef void* handle = NULL
        cdef void* taps = cnp.PyArray_DATA(array)
        cdef void* line = NULL if self.start is None else cnp.PyArray_DATA(start)
        cdef int status
        with nogil:
            status = (<int (*)(void**, void*, int, void*) nogil>entry[E_qvrsIIRInitAlloc_64f])(&handle, taps, self.order_, line)
        done("IIR", status, "a")
        return handle

    @property
    def order(self):
        """Number of delays."""
        return self.order_

    @property
    def b(self):
        """Coefficients of the input, as a new array."""
        return self.b_.copy()

    @property
    def a(self):
        """Coefficients of the output, as a new array."""
        return self.a_.copy()

    def reset(self):
        """Back to the start given at creation."""
        cdef void* fresh
        self.enter()
        try:
            fresh = self.made()
            self.free()
            self.handle, self.used = fresh, False
        finally:
            self.leave()

    def __reduce__(self):
        if self.used:
            raise StateError("IIR", None, None, "a filter in mid-stream cannot be copied or pickled, since its delay line cannot be read "
                             "back; before the first sample it can")
        return _make, (type(self), (self.b_, self.a_), {"delay": self.start})

    def __repr__(self):
        return f"IIR(order {self.order_})"

    @staticmethod
    def lowpass(order, cutoff, *, kind="butterworth", ripple=0.0):
        """A filter of iir_lowpass(order, cutoff, kind=..., ripple=...)."""
        from .design import iir_lowpass
        return IIR(*iir_lowpass(order, cutoff, kind=kind, ripple=ripple))

    @staticmethod
    def highpass(order, cutoff, *, kind="butterworth", ripple=0.0):
        """A filter of iir_highpass(order, cutoff, kind=..., ripple=...)."""
        from .design import iir_highpass
        return IIR(*iir_highpass(order, cutoff, kind=kind, ripple=ripple))

    @staticmethod
    def sections(order, cutoff, band="lowpass", *, kind="butterworth", ripple=0.0):
        """A cascade of second-order sections, which stays stable where one filter of that order would not; see design.Sections."""
        from .design import Sections, second_order_sections
        return Sections(second_order_sections(order, cutoff, band, kind=kind, ripple=ripple))

    def __call__(self, x, out=None, *, copy=False):
        """Filters the next samples of the stream; out may be x."""
        cdef Operand s, t
        cdef int status = 0, length
        cdef PyThreadState* state = NULL
        x = taken("IIR", "x", x, cnp.NPY_DOUBLE, 1, copy, &s)
        length = integer("IIR", "x", s.dims[0], 0, kLongestRow, "qvrErrBadSize")
        out = given("IIR", out, cnp.NPY_DOUBLE, x.shape, &t)
        if not same_place(&s, &t):
            apart("IIR", "x", x, &s, out, &t)
        self.enter()
        if length:
            self.used = True
            if <long>length * (self.order_ + 1) * 8 >= kWorkOfAMicrosecond:
                state = PyEval_SaveThread()
            status = (<int (*)(void*, void*, int, void*)>entry[E_qvrsIIR_64f])(s.data, t.data, length, self.handle)
            if state != NULL:
                PyEval_RestoreThread(state)
        self.leave()
        done("IIR", status, "x")
        return out


cdef class FIRMultirate:
    """FIRMultirate(taps, up=1, down=1, *, dtype=float32, up_phase=0, down_phase=0)

    Filters a stream and changes its rate by up / down: with taps for the high rate, stuff up - 1 zeros behind each sample,
    filter, keep every down-th.

        taps: float64 for float32 samples, float32 for int16 ones
        up_phase: where a sample enters in its group, 0 .. up - 1
        down_phase: which step of a group is kept, 0 .. down - 1

    Blocks may have any length: the library works on whole groups of `down` samples, and what is left over waits for the next
    call; flush() gives the outputs that are still due at the end of the stream. The object can be copied and pickled in
    mid-stream. Calls in several threads wait for each other.
    """
    cdef const QvrKind* kind
    cdef object taps_, delay_, waiting, nothing
    cdef int up_, down_, up_phase_, down_phase_
    cdef long taken_, given_
    cdef PyThread_type_lock lock

    def __cinit__(self):
        self.lock = PyThread_allocate_lock()
        self.kind = &kindsFIRMR[0]
        if self.lock == NULL:
            raise MemoryError

    def __dealloc__(self):
        if self.lock != NULL:
            PyThread_free_lock(self.lock)

    def __init__(self, taps, up=1, down=1, *, dtype=numpy.float32, up_phase=0, down_phase=0):
        self.kind = kind_of(kindsFIRMR, kKindsFIRMR, number_of(dtype), -1)
        if self.kind == NULL:
            self.kind = &kindsFIRMR[0]
            raise ArrayError("FIRMultirate", None, "dtype", f"wanted {kinds_text(kindsFIRMR, kKindsFIRMR)}; got {numpy.dtype(dtype)}")
        self.taps_ = parameters("FIRMultirate", "taps", taps, self.kind.taps)
        if self.taps_.size < 1:
            raise ArgumentError("FIRMultirate", "qvrErrBadTapsLen", "taps")
        self.up_ = integer("FIRMultirate", "up", up, 1, kLongestRow, "qvrErrBadMultiRateFactor")
        self.down_ = integer("FIRMultirate", "down", down, 1, kLongestRow, "qvrErrBadMultiRateFactor")
        self.up_phase_ = integer("FIRMultirate", "up_phase", up_phase, 0, self.up_ - 1, "qvrErrBadMultiRatePhase")
        self.down_phase_ = integer("FIRMultirate", "down_phase", down_phase, 0, self.down_ - 1, "qvrErrBadMultiRatePhase")
        self.reset()

    def reset(self):
        """Back to a past of zeros."""
        self.wait()
        self.delay_ = numpy.zeros((self.taps_.size + self.up_ - 1) // self.up_, self.dtype)
        self.waiting = self.nothing = numpy.zeros(0, self.dtype)
        self.taken_ = self.given_ = 0
        PyThread_release_lock(self.lock)

    cdef void wait(self):
        """Takes the lock."""
        if not PyThread_acquire_lock(self.lock, NOWAIT_LOCK):
            with nogil:
                PyThread_acquire_lock(self.lock, WAIT_LOCK)

    @property
    def taps(self):
        """The taps, as a new array."""
        return self.taps_.copy()

    @property
    def dtype(self):
        """Element type of the samples."""
        return cnp.PyArray_DescrFromType(self.kind.samples)

    @property
    def delay(self):
        """The past samples, the newest first, without those that wait for a whole group."""
        return self.delay_.copy()

    def __reduce__(self):
        state = (self.delay_.copy(), self.waiting.copy(), self.taken_, self.given_)
        return _make, (type(self), (self.taps_, self.up_, self.down_),
                       {"dtype": self.dtype.str, "up_phase": self.up_phase_, "down_phase": self.down_phase_}, state)

    def _restore(self, state):
        self.delay_, self.waiting, self.taken_, self.given_ = state

    def __repr__(self):
        return f"FIRMultirate({0 if self.taps_ is None else self.taps_.size} taps, up={self.up_}, down={self.down_}, dtype={self.dtype})"

    cdef int groups(self, char* source, char* target, long count, int factor, bint in_place) except -1:
        """Whole groups through the library."""
        cdef int status = 0, up = self.up_, down = self.down_, up_phase = self.up_phase_, down_phase = self.down_phase_
        cdef int groups_ = count, length = self.taps_.size
        cdef cnp.ndarray taps_array = self.taps_, delay_array = self.delay_
        cdef void* taps = cnp.PyArray_DATA(taps_array)
        cdef void* delay = cnp.PyArray_DATA(delay_array)
        cdef int call = self.kind.inPlace if in_place else self.kind.create
        cdef bint scaled = self.kind.scaled
        if count == 0:
            return 0
        with nogil:
            if in_place:
                status = (<int (*)(void*, int, void*, int, int, int, int, int, void*) nogil>entry[call])(
                    source, groups_, taps, length, up, up_phase, down, down_phase, delay)
            elif scaled:
                status = (<int (*)(void*, void*, int, void*, int, int, int, int, int, void*, int) nogil>entry[call])(
                    source, target, groups_, taps, length, up, up_phase, down, down_phase, delay, factor)
            else:
                status = (<int (*)(void*, void*, int, void*, int, int, int, int, int, void*) nogil>entry[call])(
                    source, target, groups_, taps, length, up, up_phase, down, down_phase, delay)
        return done("FIRMultirate", status, "x")

    def output_length(self, length):
        """Outputs of the next block of so many samples."""
        return (self.waiting.shape[0] + length) // self.down_ * self.up_

    def __call__(self, x, out=None, *, scale=0, copy=False):
        """__call__(x, out=None, *, scale=0, copy=False)

        The outputs of as many whole groups as there are: output_length(len(x)) of them. int16 sums are divided by 2 to the
        power of scale. out may begin where x does (float32, nothing waiting, at most as many outputs as samples): the samples
        are then overwritten.
        """
        cdef Operand s, t
        cdef long total, count, head = 0, before
        cdef int factor = 0
        x = taken("FIRMultirate", "x", x, self.kind.samples, 1, copy, &s)
        if self.kind.scaled:
            factor = integer("FIRMultirate", "scale", scale, -kLongestRow - 1, kLongestRow, None)
        elif scale != 0:
            raise ArgumentError("FIRMultirate", None, "scale", f"there is none with {self.dtype}")
        self.wait()
        try:
            before = self.waiting.shape[0]
            total = before + s.dims[0]
            count = total // self.down_
            if total > kLongestRow or count * self.up_ > kLongestRow:
                raise ArgumentError("FIRMultirate", "qvrErrBadSize", "x", "wanted fewer than 2^31 samples in and out")
            out = given("FIRMultirate", out, self.kind.samples, (count * self.up_,), &t)
            in_place = s.data == t.data and before == 0 and self.kind.inPlace >= 0 and 0 < t.dims[0] <= s.dims[0]
            if not in_place:
                apart("FIRMultirate", "x", x, &s, out, &t)
            if total == count * self.down_:
                rest = self.nothing
            else:
                rest = x[count * self.down_ - before:].copy() if count else numpy.concatenate([self.waiting, x])
            if count and before:
                # One group of what waited and what completes it, then the others from where they lie.
                head = self.down_ - before
                whole = numpy.concatenate([self.waiting, x[:head]])
                self.groups(cnp.PyArray_BYTES(<cnp.ndarray>whole), t.data, 1, factor, False)
                self.groups(s.data + head * s.itemsize, t.data + self.up_ * t.itemsize, count - 1, factor, False)
            else:
                self.groups(s.data, t.data, count, factor, in_place)
            self.waiting = rest
            self.taken_ += s.dims[0]
            self.given_ += count * self.up_
            return out
        finally:
            PyThread_release_lock(self.lock)

    def flush(self, *, scale=0):
        """The outputs that the samples so far still reach, with zeros behind them; then back to a past of zeros."""
        cdef long last, due
        if self.taken_ == 0:
            return numpy.zeros(0, self.dtype)
        last = (self.taken_ - 1) * self.up_ + self.up_phase_ + self.taps_.size - 1
        due = (last - self.down_phase_) // self.down_ + 1 - self.given_
        if due <= 0:
            self.reset()
            return numpy.zeros(0, self.dtype)
        groups_ = (due + self.up_ - 1) // self.up_
        rest = self(numpy.zeros(groups_ * self.down_ - self.waiting.shape[0], self.dtype), scale=scale)
        self.reset()
        return rest[:due]
