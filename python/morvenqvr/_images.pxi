# Resizing images.
cdef dict kMethods = {"nearest": CONSTANTS["qvriInterNearest"], "linear": CONSTANTS["qvriInterLinear"], "cubic": CONSTANTS["qvriInterCubic"],
                      "bspline": CONSTANTS["qvriInterCubicBSpline"], "catmull_rom": CONSTANTS["qvriInterCubicCatmullRom"],
                      "b05c03": CONSTANTS["qvriInterCubicB05C03"], "area": CONSTANTS["qvriInterSuper"],
                      "lanczos": CONSTANTS["qvriInterLanczos"]}
cdef dict kEdges = {None: 0, "fade": CONSTANTS["qvriEdgeFade"], "blend": CONSTANTS["qvriEdgeBlend"]}
METHODS = tuple(kMethods)


cdef int selector(object function, object method, object antialias, object edge) except? -1:
    cdef int flags = chosen(function, "method", method, kMethods, "qvrErrBadInterpolation")
    flags |= chosen(function, "edge", edge, kEdges, "qvrErrBadInterpolation")
    return flags | (CONSTANTS["qvriAntialias"] if antialias else 0)


cdef int rectangle(object function, object name, object region, object shape, QvrRect* r) except -1:
    """(top, left, height, width), or the whole image for None."""
    top, left, height, width = (0, 0, shape[0], shape[1]) if region is None else several(function, name, region, 4)
    r.x, r.y = integer(function, name, left, 0, kLongestRow, "qvrErrBadSize"), integer(function, name, top, 0, kLongestRow, "qvrErrBadSize")
    r.width, r.height = integer(function, name, width, 1, kLongestRow, "qvrErrBadSize"), integer(function, name, height, 1, kLongestRow, "qvrErrBadSize")
    return 0


cdef int picture(object function, object name, object o, int number, int channels, const Operand* s) except -1:
    """An image of one or four channels, its pixels side by side; rows any distance apart."""
    cdef int axes_ = 2 if channels == 1 else 3
    if s.type != number or s.ndim != axes_ or (channels > 1 and (s.dims[2] != channels or s.strides[2] != s.itemsize)) or \
            (s.dims[1] > 1 and s.strides[1] != s.itemsize * channels) or s.strides[0] > kLongestRow or s.strides[0] < -kLongestRow:
        shape = "(height, width)" if channels == 1 else f"(height, width, {channels})"
        raise ArrayError(function, None, name, f"wanted an array of {type_name(number)} and shape {shape}, pixels side by side; got {describe(o)}")
    return 0


