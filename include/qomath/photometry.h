/*
 * QOMath — photometric quantities and unit conversions.
 */
#ifndef QOMATH_PHOTOMETRY_H
#define QOMATH_PHOTOMETRY_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_PHOTOMETRY_H */
