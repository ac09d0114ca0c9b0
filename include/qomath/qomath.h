/*
 * QOMath — spectroradiometry, photometry and colorimetry.
 * The umbrella header: includes every family.
 */
#ifndef QOMATH_QOMATH_H
#define QOMATH_QOMATH_H

#include "qomath/common.h"
#include "qomath/grid.h"
#include "qomath/cie_tables.h"
#include "qomath/polyfit.h"
#include "qomath/linalg.h"
#include "qomath/interpolation.h"
#include "qomath/arrays.h"
#include "qomath/filters.h"
#include "qomath/fft.h"
#include "qomath/spectral_arith.h"
#include "qomath/tristimulus.h"
#include "qomath/chromaticity.h"
#include "qomath/cct.h"
#include "qomath/dominant.h"
#include "qomath/cri.h"
#include "qomath/photometry.h"
#include "qomath/summary.h"
#include "qomath/colour_quality.h"
#include "qomath/peaks.h"
#include "qomath/straylight.h"
#include "qomath/lines.h"
#include "qomath/detector.h"
#include "qomath/units.h"
#include "qomath/spectral_file.h"
#include "qomath/qofile.h"
#include "qomath/spectral_analysis.h"
#include "qomath/registry.h"
#include "qomath/conversions.h"
#include "qomath/marshal.h"
#include "qomath/retro.h"
#include "qomath/donaldson.h"
#include "qomath/nvis.h"
#include "qomath/command.h"

#endif /* QOMATH_QOMATH_H */
