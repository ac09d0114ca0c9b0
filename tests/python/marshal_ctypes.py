# The marshalling self-tests through Python ctypes, as a host calls them:
# marshal_ctypes.py LIBRARY; exit 0 passed, 1 failed, 77 skipped (no ctypes).
import sys

try:
    import ctypes
except ImportError:
    print("ctypes unavailable: marshalling test skipped")
    sys.exit(77)

lib = ctypes.CDLL(sys.argv[1])
failures = []

check = lambda cond, what: cond or failures.append(what)


class SpectralRecord2(ctypes.Structure):
    _fields_ = [("firstWavelength", ctypes.c_float), ("lastWavelength", ctypes.c_float),
                ("pointCount", ctypes.c_float), ("unitName", ctypes.c_char * 50),
                ("header", ctypes.c_char * 256), ("wavelengths", ctypes.c_float * 4096),
                ("values", ctypes.c_float * 4096), ("reserved", ctypes.c_float * 4096),
                ("infoCount", ctypes.c_int), ("info", (ctypes.c_char * 50) * 50)]


lib.MarshalTestScalars.argtypes = [ctypes.c_int, ctypes.c_float, ctypes.c_double,
                                   ctypes.POINTER(ctypes.c_int), ctypes.POINTER(ctypes.c_float),
                                   ctypes.POINTER(ctypes.c_double)]
i, f, d = ctypes.c_int(1), ctypes.c_float(0.5), ctypes.c_double(2.0)
status = lib.MarshalTestScalars(6, 1.25, -0.5, ctypes.byref(i), ctypes.byref(f), ctypes.byref(d))
check((status, i.value, f.value, d.value) == (1, 7, 1.75, 1.5), "MarshalTestScalars")

lib.MarshalTestDouble.restype = ctypes.c_double
lib.MarshalTestDouble.argtypes = [ctypes.c_int, ctypes.c_float, ctypes.c_double]
check(lib.MarshalTestDouble(2, 0.25, 0.125) == 2.375, "MarshalTestDouble")

lib.MarshalTestFloatArray.restype = ctypes.c_float
values = (ctypes.c_float * 10)()
check(lib.MarshalTestFloatArray(values, 10) == 67.5 and values[2] == 3.0, "MarshalTestFloatArray")

layout = (ctypes.c_int * 9)()
rec = SpectralRecord2()
rec.pointCount = 2.0
rec.wavelengths[1] = 500.0
check(lib.MarshalTestRecord2(ctypes.byref(rec), layout, 9) == 1, "MarshalTestRecord2 status")
ours = [3 * ctypes.sizeof(ctypes.c_float), ctypes.sizeof(SpectralRecord2)] + [
    getattr(SpectralRecord2, name).offset
    for name in ("unitName", "header", "wavelengths", "values", "reserved", "infoCount", "info")]
check(list(layout) == ours, "record layout: library %s, ctypes %s" % (list(layout), ours))
check(rec.values[1] == 1000.0 and rec.infoCount == 2, "MarshalTestRecord2 answer")

print("\n".join("FAILED: " + w for w in failures) or "ctypes marshalling: all checks passed")
sys.exit(1 if failures else 0)
