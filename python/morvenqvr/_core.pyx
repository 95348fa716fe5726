# cython: language_level=3, binding=True, embedsignature=False, boundscheck=False, wraparound=False, initializedcheck=False
# The functions and objects over the shared object: how it is found, the engine that every table-made function runs
# through, and the objects. Names of generated functions (min, sum, abs, ...) hide the builtins in this module.
import builtins
import os
import warnings

import numpy
cimport numpy as cnp
from cpython.object cimport PyObject
from cpython.pycapsule cimport PyCapsule_GetPointer, PyCapsule_New
from cpython.pystate cimport PyThreadState

from cpython.pythread cimport (PyThread_type_lock, PyThread_allocate_lock, PyThread_acquire_lock, PyThread_release_lock,
                               PyThread_free_lock, WAIT_LOCK, NOWAIT_LOCK)
from cpython.ref cimport Py_INCREF
from libc.string cimport memcpy, memset
from libc.stdlib cimport malloc, free
from libc.stdint cimport uintptr_t, int16_t, uint16_t, int32_t, uint32_t, uint8_t

from ._errors import ArgumentError, ArrayError, Error, NoMemoryError, StateError, Warning, error as status_error
from ._generated import BLAME, CONSTANTS, SELECTORS, STATUSES

cdef extern from "Python.h":
    PyThreadState* PyEval_SaveThread()
    void PyEval_RestoreThread(PyThreadState* state)

cnp.import_array()

include "_library.pxi"
include "_engine.pxi"
include "functions.pxi"
include "_hand.pxi"
include "_objects.pxi"
include "_filters.pxi"
include "_images.pxi"
