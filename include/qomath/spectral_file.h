/*
 * QOMath — spectral text files: records, readers, writers and version converters.
 */
#ifndef QOMATH_SPECTRAL_FILE_H
#define QOMATH_SPECTRAL_FILE_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_SPECTRAL_FILE_H */
