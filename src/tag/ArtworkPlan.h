#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zal {

/// What the mark in a picture says of it.
enum class ArtworkMark { none, original, customized };

/// Where containers deliberately differ; docs/formats/artwork.md has the table. The defaults are those of
/// ID3v2.
struct ArtworkRules {
    /// The name of the container's setAllImages() in the log.
    const char* setAllImagesName = "";
    /// replaceOriginalImage() on a customised file replaces and marks the picture instead of refusing.
    bool replacesCustomized = false;
    /// The original stands last: an unmarked one is looked for there, and backing up and restoring put the
    /// marked pictures behind the others instead of in front of them.
    bool originalIsLast = false;
    /// Restoring keeps every picture marked original, the last one in front, instead of the last one alone.
    bool keepsEveryOriginal = false;
    /// Pictures that are made anew keep their types instead of getting the standard one.
    bool keepsTypes = false;
    /// The type of a picture that is replaced, new or restored. Null: a replaced one keeps its own, the
    /// others get the standard one.
    std::optional<std::uint32_t> primaryType{};
    /// The container's pictures are not the file's: nothing but allImageData() and replacePrimaryImage() sees
    /// them.
    bool areHidden = false;
};

/// The picture type that TagLib gives a new picture.
inline constexpr std::uint32_t standardArtworkType = 0;
inline constexpr std::uint32_t frontCoverType = 3;

inline constexpr ArtworkRules id3Artwork{.setAllImagesName = "-[ZALTagID3 setAllImages:]"};
inline constexpr ArtworkRules wavArtwork{.areHidden = true};
inline constexpr ArtworkRules mp4Artwork{
    .setAllImagesName = "-[ZALTagMP4 setAllImages:]", .replacesCustomized = true, .keepsEveryOriginal = true};
inline constexpr ArtworkRules flacArtwork{.setAllImagesName = "-[ZALTagFLAC setAllImages:]",
                                          .replacesCustomized = true,
                                          .originalIsLast = true,
                                          .keepsTypes = true,
                                          .primaryType = frontCoverType};

/// One picture of the list that replaces all others.
struct PlannedPicture {
    /// The stored picture, by its index, whose format (and bytes, and type) it takes over; null for a new
    /// PNG.
    std::optional<std::size_t> source;
    /// It holds the host's picture, marked as customised, instead of the source's bytes.
    bool customized = false;
    /// Its bytes get the mark of the original.
    bool original = false;
    /// Its type; null for the source's own.
    std::optional<std::uint32_t> type;

    bool operator==(const PlannedPicture&) const = default;
};
using ArtworkPlan = std::vector<PlannedPicture>;

/// The picture that a file came with: the first one marked original; without one the first of all, or the
/// last by the rules, unless that is marked as customised. Null for none.
std::optional<std::size_t> originalPicture(const ArtworkRules& rules, std::span<const ArtworkMark> marks);

/// The first picture marked as customised, or null.
std::optional<std::size_t> customizedPicture(std::span<const ArtworkMark> marks);

/// The list after the host's picture was put in and the first of `count` pictures kept as the original.
ArtworkPlan backupPlan(const ArtworkRules& rules, std::size_t count);

/// The list after the customised pictures were dropped and the original put in their place, its mark kept.
ArtworkPlan restorePlan(const ArtworkRules& rules, std::span<const ArtworkMark> marks);

}  // namespace zal
