"""TIFF.DLL, loaded from this package's folder by its full path: another tiff.dll may be in the process.

    import tiffdll
    dib = tiffdll.LoadTiffIntoDIB(tiffdll.path("fax.tif"), 0, 0)
    if not dib:
        print(tiffdll.error_text())
"""
import ctypes
import os
import pathlib

from . import api
from .api import *  # noqa: F401,F403

__version__ = "@VERSION@"

library = ctypes.CDLL(str(pathlib.Path(__file__).with_name("TIFF.DLL")))
globals().update(api.declare(library))
kernel = ctypes.CDLL("kernel32.dll")
for name, result in (("GlobalLock", ctypes.c_void_p), ("GlobalUnlock", ctypes.c_int32),
                     ("GlobalSize", ctypes.c_size_t), ("GlobalFree", ctypes.c_void_p)):
    routine = getattr(kernel, name)
    routine.restype, routine.argtypes = result, (ctypes.c_void_p,)


def use_utf8_paths():
    """Paths of the calling thread are UTF-8 from now on, so that any file name works. Each thread says so itself."""
    library.SetTiffPathCodePage(api.TIFF_PATHS_UTF8)


def path(name):
    """A path as the functions take it."""
    return os.fspath(name).encode("utf-8")


def error_text(code=-1):
    """The text of an error; without a code, of the calling thread's last one."""
    buffer = ctypes.create_string_buffer(64)
    library.TiffErrorString(buffer, code)
    return buffer.value.decode("ascii")


def contents(block):
    """The bytes of a block: a DIB, or a TIFF in memory."""
    data = ctypes.string_at(kernel.GlobalLock(block), kernel.GlobalSize(block))
    kernel.GlobalUnlock(block)
    return data


def free(block):
    """Frees a block that a function returned."""
    kernel.GlobalFree(block)


use_utf8_paths()
