/*
 * QOMath — peak, centroid and line-width analysis.
 */
#ifndef QOMATH_PEAKS_H
#define QOMATH_PEAKS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_PEAKS_H */
