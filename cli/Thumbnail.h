#pragma once

#include <zaltag/pictures/ZALImage.h>

#include <string>

/// The longer side of a thumbnail, in pixels.
inline constexpr std::uint32_t thumbnailSide = 64;

/// A picture made small, as a data URI with a PNG file; smaller ones keep their size. Empty without a
/// picture and when it cannot be made.
std::string thumbnailURI(const ZALImagePtr& image);
