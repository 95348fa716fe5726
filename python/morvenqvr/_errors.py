"""Exceptions and warnings: each carries the names of the status, of the function and, where one is known, of the argument."""
from ._generated import STATUSES

CODES = {name: value for value, (name, _) in STATUSES.items()}


class Error(Exception):
    """A call that was refused; nothing was written.

    Attributes: function, argument (name or None), status (name of the library's status, as "qvrErrBadSize", or None where
    the library has no status for the fault, as for a wrong element type) and code (its value). What is raised is an
    ArgumentError, an ArrayError, a StateError or a NoMemoryError.
    """

    def __init__(self, function, status=None, argument=None, detail=None):
        super().__init__(function, status, argument, detail)
        self.function, self.status, self.argument = function, status, argument
        self.code = CODES.get(status)
        self.detail = detail or STATUSES.get(self.code, ("", "refused"))[1]

    def __str__(self):
        argument = f", argument {self.argument}" if self.argument else ""
        status = f" ({self.status})" if self.status else ""
        return f"{self.function}{argument}: {self.detail}{status}"


class ArgumentError(Error, ValueError):
    """An argument with a value, a size or a place in memory that the function refuses."""


class ArrayError(Error, TypeError):
    """An array of a wrong element type or layout, or something that is no array."""


class StateError(Error, RuntimeError):
    """An object that has been closed, or whose state cannot be had."""


class NoMemoryError(Error, MemoryError):
    """Memory for a state or a work buffer could not be had."""


class Warning(RuntimeWarning):
    """A result that holds a substitute.

    Attributes: function, status (name), code, and index: the place of the first element with that status, a tuple in
    arrays of more than one axis; None where it is not known, as where the source has been overwritten.
    """

    def __init__(self, function, status, index=None, detail=None):
        super().__init__(function, status, index, detail)
        self.function, self.status, self.index = function, status, index
        self.code = CODES.get(status)
        self.detail = detail or STATUSES.get(self.code, ("", "done with a remark"))[1]

    def __str__(self):
        place = f", first at index {self.index}" if self.index is not None else ""
        status = f" ({self.status})" if self.status else ""
        return f"{self.function}: {self.detail}{status}{place}"


def error(function, code, argument=None, detail=None):
    """The exception of a negative status."""
    status = STATUSES.get(code, (f"status {code}", "refused"))[0]
    return (NoMemoryError if status == "qvrErrNoMemory" else ArgumentError)(function, status, argument, detail)
