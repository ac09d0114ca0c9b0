/*
 * QOMath — shared conventions of the whole library.
 *
 * Every exported function is a plain C function (cdecl) over caller-owned
 * `float` arrays and plain records. It returns an `int` status (1 success,
 * 0 "nothing done" or a false predicate, negative codes for failures; each
 * function documents its own), or a physical value, which is 0 on bad input.
 * Nothing is thrown across this boundary: an allocation failure inside a
 * call becomes that function's allocation-failure status.
 *
 * Usable from C99 and C++.
 */
#ifndef QOMATH_COMMON_H
#define QOMATH_COMMON_H

#if defined(_WIN32) || defined(__CYGWIN__)
#  if defined(QOMATH_BUILDING)
#    define QOMATH_API __declspec(dllexport)
#  elif defined(QOMATH_STATIC)
#    define QOMATH_API
#  else
#    define QOMATH_API __declspec(dllimport)
#  endif
#else
#  define QOMATH_API __attribute__((visibility("default")))
#endif

/* Compile-time check of record layouts, in C99 as well as in C++. */
#ifdef __cplusplus
#  define QOMATH_STATIC_ASSERT(cond, name) static_assert(cond, #name)
#else
#  define QOMATH_STATIC_ASSERT(cond, name) typedef char qomath_assert_##name[(cond) ? 1 : -1]
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Status values shared by the library. Their precise meaning is per function. */
enum {
    QOMATH_SUCCESS = 1,
    QOMATH_NOTHING = 0
};

/*
 * Wavelength range record: an evenly spaced grid from start to end, in nm.
 * Valid when start >= 0, start <= end, step >= 1e-7 and step <= end. Its point
 * count is trunc((end - start) / step + 1.001) (in double); point i lies at
 * start + i * step (in float). See WLNumPts.
 */
typedef struct typ_wlinfo {
    float start;
    float end;
    float step;
} typ_wlinfo;
QOMATH_STATIC_ASSERT(sizeof(typ_wlinfo) == 12, typ_wlinfo_is_three_floats);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_COMMON_H */
