#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/pictures/ZALImage.h>

#include <cstdint>
#include <string>

/// The names of the two members below, for hosts that keep dictionaries; each constant holds its own name.
ZALTAG_EXPORT extern const std::string ZALTagImageDictionaryImageKey;
ZALTAG_EXPORT extern const std::string ZALTagImageDictionaryImageTypeKey;

/// The ID3 picture type of a front cover.
inline constexpr std::uint32_t ZALTagImageTypeFrontCover = 3;

/// One picture of a file, as allImages() lists it and setAllImages() takes it.
struct ZALTagImageDictionary {
    ZALImagePtr image;  ///< ZALTagImageDictionaryImageKey
    std::uint32_t imageType =
        0;  ///< ZALTagImageDictionaryImageTypeKey: the ID3 picture type (3 is the front cover)
};

/// One picture as the file stores it, whether it can be decoded or not.
struct ZALTagStoredImage {
    ZALData data;                 ///< the encoded bytes, with the mark in them
    std::uint32_t imageType = 0;  ///< the ID3 picture type
};
