/*
 * QOMath — dominant wavelength and purity.
 */
#ifndef QOMATH_DOMINANT_H
#define QOMATH_DOMINANT_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_DOMINANT_H */
