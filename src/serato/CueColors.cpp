#include "serato/CueColors.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zal {

namespace {

constexpr std::array<std::uint32_t, 18> palette{0xCC0000, 0xCC4400, 0xCC8800, 0xCCCC00, 0x88CC00, 0x44CC00,
                                                0x00CC00, 0x00CC44, 0x00CC88, 0x00CCCC, 0x0088CC, 0x0044CC,
                                                0x0000CC, 0x4400CC, 0x8800CC, 0xCC00CC, 0xCC0088, 0xCC0044};

// A colour in CIELAB, where what looks alike lies close together.
struct Lab {
    double lightness, greenToRed, blueToYellow;
};

// The part of light in a component of sRGB.
double linear(std::uint32_t component) {
    const double value = component / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double labCurve(double value) {
    constexpr double corner = 216.0 / 24389.0;
    return value > corner ? std::cbrt(value) : (24389.0 / 27.0 * value + 16) / 116;
}

Lab labOf(std::uint32_t rgb) {
    const double red = linear(rgb >> 16 & 0xFF);
    const double green = linear(rgb >> 8 & 0xFF);
    const double blue = linear(rgb & 0xFF);
    // To XYZ, as parts of the white of sRGB (D65).
    const double x = labCurve((0.4124564 * red + 0.3575761 * green + 0.1804375 * blue) / 0.95047);
    const double y = labCurve(0.2126729 * red + 0.7151522 * green + 0.0721750 * blue);
    const double z = labCurve((0.0193339 * red + 0.1191920 * green + 0.9503041 * blue) / 1.08883);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

double distance(const Lab& one, const Lab& other) {
    return std::hypot(one.lightness - other.lightness, one.greenToRed - other.greenToRed,
                      one.blueToYellow - other.blueToYellow);
}

}  // namespace

std::uint32_t nearestCueColor(std::uint32_t rgb) {
    static const auto labs = [] {
        std::array<Lab, palette.size()> all{};
        std::transform(palette.begin(), palette.end(), all.begin(), labOf);
        return all;
    }();
    const Lab wanted = labOf(rgb);
    const auto nearest = std::min_element(labs.begin(), labs.end(), [&](const Lab& one, const Lab& other) {
        return distance(one, wanted) < distance(other, wanted);
    });
    return palette[static_cast<std::size_t>(nearest - labs.begin())];
}

}  // namespace zal
