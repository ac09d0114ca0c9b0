/*
 * QOMath — measurement units: names, codes and the unit tables.
 */
#ifndef QOMATH_UNITS_H
#define QOMATH_UNITS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_UNITS_H */
