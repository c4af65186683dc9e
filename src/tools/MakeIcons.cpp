// Draws the application icon at every size the desktop and the documentation use and writes
// them as PNG files into a folder: tintorra-icons [FOLDER] (default resources/icons).
#include "imageio/ImageFile.h"
#include "tools/IconPainter.h"

#include <cstdio>
#include <filesystem>
#include <string>

int main(int argc, char** argv)
{
    using namespace tintorra;
    if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
        std::fprintf(stderr, "usage: tintorra-icons [FOLDER]   (default resources/icons)\n");
        return 2;
    }
    const std::filesystem::path folder = argc > 1 ? argv[1] : "resources/icons";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    for (const int size : {1024, 512, 256, 128, 64, 32, 16}) {
        const KVBitmapPtr icon = paintTintorraIcon(size);
        const auto path = folder / ("tintorra-" + std::to_string(size) + ".png");
        EncodeOptions options;
        // The icons are committed and embedded: the smallest file is worth the time.
        options.pngCompressionLevel = 9;
        const IOStatus written =
            icon ? writeImageFile(path, *icon, ImageFormat::png, options) : ioError("no memory");
        if (!written) {
            std::fprintf(stderr, "tintorra-icons: %s: %s\n", path.c_str(),
                         written.error().message.c_str());
            return 1;
        }
        std::printf("%s\n", path.c_str());
    }
    return 0;
}
