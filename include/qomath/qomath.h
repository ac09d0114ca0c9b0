/*
 * QOMath — spectroradiometry, photometry and colorimetry.
 * The umbrella header: includes every family.
 */
#ifndef QOMATH_QOMATH_H
#define QOMATH_QOMATH_H

#include "qomath/common.h"
#include "qomath/grid.h"
#include "qomath/colorimetry.h"
#include "qomath/numerics.h"

#endif /* QOMATH_QOMATH_H */
