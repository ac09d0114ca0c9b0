/*
 * QOMath — CIE tristimulus values.
 */
#ifndef QOMATH_TRISTIMULUS_H
#define QOMATH_TRISTIMULUS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_TRISTIMULUS_H */
