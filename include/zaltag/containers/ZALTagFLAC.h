#pragma once

#include <zaltag/id3/ZALTagID3.h>

#include <memory>
#include <string>

namespace zal {
class FLACFile;
}

/// The back-end of FLAC files ("flac"). The fields live in the file's Xiph comment, several values of one
/// field joined with a blank. ID3v2 and ID3v1 tags, which a FLAC file can carry as well, are read where the
/// comment has nothing and written beside it, as far as the file has them; none is added.
///
/// Grouping and modified-by are those of the ID3v2 tag alone: without one they read as null, and setting them
/// does nothing. A save does not clear requiresSaving().
class ZALTAG_EXPORT ZALTagFLAC final : public ZALTagID3 {
  public:
    ~ZALTagFLAC() override;

    /// "flac".
    static const ZALArray<std::string>& supportedFileTypes();
    static bool canInitWithPath(const ZALNullableString& path);
    /// Opens a FLAC file. Null for a null path, another extension, a path that is no regular
    /// file, and a file that does not begin as a FLAC stream, with or without ID3v2 tags in front, or whose
    /// metadata blocks are cut off or more than any real file has.
    static std::shared_ptr<ZALTagFLAC> tagAtPath(const ZALNullableString& path, bool readOnly = false,
                                                 ZALError* error = nullptr);
    static std::shared_ptr<ZALTagFLAC> initWithPath(const ZALNullableString& path, bool readOnly,
                                                    ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    bool readOnly() const override;
    /// Fails as well, with a log line, when the comment or a picture has grown over the 16 MiB that a
    /// metadata block holds.
    bool save(ZALError* error = nullptr) override;

    ZALNullableString artist() const override;
    void setArtist(const ZALNullableString& artist) override;
    ZALNullableString album() const override;
    void setAlbum(const ZALNullableString& album) override;
    ZALNullableString title() const override;
    void setTitle(const ZALNullableString& title) override;
    /// Set in the Xiph comment only.
    ZALNullableString genre() const override;
    void setGenre(const ZALNullableString& genre) override;
    /// That of the Xiph comment only.
    std::int64_t year() const override;
    void setYear(std::int64_t year) override;
    /// The field "BPM"; values below 1 remove it.
    std::int64_t tempo() const override;
    void setTempo(std::int64_t tempo) override;
    /// The field "INITIALKEY"; null and the empty text remove it.
    ZALNullableString initialKey() const override;
    void setInitialKey(const ZALNullableString& key) override;
    /// The field "ENERGYLEVEL"; without it the tempo of the ID3v2 tag, as the files have it.
    std::int64_t energyLevel() const override;
    void setEnergyLevel(std::int64_t level) override;

    /// Never null, as in every file of the ID3 family.
    ZALNullableString comment() const override;
    /// Sets TagLib's comment field and "COMMENT".
    void setComment(const ZALNullableString& comment) override;
    /// The comment, as the primary one.
    ZALArray<ZALTagComment> allComments() const override;

    // The library's own records: the fields "KEY", "ENERGY", "BEATGRID", "CUEPOINTS" and "VELVETCASCADE".

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

    /// The record in the field of this name, in any case; null without one.
    template <typename Record>
    std::optional<Record> zalTagPropertyOfClassXiphName(const std::string& xiphName) const {
        return Record::propertyWithJSONDict(storedXiphDictionary(xiphName));
    }
    /// Stores a record in that field. Null, and a record that has nothing to store, remove the field.
    void setZalTagPropertyXiphName(const ZALTagCustomProperty* record, const std::string& xiphName);

    // Serato's records are fields too, as base64 text. There is no legacy one.

    /// Writes the field "SERATO_MARKERS_V2" alone.
    void setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) override;
    void setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) override;
    /// The field "SERATO_MARKERS_V2"; null when there is none or it cannot be read (one log line).
    std::optional<ZALTagSeratoMarker> seratoMarker() const override;
    /// The field "SERATO_BEATGRID"; null when there is none or it cannot be read (one log line).
    std::optional<ZALTagSeratoGrid> seratoGrid() const override;
    /// True when some field has a name that does not begin with "SERATO", as the files have it.
    bool hasSeratoMetadata() const override;
    /// True when some field has a name that does not begin with "TRAKTOR", as the files have it.
    bool hasTraktorMetadata() const override;

    // Pictures are the file's picture blocks; those of the ID3v2 tag are not looked at.

    bool hasImages() const override;
    bool replaceOriginalImage(const ZALImagePtr& image) override;
    bool replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom) override;

    const char* className() const override { return "ZALTagFLAC"; }

  protected:
    zal::Artwork artwork() const override;

  private:
    ZALTagFLAC();

    std::optional<ZALJSONValue> storedXiphDictionary(const std::string& xiphName) const;
    bool openFLAC(const std::string& path, bool readOnly, zal::Failure& failure);

    std::unique_ptr<zal::FLACFile> flacfile_;  // over the inherited stream, so it goes first
};
