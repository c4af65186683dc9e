// Draws the application icon at every size the desktop and the documentation use:
//   tintorra-icons [FOLDER]            tintorra-SIZE.png from 16 to 1024 (default resources/icons)
//   tintorra-icons --hicolor FOLDER    FOLDER/hicolor/SIZExSIZE/apps/NAME.png from 16 to 512 and
//                                      FOLDER/hicolor/scalable/apps/NAME.svg, the desktop theme
#include "imageio/ImageFile.h"
#include "tools/IconPainter.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace {

using namespace tintorra;

// The name the desktop file, the metadata and the theme know the program's icon by.
constexpr const char* kDesktopIconName = "com.velmora.Tintorra";

bool writeIcon(const std::filesystem::path& path, int size)
{
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    const KVBitmapPtr icon = paintTintorraIcon(size);
    EncodeOptions options;
    // The icons are installed and embedded: the smallest file is worth the time.
    options.pngCompressionLevel = 9;
    const IOStatus written =
        icon ? writeImageFile(path, *icon, ImageFormat::png, options) : ioError("no memory");
    if (!written) {
        std::fprintf(stderr, "tintorra-icons: %s: %s\n", path.c_str(),
                     written.error().message.c_str());
        return false;
    }
    std::printf("%s\n", path.c_str());
    return true;
}

bool writeThemeIcons(const std::filesystem::path& folder)
{
    const std::filesystem::path theme = folder / "hicolor";
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        const std::string dimensions = std::to_string(size) + "x" + std::to_string(size);
        if (!writeIcon(theme / dimensions / "apps" / (std::string(kDesktopIconName) + ".png"),
                       size)) {
            return false;
        }
    }
    const auto svg = theme / "scalable" / "apps" / (std::string(kDesktopIconName) + ".svg");
    std::error_code error;
    std::filesystem::create_directories(svg.parent_path(), error);
    std::ofstream out(svg, std::ios::binary);
    out << tintorraIconSvg();
    if (!out.flush()) {
        std::fprintf(stderr, "tintorra-icons: %s could not be written\n", svg.c_str());
        return false;
    }
    std::printf("%s\n", svg.c_str());
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const bool theme = argc == 3 && std::string_view(argv[1]) == "--hicolor";
    if (!theme && (argc > 2 || (argc == 2 && argv[1][0] == '-'))) {
        std::fprintf(stderr, "usage: tintorra-icons [FOLDER]   (default resources/icons)\n"
                             "       tintorra-icons --hicolor FOLDER\n");
        return 2;
    }
    if (theme) {
        return writeThemeIcons(argv[2]) ? 0 : 1;
    }
    const std::filesystem::path folder = argc > 1 ? argv[1] : "resources/icons";
    for (const int size : {1024, 512, 256, 128, 64, 32, 16}) {
        if (!writeIcon(folder / ("tintorra-" + std::to_string(size) + ".png"), size)) {
            return 1;
        }
    }
    return 0;
}
