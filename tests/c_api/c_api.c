/* The public headers compile as C99 and the shared library answers from C. */
#include <math.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <qomath/qomath.h>

static int failures = 0;
#define CHECK(cond)                                                      \
    do {                                                                 \
        if (!(cond)) {                                                   \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                  \
        }                                                                \
    } while (0)

int main(void)
{
    static float values[QOMATH_CIE_MAX_POINTS];
    static float x[QOMATH_LOCUS1931_FINE_POINTS], y[QOMATH_LOCUS1931_FINE_POINTS];
    typ_wlinfo r = {380.0f, 780.0f, 5.0f};
    typ_chartvalue p;
    float *wl = NULL, *fx = NULL, *fy = NULL;
    char v[25], d[25], t[25];
    float a[4] = {4, 7, 2, 6}, b[2] = {1, 1};

    CHECK(strcmp(GetQOMathDLLversion(), "1.7.6") == 0);
    CHECK(GetDllBuildInfo(v, d, t) == 8 && strcmp(d, "May  3 2020") == 0);
    CHECK(MATHDLLCHECK() == 1.0);
    CHECK(WLNumPts(&r) == 81);

    CHECK(GetCIEData(6, values, &r) == 1 && WLNumPts(&r) == 531 && values[260] == 100.0f);
    r = GetCIE1931ChartWL();
    CHECK(r.start == 360.0f && r.end == 700.0f && r.step == 1.0f);
    p = GetCIE1931ChartValue(195);
    CHECK(p.x == 0.33736f && p.y == 0.65885f && p.z == 0.0f);
    CHECK(GetCIEUCSChartData(1, x, y, &r) == 1 && WLNumPts(&r) == 471);

    CHECK(CIE1931DiagramInterpolated(&wl, &fx, &fy, &r) == 1);
    CHECK(wl && fx && fy && wl[10] == 370.0f);
    free(wl);
    free(fx);
    free(fy);

    {
        int n = 1, layout[QOMATH_MARSHAL_LAYOUT_ENTRIES];
        float f = 0.0f, arr[4];
        double dd = 0.5;
        char text[8];
        CHECK(MarshalTestScalars(41, 2.5f, 0.25, &n, &f, &dd) == 1 && n == 42 && f == 2.5f && dd == 0.75);
        CHECK(MarshalTestDouble(1, 0.5f, 0.25) == 1.75);
        CHECK(MarshalTestFloatArray(arr, 4) == 9.0f && arr[3] == 4.5f);
        CHECK(MarshalTestString("qo", text, (int)sizeof text, &n) == 1 && strcmp(text, "QO") == 0 && n == 2);
        CHECK(MarshalTestRecord2(NULL, layout, QOMATH_MARSHAL_LAYOUT_ENTRIES) == 1);
        CHECK(layout[QOMATH_MARSHAL_RECORD2_SIZE] == (int)sizeof(SpectralRecord2));
        CHECK(layout[QOMATH_MARSHAL_INFO_OFFSET] == (int)offsetof(SpectralRecord2, info));
        CHECK(fabs(INCH_TO_CM(1.0f) - 2.54) < 1e-12);
    }

    CHECK(MatrixGaussJordan(a, 2, b, 1) == 1 && fabsf(a[0] - 0.6f) < 1e-6f);

    if (failures == 0) printf("C interface: all checks passed\n");
    return failures == 0 ? 0 : 1;
}
