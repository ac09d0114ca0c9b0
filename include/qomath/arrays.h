/*
 * QOMath — array arithmetic, integration and statistics.
 */
#ifndef QOMATH_ARRAYS_H
#define QOMATH_ARRAYS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_ARRAYS_H */
