// Prints the RGB-to-XYZ matrix of every built-in working space and its inverse.
#include "colour/ColorMatrices.h"
#include "colour/WorkingSpaces.h"

#include <cstdio>

int main()
{
    using namespace tintorra;
    for (const ColorSpaceChromaticities& space : workingSpaceTable) {
        const Matrix3 m = matrixFromChromaticities(space);
        Matrix3 mi{};
        const bool invertible = invertMatrix3(mi, m);
        std::printf("%s (white %.5f, %.5f; gamma %.1f)\n", space.name, space.whiteX, space.whiteY,
                    space.gamma);
        for (int row = 0; row < 3; ++row) {
            std::printf("  RGB->XYZ  % .6f % .6f % .6f    XYZ->RGB  % .6f % .6f % .6f\n",
                        m[row * 3], m[row * 3 + 1], m[row * 3 + 2], mi[row * 3], mi[row * 3 + 1],
                        mi[row * 3 + 2]);
        }
        if (!invertible) {
            std::printf("  (not invertible)\n");
        }
    }
    return 0;
}