cdef class Resize(_Owner):
    """Resize(source_shape, shape, *, method="cubic", antialias=False, edge=None, dtype=uint8, channels=1, factors=None,
    shift=(0.0, 0.0), source_region=None, region=None)

    Scales images of one size to another.

        source_shape, shape: (height, width) of the source and of the result
        method: "nearest", "linear", "cubic", "bspline", "catmull_rom", "b05c03", "area" (reduction only) or "lanczos"
        antialias: low-pass weights where an axis is reduced; not with "nearest" and "area". They are centred half a source
                   pixel before where the other methods are: a shift of half the factors moves them back, as resize() does
        edge: None, "fade" or "blend": what becomes of partly covered border pixels
        dtype: uint8, float32 or float64
        channels: 1, or 4 for uint8 images of shape (height, width, 4)
        factors: (y, x) scale factors; by default those of the shapes
        shift: (y, x) in pixels of the result
        source_region, region: (top, left, height, width) of the source that is used and of the result that is written

    The object holds the work memory of one call: calls in several threads wait for each other. It can be copied and pickled.
    """
    cdef const QvrKind* kind
    cdef QvrRect source_roi, roi
    cdef QvrSize source_size, size
    cdef double yFactor, xFactor, yShift, xShift
    cdef int interpolation
    cdef object arguments, keywords

    def __cinit__(self):
        self.kind = &kindsRESIZE[0]

    cdef void free(self):
        free(self.handle)
        self.handle = NULL

    def __init__(self, source_shape, shape, *, method="cubic", antialias=False, edge=None, dtype=numpy.uint8, channels=1, factors=None,
                 shift=(0.0, 0.0), source_region=None, region=None):
        cdef int bytes_ = 0, status
        f = "Resize"
        self.begin()
        source_shape, shape = several(f, "source_shape", source_shape, 2), several(f, "shape", shape, 2)
        self.arguments = source_shape, shape
        self.keywords = dict(method=method, antialias=antialias, edge=edge, dtype=numpy.dtype(dtype).str, channels=channels,
                             factors=factors, shift=shift, source_region=source_region, region=region)
        self.source_size.height = integer(f, "source_shape", source_shape[0], 1, kLongestRow, "qvrErrBadSize")
        self.source_size.width = integer(f, "source_shape", source_shape[1], 1, kLongestRow, "qvrErrBadSize")
        self.size.height = integer(f, "shape", shape[0], 1, kLongestRow, "qvrErrBadSize")
        self.size.width = integer(f, "shape", shape[1], 1, kLongestRow, "qvrErrBadSize")
        self.kind = kind_of(kindsRESIZE, kKindsRESIZE, number_of(dtype), integer(f, "channels", channels, 1, 4, "qvrErrBadChannels"))
        if self.kind == NULL:
            self.kind = &kindsRESIZE[0]
            raise ArrayError(f, None, "dtype", "wanted uint8 of 1 or 4 channels, float32 or float64 of 1; got "
                             f"{numpy.dtype(dtype)} of {channels}")
        self.interpolation = selector(f, method, antialias, edge)
        rectangle(f, "source_region", source_region, source_shape, &self.source_roi)
        rectangle(f, "region", region, shape, &self.roi)
        if self.roi.x + <long>self.roi.width > self.size.width or self.roi.y + <long>self.roi.height > self.size.height:
            raise ArgumentError(f, "qvrErrBadSize", "region", f"wanted a region of the result; got {region}")
        factors = (shape[0] / source_shape[0], shape[1] / source_shape[1]) if factors is None else several(f, "factors", factors, 2)
        shift = several(f, "shift", shift, 2)
        self.yFactor, self.xFactor = real(f, "factors", factors[0]), real(f, "factors", factors[1])
        if not (self.yFactor > 0 and self.xFactor > 0 and self.yFactor * 0 == 0 and self.xFactor * 0 == 0):
            raise ArgumentError(f, "qvrErrBadFactor", "factors")
        self.yShift, self.xShift = real(f, "shift", shift[0]), real(f, "shift", shift[1])
        status = (<int (*)(QvrRect, QvrRect, int, int, int*)>entry[self.kind.bufferSize])(
            self.source_roi, self.roi, channels, self.interpolation, &bytes_)
        if status < 0:
            done(f, status, "method" if status == CONSTANTS_["qvrErrBadInterpolation"] else "shape")
        if method == "area" and (self.yFactor > 1 or self.xFactor > 1):
            raise ArgumentError(f, "qvrErrBadFactor", "factors")
        self.handle = malloc(bytes_ if bytes_ > 0 else 1)
        if self.handle == NULL:
            raise NoMemoryError(f, "qvrErrNoMemory")

    @property
    def shape(self):
        """(height, width) of the result."""
        return self.size.height, self.size.width

    def __reduce__(self):
        return _make, (type(self), self.arguments, self.keywords)

    def __repr__(self):
        return f"Resize{self.arguments!r}" if self.arguments is None else f"Resize({self.arguments[0]}, {self.arguments[1]})"

    def __call__(self, image, out=None, *, copy=False):
        """__call__(image, out=None, *, copy=False)

        The scaled image. Rows may lie any distance apart in memory. What the result's region leaves out keeps what out holds; in an
        array made for the result it is 0.
        """
        cdef Operand s, t
        cdef int status, channels = self.kind.taps
        f = "Resize"
        if not cnp.PyArray_Check(image):
            if not copy:
                raise ArrayError(f, None, "image", f"wanted an array; got {type(image).__name__}")
            image = numpy.asarray(image)
        look(image, &s)
        try:
            picture(f, "image", image, self.kind.samples, channels, &s)
        except ArrayError:
            if not copy:
                raise
            image = numpy.ascontiguousarray(image, cnp.PyArray_DescrFromType(self.kind.samples))
            look(image, &s)
            picture(f, "image", image, self.kind.samples, channels, &s)
        if s.dims[0] != self.source_size.height or s.dims[1] != self.source_size.width:
            raise ArgumentError(f, "qvrErrBadSize", "image", f"wanted the shape {(self.source_size.height, self.source_size.width)}; "
                                f"got {image.shape}")
        if out is None:
            out = numpy.zeros((self.size.height, self.size.width) + ((channels,) if channels > 1 else ()),
                              cnp.PyArray_DescrFromType(self.kind.samples))
        elif not cnp.PyArray_Check(out):
            raise ArrayError(f, None, "out", f"wanted an array; got {type(out).__name__}")
        look(out, &t)
        picture(f, "out", out, self.kind.samples, channels, &t)
        if not t.flags & NPY_ARRAY_WRITEABLE:
            raise ArgumentError(f, None, "out", "wanted a writable array; got a read-only one")
        if t.dims[0] != self.size.height or t.dims[1] != self.size.width:
            raise ArgumentError(f, "qvrErrBadSize", "out", f"wanted the shape {(self.size.height, self.size.width)}; got {out.shape}")
        apart(f, "image", image, &s, out, &t)
        self.enter()
        cdef int call = self.kind.create, source_step = s.strides[0], step = t.strides[0]
        with nogil:
            status = (<int (*)(void*, QvrSize, int, QvrRect, void*, int, QvrRect, double, double, double, double, int, void*) nogil>entry[call])(
                s.data, self.source_size, source_step, self.source_roi, t.data, step, self.roi, self.xFactor, self.yFactor,
                self.xShift, self.yShift, self.interpolation, self.handle)
        self.leave()
        done(f, status, "image")
        return out


