"""The calling thread's stack, of which map_rect needs more than the smallest threads have."""

import ctypes
import sys
import threading
from typing import Final

NEEDED: Final = 256 * 1024
"""Bytes: what map_rect takes, and as much again for Python."""

_checked: Final = threading.local()


def size() -> int | None:
    """Bytes, guard pages included; None where the system does not tell."""
    if sys.platform != "linux":
        return None
    system = ctypes.CDLL(None)
    attributes = (ctypes.c_uint64 * 32)()  # more than a pthread_attr_t
    stack = ctypes.c_size_t()
    if system.pthread_getattr_np(ctypes.c_size_t(threading.get_ident()), attributes) != 0:
        return None
    system.pthread_attr_getstacksize(attributes, ctypes.byref(stack))
    system.pthread_attr_destroy(attributes)
    return stack.value


def check() -> None:
    """Once in each thread."""
    if hasattr(_checked, "large"):
        return
    found = size()
    if found is not None and found < NEEDED:
        raise RuntimeError(f"the thread's stack is {found} bytes: must be at least {NEEDED}, see threading.stack_size")
    _checked.large = True
