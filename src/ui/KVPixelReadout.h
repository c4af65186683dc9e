#pragma once

#include "editor/PixelColorReport.h"

#include <QString>
#include <QStringList>

namespace tintorra {

// The readout beside the image: a column of row labels and three columns of values, one row per
// line, the rows depending on the colour mode.
struct KVPixelReadout {
    QString header;
    QStringList columns{QString(), QString(), QString()};
};

// The labels shown while the pointer is outside the image.
QString emptyPixelReadoutHeader();

KVPixelReadout pixelReadout(const PixelColorReport& report, ColorSpaceModel colorSpaceModel);

// The same values written out line by line ("x,y: 3,4", "rgba: ...", ...), for the debugging
// print and the readout's tool tip.
QString pixelDescription(const PixelColorReport& report, ColorSpaceModel colorSpaceModel);

// The image information: size and depth, resolution, size in points, profile; under the header
// "px\ndpi\npt\nprofile".
QString imageInformationHeader();
QString imageInformation(const KVBitmap& image);

} // namespace tintorra
