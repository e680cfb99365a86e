"""TIFF.DLL, loaded from this package's folder by its full path: another tiff.dll may be in the process."""
import ctypes
import pathlib

__version__ = "@VERSION@"

library = ctypes.CDLL(str(pathlib.Path(__file__).with_name("TIFF.DLL")))

UTF8_PATHS = 65001


def use_utf8_paths():
    """Paths of the calling thread are UTF-8 from now on, so that any file name works."""
    library.SetTiffPathCodePage(UTF8_PATHS)


use_utf8_paths()
