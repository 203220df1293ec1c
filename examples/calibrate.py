#!/usr/bin/env python3
"""libvexo from Python, with nothing but ctypes: calibrates a panel for D65 and a power law of 2.2, then loads a cube
file and resamples it to 33 points.

    calibrate.py LIBRARY PANEL.xml LUTS.txt [FILM.cube FILM33.cube]
"""
import ctypes
import sys
from ctypes import POINTER, Structure, byref, c_char_p, c_float, c_int, c_void_p


class Vector(Structure):
    _fields_ = [("d", c_float * 3)]


class Gamma(Structure):
    _fields_ = [("slope", c_float), ("transition", c_float), ("gamma", c_float), ("offset", c_float)]


class Lut(Structure):
    _fields_ = [("size", c_int), ("d", POINTER(c_float))]


class Lcnr(Structure):  # d[channel][X, Y, Z][row]
    _fields_ = [("data", c_float * 64 * 3 * 3), ("sample", c_float * 64), ("num", c_int)]


class Panel(Structure):
    _fields_ = [("lcnr", Lcnr), ("data", c_float * 1024 * 3 * 3), ("maxY", c_float * 3)]


def open_library(path):
    """The functions used here, with their types: ctypes would take every pointer for an int."""
    vexo = ctypes.CDLL(path)
    status, nothing = c_int, None
    for name, result, *arguments in (
            ("vexo_load_lcnr_xml", status, POINTER(Lcnr), c_char_p),
            ("vexo_lcnr_sanity_check", status, POINTER(Lcnr)),
            ("vexo_lut_init", status, POINTER(Lut), c_int),
            ("vexo_lut_destroy", nothing, POINTER(Lut)),
            ("vexo_gamma_init", nothing, POINTER(Gamma), c_float),
            ("vexo_vector_set_xy", nothing, POINTER(Vector), POINTER(c_float)),
            ("vexo_data_alignment", status, POINTER(Lut), POINTER(Panel), POINTER(Gamma), POINTER(Gamma), POINTER(Vector)),
            ("vexo_luts_store_int", status, c_void_p, POINTER(Lut), c_int),
            ("vexo_3dlut_cube_load_file", c_void_p, c_char_p),
            ("vexo_3dlut_dup", c_void_p, c_void_p, c_int, c_char_p),
            ("vexo_3dlut_dump_cube", c_int, c_void_p, c_void_p),
            ("vexo_3dlut_size", c_int, c_void_p),
            ("vexo_3dlut_destroy", nothing, c_void_p)):
        function = getattr(vexo, name)
        function.restype, function.argtypes = result, arguments
    return vexo


class File:
    """A C stream, which the library writes to."""
    _c = ctypes.CDLL(None)
    _c.fopen.restype, _c.fopen.argtypes, _c.fclose.argtypes = c_void_p, [c_char_p, c_char_p], [c_void_p]

    def __init__(self, path):
        self.stream = self._c.fopen(path.encode(), b"w")
        if not self.stream:
            raise OSError(f"{path}: cannot be written")

    def __enter__(self):
        return self.stream

    def __exit__(self, *failure):
        if self._c.fclose(self.stream) != 0 and failure[0] is None:
            raise OSError("writing failed")


def check(status, what):
    if status != 0:
        raise ValueError(what)


def calibrate(vexo, measurements, result):
    panel, luts = Panel(), (Lut * 3)()
    camera, system, white = Gamma(), Gamma(), Vector()
    check(vexo.vexo_load_lcnr_xml(byref(panel.lcnr), measurements.encode()), f"{measurements}: cannot be read")
    check(vexo.vexo_lcnr_sanity_check(byref(panel.lcnr)), f"{measurements}: a reading falls")
    vexo.vexo_gamma_init(byref(camera), 1.0)
    vexo.vexo_gamma_init(byref(system), 2.2)
    vexo.vexo_vector_set_xy(byref(white), (c_float * 2)(0.3127, 0.3290))
    try:
        for lut in luts:
            check(vexo.vexo_lut_init(byref(lut), 1024), "out of memory")
        check(vexo.vexo_data_alignment(luts, byref(panel), byref(camera), byref(system), byref(white)),
              f"{measurements}: no calibration")
        with File(result) as stream:
            check(vexo.vexo_luts_store_int(stream, luts, 10), f"{result}: not written")
        print("full drive:", " ".join(f"{lut.d[1023]:.4f}" for lut in luts))
    finally:
        for lut in luts:
            vexo.vexo_lut_destroy(byref(lut))


def resample(vexo, cube, result):
    lut = vexo.vexo_3dlut_cube_load_file(cube.encode())
    if not lut:
        raise ValueError(f"{cube}: cannot be read")
    fine = vexo.vexo_3dlut_dup(lut, 33, None)
    print("points:", vexo.vexo_3dlut_size(lut), "to", 33)
    vexo.vexo_3dlut_destroy(lut)
    if not fine:
        raise MemoryError
    try:
        with File(result) as stream:
            vexo.vexo_3dlut_dump_cube(fine, stream)
    finally:
        vexo.vexo_3dlut_destroy(fine)


if __name__ == "__main__":
    if len(sys.argv) not in (4, 6):
        sys.exit(__doc__)
    library = open_library(sys.argv[1])
    calibrate(library, *sys.argv[2:4])
    if len(sys.argv) == 6:
        resample(library, *sys.argv[4:6])
