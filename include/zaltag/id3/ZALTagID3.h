#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/tag/ZALTag.h>

#include <memory>
#include <string>

namespace TagLib::ID3v2 {
class PrivateFrame;
class Tag;
}  // namespace TagLib::ID3v2
namespace zal {
class Artwork;
}

/// The back-end of MP3 files ("mp3"), and the base of the back-ends whose files carry an ID3v2 tag.
///
/// Fields live in ID3v2 frames; artist, album, title, genre, year and comment are written to the ID3v1 tag as
/// well, when the file has one that is not empty, and read from it where the ID3v2 tag has nothing. Numeric
/// genres are turned into names when the file is opened.
class ZALTAG_EXPORT ZALTagID3 : public ZALTag {
  public:
    ~ZALTagID3() override;

    /// "mp3".
    static const ZALArray<std::string>& supportedFileTypes();
    static bool canInitWithPath(const ZALNullableString& path);
    /// Opens an MP3 file. Null for a null path, another extension, a path that is no regular
    /// file, and a file that holds neither a tag nor an MPEG frame, or a tag of
    /// more than 10,000 frames.
    static std::shared_ptr<ZALTagID3> tagAtPath(const ZALNullableString& path, bool readOnly = false,
                                                ZALError* error = nullptr);
    static std::shared_ptr<ZALTagID3> initWithPath(const ZALNullableString& path, bool readOnly,
                                                   ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    ZALArray<std::string> propertyKeys() const override;
    ZALJSONValue valueForKey(const std::string& key) const override;
    void setValue(const ZALJSONValue& value, const std::string& key) override;

    bool readOnly() const override;
    bool save(ZALError* error = nullptr) override;
    bool requiresSaving() const override;
    /// True when the file had an ID3v1 tag that was not empty when it was opened; stripping it does not
    /// change this.
    bool hasID3v1Tag() const override;
    bool hasID3v2Tag() const override;

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
    /// The TBPM frame; 0 is written as "0" and the frame is never removed.
    std::int64_t tempo() const override;
    void setTempo(std::int64_t tempo) override;
    /// The TKEY frame; null is written as the empty text, and the frame is never removed.
    ZALNullableString initialKey() const override;
    void setInitialKey(const ZALNullableString& key) override;
    /// The user text frame "EnergyLevel".
    std::int64_t energyLevel() const override;
    void setEnergyLevel(std::int64_t level) override;
    /// The TPE4 frame; null and the empty text remove it.
    ZALNullableString modifiedBy() const override;
    void setModifiedBy(const ZALNullableString& name) override;
    /// GRP1Grouping(), or TIT1Grouping() when that is null; set, both frames carry it.
    ZALNullableString grouping() const override;
    void setGrouping(const ZALNullableString& grouping) override;
    ZALNullableString TIT1Grouping() const;
    void setTIT1Grouping(const ZALNullableString& grouping);
    /// The GRP1 frame, written in Latin-1 when the text is ASCII and in UTF-16 otherwise; null and the empty
    /// text remove it.
    ZALNullableString GRP1Grouping() const;
    void setGRP1Grouping(const ZALNullableString& grouping);

    /// The primary comment: the last COMM frame with an empty description and an ordinary language; else the
    /// comment of the ID3v1 tag; else the empty text (never null).
    ZALNullableString comment() const override;
    /// Sets the primary comment, in front of all other comments, and the comment of the ID3v1 tag.
    void setComment(const ZALNullableString& comment) override;
    /// The COMM frames that hold a text, in tag order, without those of other programs ("iTun" in the
    /// description), and the ID3v1 comment unless it equals one of them. Logs a line for every frame without
    /// text.
    ZALArray<ZALTagComment> allComments() const override;
    /// Removes every COMM frame but the primary one and those of other programs.
    void deleteExtraneousComments() override;
    void deleteID3v1Comment() override;

    // The library's own records: GEOB frames described "Key", "Energy", "BeatGrid", "CuePoints" and
    // "VelvetCascade".

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

    /// The record in the first GEOB frame with this very description; null without one.
    template <typename Record>
    std::optional<Record> zalTagPropertyOfClassDescription(const std::string& description) const {
        return Record::propertyWithJSONDict(storedDictionary(description));
    }
    /// Stores a record in that frame, of which only the object changes, or in a new one at the end of the
    /// tag. Null, and a record that has nothing to store, remove the frame.
    void setZalTagPropertyDescription(const ZALTagCustomProperty* record, const std::string& description);

    // Other programs. Serato's objects are GEOB frames too; its legacy record is written but never read.

    ZALArray<ZALTagCuePoint> seratoCuePoints() const override;
    void setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) override;
    /// The same without moving cue points to the grid.
    virtual void setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);
    void setSeratoCuePointsOld(const ZALArray<ZALTagCuePoint>& cuePoints);
    void setSeratoCuePointsNew(const ZALArray<ZALTagCuePoint>& cuePoints);
    /// The object "Serato Markers2"; null when there is none or it cannot be read (one log line).
    virtual std::optional<ZALTagSeratoMarker> seratoMarker() const;
    /// The object "Serato Markers_", read and written again; null when that is not possible: with a log line
    /// when it cannot be read, without one when it holds colours that do not fit.
    virtual ZALNullableData oldSeratoMarkerData() const;
    /// The object "Serato BeatGrid"; null when there is none or it cannot be read (one log line).
    virtual std::optional<ZALTagSeratoGrid> seratoGrid() const;
    bool hasSeratoMetadata() const override;
    bool hasTraktorMetadata() const override;
    /// Removes Traktor's private frames from the tag, then does what every tag does.
    void setTraktorCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) override;
    /// The first PRIV frame of Traktor, owned by the tag; null when there is none.
    TagLib::ID3v2::PrivateFrame* findTraktorPrivateFrame() const;

    // Pictures: APIC frames. A picture that is made anew (all of them, when pictures are backed up, restored
    // or set) has type 0 and no description; one that is replaced keeps its MIME type, type and description.
    // After a backup the customised picture comes first, then the original, then the others; after a restore
    // the original comes first. An APIC frame that TagLib does not hold as a picture is logged and stays,
    // unless all pictures go.

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

    /// The ID3v2 tag; owned by this object and valid as long as it lives (ZALTagWAV: until the next save).
    TagLib::ID3v2::Tag* v2Tag() const;

    const char* className() const override { return "ZALTagID3"; }

  protected:
    struct State;

    ZALTagID3();

    /// The pictures of the file, and the rules for them.
    virtual zal::Artwork artwork() const;

    State& state() { return *state_; }
    const State& state() const { return *state_; }

  private:
    std::optional<ZALJSONValue> storedDictionary(const std::string& description) const;
    bool openMP3(const std::string& path, bool readOnly, zal::Failure& failure);
    bool fillID3v2();
    void setPrimaryComment(const std::string& text);
    ZALNullableString textOfFrame(const char* id) const;

    std::unique_ptr<State> state_;
};
