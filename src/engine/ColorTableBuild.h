#pragma once

#include "colour/ColorSpaceModel.h"
#include "engine/ColorTable.h"

namespace tintorra::detail {

// createLChColorTableWithImageGamma on a chosen number of threads, so that tests can check that
// the table does not depend on how the work was split.
LChColorTable buildColorTable(const KVBitmapPtr& bitmap, double imageGamma,
                              ColorSpaceModel colorSpaceModel, unsigned threads);

} // namespace tintorra::detail
