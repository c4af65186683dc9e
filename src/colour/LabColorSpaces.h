#pragma once

#include "colour/KVColorSpace.h"

namespace tintorra {

// Lab spaces for drawing colours whose Lab values are relative to the D50 or the D65 white of the
// illuminant table (2 degree observer, Y = 1). Each carries a Little CMS Lab profile with that
// white point; both are made on first use, from any thread, and live as long as the program.
const KVColorSpace& calibratedD50LabColorSpace();
const KVColorSpace& calibratedD65LabColorSpace();

} // namespace tintorra
