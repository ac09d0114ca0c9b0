/*
 * QOMath — correlated colour temperature and the Planckian radiator.
 */
#ifndef QOMATH_CCT_H
#define QOMATH_CCT_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CCT_H */
