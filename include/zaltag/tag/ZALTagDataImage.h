#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <string>
#include <utility>

/// Encoded picture bytes and the mark in them: the EXIF lens make, which tells the picture that a file came
/// with from one that a host put in its place. A value type; any thread; nothing is logged.
///
/// PNG, JPEG and WebP carry a mark. It is written into the bytes in place: pixels and every other byte stay
/// as they are. Setting it on another format, or on a picture that is damaged, changes nothing.
class ZALTAG_EXPORT ZALTagDataImage {
  public:
    /// The lens make of a backed-up original: "__zal_original_album_artwork__".
    static const std::string& originalLensMakeString();
    /// The lens make of a host's picture: "__zal_customized_album_artwork__".
    static const std::string& customizedLensMakeString();

    static ZALTagDataImage dataImageWithImageData(ZALData imageData) {
        return ZALTagDataImage(std::move(imageData));
    }
    static ZALTagDataImage initWithImageData(ZALData imageData) {
        return ZALTagDataImage(std::move(imageData));
    }
    explicit ZALTagDataImage(ZALData imageData) : imageData_(std::move(imageData)) {}

    /// The encoded picture.
    const ZALData& imageData() const { return imageData_; }
    void setImageData(ZALData imageData) { imageData_ = std::move(imageData); }

    /// The lens make; null when the bytes are no picture that carries one. The pixels are not decoded.
    ZALNullableString lensMake() const;
    /// Sets the lens make, or removes it for null. The picture is decoded first; one that cannot be read as a
    /// whole stays as it is.
    void setLensMake(const ZALNullableString& lensMake);

    /// Whether lensMake() is originalLensMakeString().
    bool isOriginalImage() const;
    /// When that differs from the flag, sets the lens make to originalLensMakeString(), or removes it.
    void setIsOriginalImage(bool flag);
    /// Whether lensMake() is customizedLensMakeString().
    bool isCustomImage() const;
    /// When that differs from the flag, sets the lens make to customizedLensMakeString(), or removes it.
    void setIsCustomImage(bool flag);

  private:
    ZALData imageData_;
};
