/*
 * QOMath — the CQOFile class: version 2.0 spectral files as strings and vectors.
 */
#ifndef QOMATH_QOFILE_H
#define QOMATH_QOFILE_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_QOFILE_H */
