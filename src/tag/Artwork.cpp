#include "tag/Artwork.h"

#include "base/Limits.h"
#include "pictures/LensMake.h"
#include "pictures/PictureFormats.h"
#include "platform/Log.h"

#include <zaltag/tag/ZALTagDataImage.h>

#include <algorithm>

namespace zal {

namespace {

ArtworkMark markOf(const StoredPicture& picture) {
    const ZALNullableString make = lensMakeOf(picture.data);
    if (make == ZALTagDataImage::originalLensMakeString()) return ArtworkMark::original;
    if (make == ZALTagDataImage::customizedLensMakeString()) return ArtworkMark::customized;
    return ArtworkMark::none;
}

std::vector<ArtworkMark> marksOf(const std::vector<StoredPicture>& pictures) {
    std::vector<ArtworkMark> marks;
    marks.reserve(pictures.size());
    for (const StoredPicture& picture : pictures) {
        marks.push_back(markOf(picture));
    }
    return marks;
}

ZALData copyOf(ZALDataView bytes) {
    return {bytes.begin(), bytes.end()};
}

// The image as PNG; null, and one log line, when it cannot be rendered.
ZALNullableData render(const ZALImage& image, bool markAsCustom) {
    ZALNullableData data = image.PNGData();
    if (!data) {
        log("Unable to finalize the destination PNG data.");
        return std::nullopt;
    }
    ZALTagDataImage marked(std::move(*data));
    if (markAsCustom) marked.setIsCustomImage(true);
    return marked.imageData();
}

}  // namespace

ZALImagePtr Artwork::imageAt(std::optional<std::size_t> index,
                             const std::vector<StoredPicture>& pictures) const {
    return index ? ZALImage::imageWithData(pictures[*index].data) : nullptr;
}

bool Artwork::hasImages() const {
    if (rules_.areHidden) return false;
    container_->prepareListing();
    return !container_->isEmpty();
}

ZALImagePtr Artwork::originalImage() const {
    if (rules_.areHidden) return nullptr;
    const auto pictures = container_->pictures(false);
    return imageAt(originalPicture(rules_, marksOf(pictures)), pictures);
}

ZALImagePtr Artwork::customizedImage() const {
    if (rules_.areHidden) return nullptr;
    const auto pictures = container_->pictures(false);
    return imageAt(customizedPicture(marksOf(pictures)), pictures);
}

ZALArray<ZALTagImageDictionary> Artwork::allImages() const {
    if (rules_.areHidden) return {};
    container_->prepareListing();
    std::vector<ZALTagImageDictionary> images;
    std::uint64_t pixels = 0;
    for (const StoredPicture& picture : container_->pictures(false)) {
        const auto size = permittedSize(picture.data);
        if (!size) continue;
        pixels += size->pixels();  // also of one that turns out to be damaged: it costs as much
        if (pixels > limits::listedPixels) {
            logf("pictures beyond {} mega pixels are left out of the list", limits::listedPixels >> 20);
            break;
        }
        if (ZALImagePtr image = ZALImage::imageWithData(picture.data))
            images.push_back({image, picture.type});
    }
    return images;
}

void Artwork::forEachImageData(
    const std::function<void(ZALDataView data, std::uint32_t imageType)>& look) const {
    container_->prepareListing();
    for (const StoredPicture& picture : container_->pictures(true)) {
        look(picture.data, picture.type);
    }
}

ZALArray<ZALData> Artwork::allImageData() const {
    std::vector<ZALData> all;
    forEachImageData([&all](ZALDataView data, std::uint32_t) { all.push_back(copyOf(data)); });
    return all;
}

ZALArray<ZALTagStoredImage> Artwork::allStoredImages() const {
    if (rules_.areHidden) return {};
    std::vector<ZALTagStoredImage> images;
    for (const StoredPicture& picture : container_->pictures(false)) {
        images.push_back({copyOf(picture.data), picture.type});
    }
    return images;
}

void Artwork::setAllImages(const ZALArray<ZALTagImageDictionary>& images) {
    if (rules_.areHidden) return;
    container_->clear();
    std::vector<NewPicture> added;
    for (const ZALTagImageDictionary& dictionary : images) {
        if (dictionary.image == nullptr) continue;
        ZALNullableData data = dictionary.image->PNGData();
        if (data) {
            added.push_back({std::move(*data)});  // the dictionary's type is not written
        } else {
            logf("{} unable to finalize the destination PNG data.", rules_.setAllImagesName);
        }
    }
    container_->setPictures(std::move(added));
}

bool Artwork::replaceOriginalImage(const ZALImagePtr& image) {
    if (rules_.areHidden) return false;
    if (rules_.replacesCustomized) return replacePrimaryImage(image, customizedImage() != nullptr);
    // The mark alone protects the host's picture, also one that no longer decodes.
    const bool isCustomized = customizedPicture(marksOf(container_->pictures(false))).has_value();
    return !isCustomized && replacePrimaryImage(image, false);
}

bool Artwork::replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) {
    if (image == nullptr) {
        container_->clear();
        return true;
    }
    ZALNullableData data = render(*image, markAsCustom);
    if (!data) return false;
    if (!container_->pictures(false).empty()) {
        container_->replace(0, std::move(*data), rules_.primaryType);
    } else {
        NewPicture added{std::move(*data)};
        added.type = rules_.primaryType.value_or(standardArtworkType);
        container_->setPictures({std::move(added)});
    }
    return true;
}

void Artwork::backupOriginalImageAndSetCustomImage(const ZALImagePtr& image) {
    if (image == nullptr || rules_.areHidden) return;
    const auto customized = customizedPicture(marksOf(container_->pictures(false)));
    ZALNullableData custom = render(*image, true);
    if (!custom) return;
    if (customized) return container_->replace(*customized, std::move(*custom), std::nullopt);
    const bool empty = container_->pictures(false).empty();
    if (!empty && !container_->canBackUp()) return;
    const auto pictures = container_->pictures(!empty);
    carryOut(backupPlan(rules_, pictures.size()), pictures, *custom);
}

void Artwork::restoreOriginalImage() {
    if (rules_.areHidden) return;
    const auto pictures = container_->pictures(true);
    const auto marks = marksOf(pictures);
    const bool isMarked =
        std::ranges::any_of(marks, [](ArtworkMark mark) { return mark != ArtworkMark::none; });
    if (isMarked) carryOut(restorePlan(rules_, marks), pictures, {});
}

void Artwork::carryOut(const ArtworkPlan& plan, const std::vector<StoredPicture>& pictures,
                       const ZALData& custom) {
    std::vector<NewPicture> made;
    for (const PlannedPicture& planned : plan) {
        NewPicture picture;
        picture.data = custom;
        if (planned.source) {
            const StoredPicture& source = pictures[*planned.source];
            if (!planned.customized) picture.data = copyOf(source.data);
            picture.mimeType = source.mimeType;
            picture.type = source.type;
        }
        if (planned.original) {
            ZALTagDataImage marked(std::move(picture.data));
            marked.setIsOriginalImage(true);
            picture.data = marked.imageData();
        }
        picture.type = planned.type.value_or(picture.type);
        made.push_back(std::move(picture));
    }
    container_->setPictures(std::move(made));
}

}  // namespace zal
