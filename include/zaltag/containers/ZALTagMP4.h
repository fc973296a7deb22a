#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/tag/ZALTag.h>

#include <memory>
#include <string>

namespace zal {
class Failure;
}

/// The back-end of MPEG-4 audio files ("m4a", "mp4"). Every field is an item of the file's list: the standard
/// fields iTunes' own items, the others freeform items ("----:...") of texts. An item of several texts reads
/// as these texts with a blank between two (", " in the standard fields), and setting it leaves one.
///
/// There is no modified-by: it reads as null, and setting it does nothing. deleteExtraneousComments() and
/// deleteID3v1Comment() are not implemented. requiresSaving() is always false.
class ZALTAG_EXPORT ZALTagMP4 final : public ZALTag {
  public:
    ~ZALTagMP4() override;

    /// "m4a", "mp4".
    static const ZALArray<std::string>& supportedFileTypes();
    static bool canInitWithPath(const ZALNullableString& path);
    /// Opens an MPEG-4 file. Null for a null path, another extension, a path that is no
    /// regular file, a file without a "moov" atom, one whose atoms do not add up, and one that nests or
    /// counts more of them than any real file. One without tags opens with an empty list.
    static std::shared_ptr<ZALTagMP4> tagAtPath(const ZALNullableString& path, bool readOnly = false,
                                                ZALError* error = nullptr);
    static std::shared_ptr<ZALTagMP4> initWithPath(const ZALNullableString& path, bool readOnly,
                                                   ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    bool readOnly() const override;
    /// Fails as well, with a log line, for a file that can be read but whose audio a save could lose: one
    /// whose atoms do not lie within one another, or that holds the places of its audio where they cannot be
    /// kept.
    bool save(ZALError* error = nullptr) override;
    bool hasID3v1Tag() const override { return false; }
    bool hasID3v2Tag() const override { return false; }

    ZALNullableString artist() const override;
    void setArtist(const ZALNullableString& artist) override;
    ZALNullableString album() const override;
    void setAlbum(const ZALNullableString& album) override;
    std::int64_t year() const override;
    void setYear(std::int64_t year) override;
    ZALNullableString title() const override;
    void setTitle(const ZALNullableString& title) override;
    ZALNullableString genre() const override;
    void setGenre(const ZALNullableString& genre) override;
    ZALNullableString comment() const override;
    void setComment(const ZALNullableString& comment) override;
    /// The item "tmpo"; 0 is written, and values outside of 16 bits with a sign are written as the nearest
    /// ones.
    std::int64_t tempo() const override;
    void setTempo(std::int64_t tempo) override;
    /// Null removes the item, the empty text is stored.
    ZALNullableString initialKey() const override;
    void setInitialKey(const ZALNullableString& key) override;
    std::int64_t energyLevel() const override;
    void setEnergyLevel(std::int64_t level) override;
    ZALNullableString modifiedBy() const override { return std::nullopt; }
    void setModifiedBy(const ZALNullableString&) override {}
    /// Null and the empty text remove the item.
    ZALNullableString grouping() const override;
    void setGrouping(const ZALNullableString& grouping) override;

    /// The comment, as the primary one; empty without one.
    ZALArray<ZALTagComment> allComments() const override;

    // The library's own records: freeform items "----:com.quorvantis.quorvantis:key", "...:energy",
    // "...:beatgrid", "...:cuepoints" and "----:com.quorvantis.velvetcascade:data".

    std::optional<ZALTagKey> zalKey() const override;
    void setZalKey(const std::optional<ZALTagKey>& key) override;
    std::optional<ZALTagEnergy> zalEnergy() const override;
    void setZalEnergy(const std::optional<ZALTagEnergy>& energy) override;
    std::optional<ZALTagBeatGrid> zalBeatGrid() const override;
    void setZalBeatGrid(const std::optional<ZALTagBeatGrid>& beatGrid) override;
    std::optional<ZALTagCuePoints> zalCuePoints() const override;
    void setZalCuePoints(const std::optional<ZALTagCuePoints>& cuePoints) override;
    std::optional<ZALTagVelvetCascade> zalVelvetCascade() const override;
    void setZalVelvetCascade(const std::optional<ZALTagVelvetCascade>& record) override;

    /// The record in the item of this name (bytes, read as Latin-1); null without one.
    template <typename Record>
    std::optional<Record> zalTagPropertyOfClassAtomName(const std::string& atomName) const {
        return Record::propertyWithJSONDict(storedDictionary(atomName));
    }
    /// Stores a record in that item. Null, and a record that has nothing to store, remove the item.
    void setZalTagPropertyAtomName(const ZALTagCustomProperty* record, const std::string& atomName);

    // Other programs. Serato's records are freeform items of "com.serato.dj", as base64 text; the legacy one
    // is written but never read for cue points.

    ZALArray<ZALTagCuePoint> seratoCuePoints() const override;
    void setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) override;
    /// The same without moving cue points to the grid.
    void setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);
    void setSeratoCuePointsOld(const ZALArray<ZALTagCuePoint>& cuePoints);
    void setSeratoCuePointsNew(const ZALArray<ZALTagCuePoint>& cuePoints);
    /// The item "markersv2"; null when there is none or it cannot be read (one log line).
    std::optional<ZALTagSeratoMarker> seratoMarker() const;
    /// The item "markers", read and written again in the raw form of MP4; null when that is not possible.
    ZALNullableData oldSeratoMarkerData() const;
    /// The item "beatgrid"; null when there is none or it cannot be read (one log line).
    std::optional<ZALTagSeratoGrid> seratoGrid() const;
    /// True when the name of any item contains "serato".
    bool hasSeratoMetadata() const override;
    /// True when "NITR" is found in the file from byte 10,000 on. A "free" from there on ends the search
    /// with the block of 1,024 bytes that it stands in. Reads the file.
    bool hasTraktorMetadata() const override;

    // Pictures are the covers of the item "covr". Where there is none, hasImages(), allImages(),
    // allImageData(), setAllImages() and restoreOriginalImage() add an empty item, which the next save
    // writes; an operation that fails adds none. Every cover that is written is called a PNG.

    bool supportsImages() const override { return true; }
    bool hasImages() const override;
    bool hasOriginalImage() const override;
    bool hasCustomizedImage() const override;
    ZALImagePtr originalImage() const override;
    ZALImagePtr customizedImage() const override;
    ZALArray<ZALTagImageDictionary> allImages() const override;
    void setAllImages(const ZALArray<ZALTagImageDictionary>& images) override;
    ZALArray<ZALData> allImageData() const override;
    ZALArray<ZALTagStoredImage> allStoredImages() const override;
    bool replaceOriginalImage(const ZALImagePtr& image) override;
    bool replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) override;
    void backupOriginalImageAndSetCustomImage(const ZALImagePtr& image) override;
    void restoreOriginalImage() override;

    const char* className() const override { return "ZALTagMP4"; }

  private:
    struct State;

    ZALTagMP4();

    std::optional<ZALJSONValue> storedDictionary(const std::string& atomName) const;
    bool openMP4(const std::string& path, bool readOnly, zal::Failure& failure);

    std::unique_ptr<State> state_;
};
