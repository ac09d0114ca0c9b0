/*
 * QOMath — arithmetic between two spectra and trimming.
 */
#ifndef QOMATH_SPECTRAL_ARITH_H
#define QOMATH_SPECTRAL_ARITH_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_SPECTRAL_ARITH_H */
