#pragma once

#include "tag/ArtworkPlan.h"

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALData.h>
#include <zaltag/pictures/ZALImage.h>
#include <zaltag/tag/ZALTagImageDictionary.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zal {

/// A picture as a container holds it; the bytes are the container's and stay valid until it is changed.
struct StoredPicture {
    ZALDataView data;
    std::string mimeType;
    std::uint32_t type = standardArtworkType;
};

/// A picture to be put into a container.
struct NewPicture {
    ZALData data;
    std::string mimeType = "image/png";
    std::uint32_t type = standardArtworkType;
};

/// What a container does with its pictures; it knows nothing of marks.
class ArtworkContainer {
  public:
    virtual ~ArtworkContainer() = default;

    /// The pictures in the order of the file. An entry that is no picture is left out and, when asked,
    /// logged.
    virtual std::vector<StoredPicture> pictures(bool logged) const = 0;
    virtual bool isEmpty() const { return pictures(false).empty(); }
    /// Called before pictures are listed.
    virtual void prepareListing() {}
    /// False, and one log line, when the first entry is no picture, so that it cannot be backed up.
    virtual bool canBackUp() const = 0;
    /// Takes away every entry.
    virtual void clear() = 0;
    /// Gives a picture, by its place among pictures(), other bytes and, unless null, another type; the rest
    /// of it stays.
    virtual void replace(std::size_t index, ZALData data, std::optional<std::uint32_t> type) = 0;
    /// Takes away the pictures and adds these, in order. Called with none as well.
    virtual void setPictures(std::vector<NewPicture> pictures) = 0;
};

/// The artwork operations of a tag object, alike for every container but for its rules. Pictures are decoded
/// only where one is handed out; marks are read without.
class Artwork {
  public:
    Artwork(std::unique_ptr<ArtworkContainer> container, const ArtworkRules& rules)
        : container_(std::move(container)), rules_(rules) {}

    bool hasImages() const;
    ZALImagePtr originalImage() const;
    ZALImagePtr customizedImage() const;
    ZALArray<ZALTagImageDictionary> allImages() const;
    ZALArray<ZALData> allImageData() const;
    void forEachImageData(const std::function<void(ZALDataView data, std::uint32_t imageType)>& look) const;
    ZALArray<ZALTagStoredImage> allStoredImages() const;

    void setAllImages(const ZALArray<ZALTagImageDictionary>& images);
    bool replaceOriginalImage(const ZALImagePtr& image);
    bool replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom);
    void backupOriginalImageAndSetCustomImage(const ZALImagePtr& image);
    void restoreOriginalImage();

  private:
    ZALImagePtr imageAt(std::optional<std::size_t> index, const std::vector<StoredPicture>& pictures) const;
    void carryOut(const ArtworkPlan& plan, const std::vector<StoredPicture>& pictures, const ZALData& custom);

    std::unique_ptr<ArtworkContainer> container_;
    ArtworkRules rules_;
};

}  // namespace zal
