/*
 * QOMath — colour rendering index.
 */
#ifndef QOMATH_CRI_H
#define QOMATH_CRI_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CRI_H */
