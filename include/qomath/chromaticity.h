/*
 * QOMath — chromaticity coordinates and colour difference.
 */
#ifndef QOMATH_CHROMATICITY_H
#define QOMATH_CHROMATICITY_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CHROMATICITY_H */
