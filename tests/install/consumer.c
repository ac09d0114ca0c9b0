/* Uses an installed QOMath from C: version, a grid and a CIE table. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include <qomath/qomath.h>

int main(void)
{
    static float values[QOMATH_CIE_MAX_POINTS];
    typ_wlinfo range = {380.0f, 780.0f, 5.0f};
    if (strcmp(GetQOMathDLLversion(), "1.7.6") != 0) return 1;
    if (WLNumPts(&range) != 81) return 2;
    if (GetCIEData(1, values, &range) != 1) return 3;
    if (WLNumPts(&range) != 471 || fabs(values[195] - 1.0f) > 1e-6f) return 4;
    printf("consumer ok: QOMath %s, y-bar(555) = %g\n", GetQOMathDLLversion(), values[195]);
    return 0;
}
