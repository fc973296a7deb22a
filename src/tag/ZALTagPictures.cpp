// The pictures of a tag object.

#include <zaltag/tag/ZALTag.h>

#include "tag/TagContents.h"

bool ZALTag::hasImages() const {
    return contentsFor("hasImages").artwork().hasImages();
}
bool ZALTag::hasOriginalImage() const {
    return contentsFor("hasOriginalImage").artwork().originalImage() != nullptr;
}
bool ZALTag::hasCustomizedImage() const {
    return contentsFor("hasCustomizedImage").artwork().customizedImage() != nullptr;
}
ZALImagePtr ZALTag::originalImage() const {
    return contentsFor("originalImage").artwork().originalImage();
}
ZALImagePtr ZALTag::customizedImage() const {
    return contentsFor("customizedImage").artwork().customizedImage();
}
ZALImagePtr ZALTag::primaryImage() const {
    const ZALImagePtr customized = customizedImage();
    return customized != nullptr ? customized : originalImage();
}

ZALArray<ZALTagImageDictionary> ZALTag::allImages() const {
    return contentsFor("allImages").artwork().allImages();
}
void ZALTag::setAllImages(const ZALArray<ZALTagImageDictionary>& images) {
    contentsFor("setAllImages:").artwork().setAllImages(images);
}
ZALArray<ZALData> ZALTag::allImageData() const {
    return contentsFor("allImageData").artwork().allImageData();
}
void ZALTag::forEachImageData(
    const std::function<void(ZALDataView data, std::uint32_t imageType)>& look) const {
    contentsFor("allImageData").artwork().forEachImageData(look);
}
ZALArray<ZALTagStoredImage> ZALTag::allStoredImages() const {
    return contentsFor("allStoredImages").artwork().allStoredImages();
}

bool ZALTag::replaceOriginalImage(const ZALImagePtr& image) {
    return contentsFor("replaceOriginalImage:").artwork().replaceOriginalImage(image);
}
bool ZALTag::replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) {
    return contentsFor("replacePrimaryImage:markAsCustom:")
        .artwork()
        .replacePrimaryImage(image, markAsCustom);
}
void ZALTag::backupOriginalImageAndSetCustomImage(const ZALImagePtr& image) {
    contentsFor("backupOriginalImageAndSetCustomImage:")
        .artwork()
        .backupOriginalImageAndSetCustomImage(image);
}
void ZALTag::restoreOriginalImage() {
    contentsFor("restoreOriginalImage").artwork().restoreOriginalImage();
}
