#pragma once

namespace tintorra {

// One colour passed by value between conversions: three components whose meaning depends on the
// representation (r,g,b / X,Y,Z / L,a,b / L,C,h / h,s,b ...) and alpha, carried unchanged unless a
// conversion says otherwise.
struct ColorComponents {
    double c0 = 0.0;
    double c1 = 0.0;
    double c2 = 0.0;
    double alpha = 1.0;

    friend constexpr bool operator==(const ColorComponents&, const ColorComponents&) = default;
};

// HCL as the forward conversion returns it: hue fraction, chroma (max - min), luma and alpha, with
// the HSB saturation of the same pixel behind them.
struct HclComponents {
    double h = 0.0;
    double c = 0.0;
    double l = 0.0;
    double alpha = 1.0;
    double saturation = 0.0;

    friend constexpr bool operator==(const HclComponents&, const HclComponents&) = default;
};

} // namespace tintorra
