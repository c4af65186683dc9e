#include "ui/KVPixelReadout.h"

#include "colour/ColorComponents.h"
#include "colour/HueAngles.h"

#include <array>

namespace tintorra {

namespace {

using Cells = std::array<QString, 3>;

QString degreesOfFraction(double fraction)
{
    return QString::asprintf("\n%.1f\u00B0", fraction * 360.0);
}

QString degreesOfRadians(double radians)
{
    return degreesOfFraction(hueFraction(radians));
}

QString number3(double value)
{
    return QString::asprintf("\n%.3f", value);
}

QString percentCell(const std::optional<double>& fraction)
{
    return fraction ? QString::asprintf("\n%.1f%%", *fraction * 100.0) : QStringLiteral("\n\u2013");
}

class ReadoutBuilder {
public:
    void row(const QString& label, const Cells& cells)
    {
        readout_.header += (readout_.header.isEmpty() ? QString() : QStringLiteral("\n")) + label;
        for (int column = 0; column < 3; ++column) {
            readout_.columns[column] += cells[static_cast<std::size_t>(column)];
        }
    }
    KVPixelReadout take() { return std::move(readout_); }

private:
    KVPixelReadout readout_;
};

Cells cylinderCells(const ColorComponents& c)
{
    return {degreesOfFraction(fractionalPart(c.c0)), number3(c.c1), number3(c.c2)};
}

Cells lchCells(const ColorComponents& lch)
{
    return {number3(lch.c0), QString::asprintf("\n%.2f", lch.c1), degreesOfRadians(lch.c2)};
}

} // namespace

QString emptyPixelReadoutHeader()
{
    return QStringLiteral("x,y\nOp\nr'g'b'\nrgb");
}

KVPixelReadout pixelReadout(const PixelColorReport& r, ColorSpaceModel colorSpaceModel)
{
    ReadoutBuilder builder;
    builder.row(QStringLiteral("x,y"),
                {QString::asprintf("%ld", static_cast<long>(r.x)),
                 QString::asprintf("%ld", static_cast<long>(r.y)), QString()});
    builder.row(QStringLiteral("Op"),
                {QString::asprintf("\n%u", r.alpha),
                 QString::asprintf("\n%.1f%%", r.opacity * 100.0), QStringLiteral("\n")});
    builder.row(QStringLiteral("r'g'b'"),
                {QString::asprintf("\n%u", r.red), QString::asprintf("\n%u", r.green),
                 QString::asprintf("\n%u", r.blue)});
    builder.row(QStringLiteral("rgb"),
                {number3(r.linearRgb.c0), number3(r.linearRgb.c1), number3(r.linearRgb.c2)});
    switch (colorSpaceModel) {
    case ColorSpaceModel::LChab:
        builder.row(QStringLiteral("Lab"),
                    {number3(r.lab.c0), number3(r.lab.c1), number3(r.lab.c2)});
        builder.row(QStringLiteral("LChab"), lchCells(r.lchab));
        builder.row(QStringLiteral("Sat"),
                    {percentCell(r.lchabSaturation), QStringLiteral("\n"), QStringLiteral("\n")});
        break;
    case ColorSpaceModel::HCL:
        builder.row(QStringLiteral("hcl"), {degreesOfFraction(fractionalPart(r.hcl.h)),
                                            number3(r.hcl.c), number3(r.hcl.l)});
        builder.row(QStringLiteral("Sat"),
                    {percentCell(r.hcl.saturation), QStringLiteral("\n"), QStringLiteral("\n")});
        break;
    case ColorSpaceModel::HSB:
        builder.row(QStringLiteral("hsb"), cylinderCells(r.hsb));
        builder.row(QStringLiteral("h's'b'"), cylinderCells(r.encodedHsb));
        break;
    case ColorSpaceModel::HSL:
        builder.row(QStringLiteral("hsl"), cylinderCells(r.hsl));
        builder.row(QStringLiteral("h's'l'"), cylinderCells(r.encodedHsl));
        break;
    default:
        break;
    }
    builder.row(QStringLiteral("Luv"), {number3(r.luv.c0), number3(r.luv.c1), number3(r.luv.c2)});
    builder.row(QStringLiteral("LChuv"), lchCells(r.lchuv));
    builder.row(QStringLiteral("Sat"),
                {percentCell(r.lchuvSaturation), QStringLiteral("\n"), QStringLiteral("\n")});
    return builder.take();
}

QString pixelDescription(const PixelColorReport& r, ColorSpaceModel colorSpaceModel)
{
    const auto cylinder = [](const char* format, const ColorComponents& c) {
        return QString::asprintf(format, fractionalPart(c.c0) * 360.0, c.c1, c.c2);
    };
    const auto lch = [](const char* format, const ColorComponents& c) {
        return QString::asprintf(format, c.c0, c.c1, hueFraction(c.c2) * 360.0);
    };
    QString text =
        QString::asprintf("x,y: %ld,%ld", static_cast<long>(r.x), static_cast<long>(r.y));
    text += QString::asprintf("\nalpha:\t%.1f%%", r.opacity * 100.0);
    text += QString::asprintf("\nrgba:\t%u\t%u\t%u\t%u", r.red, r.green, r.blue, r.alpha);
    text += QString::asprintf("\nrgb:\t%.3f\t%.3f\t%.3f", r.linearRgb.c0, r.linearRgb.c1,
                              r.linearRgb.c2);
    switch (colorSpaceModel) {
    case ColorSpaceModel::LChab:
        text += QString::asprintf("\nLab: %.3f, %.3f, %.1f\u00B0", r.lab.c0, r.lab.c1, r.lab.c2);
        text += lch("\nLChab: %.3f, %.3f, %.1f\u00B0", r.lchab);
        break;
    case ColorSpaceModel::HCL:
        text += QString::asprintf("\nhcl:\t%.1f\u00B0\t%.3f\t%.3f", fractionalPart(r.hcl.h) * 360.0,
                                  r.hcl.c, r.hcl.l);
        break;
    case ColorSpaceModel::HSB:
        text += cylinder("\nhsb:\t%.1f\u00B0\t%.3f\t%.3f", r.hsb);
        text += cylinder("\nh's'b':\t%.1f\u00B0\t%.3f\t%.3f", r.encodedHsb);
        break;
    case ColorSpaceModel::HSL:
        text += cylinder("\nhsl:\t%.1f\u00B0\t%.3f\t%.3f", r.hsl);
        text += cylinder("\nh's'l':\t%.1f\u00B0\t%.3f\t%.3f", r.encodedHsl);
        break;
    default:
        break;
    }
    text += QString::asprintf("\nLuv: %.3f, %.3f, %.1f\u00B0", r.luv.c0, r.luv.c1, r.luv.c2);
    text += lch("\nLChuv: %.3f, %.3f, %.1f\u00B0", r.lchuv);
    return text;
}

QString imageInformationHeader()
{
    return QStringLiteral("px\ndpi\npt\nprofile");
}

QString imageInformation(const KVBitmap& image)
{
    double horizontalDpi = 0.0;
    double verticalDpi = 0.0;
    image.pixelsPerInch(horizontalDpi, verticalDpi);
    const QString profile = QString::fromStdString(image.colorSpace().name());
    return QString::asprintf("%lu x %lu %ldbpp\n%.1f\n%.3f x %.3f\n",
                             static_cast<unsigned long>(image.pixelsWide()),
                             static_cast<unsigned long>(image.pixelsHigh()),
                             static_cast<long>(image.bitsPerPixel()), horizontalDpi, image.width(),
                             image.height()) +
           profile;
}

} // namespace tintorra