def resize(image, shape, *, method="cubic", antialias=False, edge=None, copy=False):
    """resize(image, shape, *, method="cubic", antialias=False, edge=None, copy=False)

    An image scaled to shape, (height, width), by one call of Resize. The image is (height, width) of uint8, float32 or float64, or
    (height, width, 4) of uint8. Antialiasing weights are centred on the pixels where an axis is reduced.
    """
    array = numpy.asarray(image) if copy else image
    if not cnp.PyArray_Check(array):
        raise ArrayError("resize", None, "image", f"wanted an array; got {type(image).__name__}")
    if array.ndim not in (2, 3) or array.ndim == 3 and array.shape[2] != 4:
        raise ArgumentError("resize", "qvrErrBadChannels", "image", f"wanted (height, width) or (height, width, 4); got {describe(array)}")
    sizes = several("resize", "shape", shape, 2)
    if 0 in array.shape[:2] or 0 in sizes:
        return numpy.zeros(sizes + array.shape[2:], array.dtype)
    factors = [size / length for size, length in zip(sizes, array.shape)]
    shift = tuple([0.5 * builtins.min(factor, 1) if antialias else 0.0 for factor in factors])
    with Resize(array.shape[:2], sizes, shift=shift, method=method, antialias=antialias, edge=edge, dtype=array.dtype.newbyteorder("=") if copy else array.dtype,
                channels=1 if array.ndim == 2 else 4) as scaler:
        return scaler(array, copy=copy)


def resize_region(image, out, factors, *, region=None, shape=None, method="cubic", antialias=False, edge=None):
    """resize_region(image, out, factors, *, region=None, shape=None, method="cubic", antialias=False, edge=None)

    Scales a region of an image into out by (y, x) factors, without a shift. The rectangle that is written has the size of shape and its
    origin at that of the region: with a region at (10, 10) only pixels of out from (10, 10) on are written. Returns out.

        image, out: (height, width) of uint8 or float32, or (height, width, 4) of uint8
        region: (top, left, height, width) of the source, by default all of it
        shape: (height, width) of the rectangle that may be written, by default as far as out goes

    With antialias and "nearest" or "area" nothing is written, and the call warns.
    """
    cdef Operand s, t
    cdef QvrRect roi
    cdef QvrSize source_size, size
    cdef const QvrKind* kind
    cdef int channels, interpolation = selector("resize_region", method, antialias, edge), status
    f = "resize_region"
    for name, o in (("image", image), ("out", out)):
        if not cnp.PyArray_Check(o):
            raise ArrayError(f, None, name, f"wanted an array; got {type(o).__name__}")
    look(image, &s)
    look(out, &t)
    channels = 4 if s.ndim == 3 else 1
    kind = kind_of(kindsRESIZE, kKindsRESIZE, s.type, channels)
    if kind == NULL or kind.region < 0:
        raise ArrayError(f, None, "image", f"wanted uint8 of 1 or 4 channels or float32 of 1; got {describe(image)}")
    picture(f, "image", image, kind.samples, channels, &s)
    picture(f, "out", out, kind.samples, channels, &t)
    if not t.flags & NPY_ARRAY_WRITEABLE:
        raise ArgumentError(f, None, "out", "wanted a writable array; got a read-only one")
    apart(f, "image", image, &s, out, &t)
    rectangle(f, "region", region, image.shape, &roi)
    shape = (out.shape[0] - roi.y, out.shape[1] - roi.x) if shape is None else several(f, "shape", shape, 2)
    factors = several(f, "factors", factors, 2)
    size.height = integer(f, "shape", shape[0], 1, kLongestRow, "qvrErrBadSize")
    size.width = integer(f, "shape", shape[1], 1, kLongestRow, "qvrErrBadSize")
    if roi.x + <long>size.width > t.dims[1] or roi.y + <long>size.height > t.dims[0]:
        raise ArgumentError(f, "qvrErrBadSize", "shape", f"wanted a rectangle of out; got {shape} at {(roi.y, roi.x)} of {out.shape}")
    source_size.height = integer(f, "image", s.dims[0], 1, kLongestRow, "qvrErrBadSize")
    source_size.width = integer(f, "image", s.dims[1], 1, kLongestRow, "qvrErrBadSize")
    cdef double y = real(f, "factors", factors[0]), x = real(f, "factors", factors[1])
    cdef int call = kind.region, source_step = s.strides[0], step = t.strides[0]
    with nogil:
        status = (<int (*)(void*, QvrSize, int, QvrRect, void*, int, QvrSize, double, double, int) nogil>entry[call])(
            s.data, source_size, source_step, roi, t.data, step, size, x, y, interpolation)
    done(f, status, "factors" if status == CONSTANTS_["qvrErrBadFactor"] else "method" if status == CONSTANTS_["qvrErrBadInterpolation"]
         else "region")
    return out
