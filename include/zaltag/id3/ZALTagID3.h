#pragma once

#include <zaltag/tag/ZALTag.h>

#include <memory>
#include <string>

namespace TagLib::ID3v2 {
class PrivateFrame;
class Tag;
}  // namespace TagLib::ID3v2

/// The back-end of MP3 files ("mp3"), and the base of the back-ends whose files carry an ID3v2 tag.
///
/// Fields live in ID3v2 frames; artist, album, title, genre, year and comment are written to the ID3v1 tag as
/// well, when the file has one that is not empty, and read from it where the ID3v2 tag has nothing. Numeric
/// genres are turned into names when the file is opened. The tempo is the TBPM frame (0 is written as "0")
/// and the key the TKEY frame (null is written as the empty text); neither is ever removed. The energy level
/// is the user text frame "EnergyLevel", modified-by the TPE4 frame.
///
/// The library's own records are GEOB frames described "Key", "Energy", "BeatGrid", "CuePoints" and
/// "VelvetCascade"; Serato's are the objects "Serato Markers2", "Serato Markers_" (the legacy one) and
/// "Serato BeatGrid".
///
/// Pictures are APIC frames. A picture that is made anew (all of them, when pictures are backed up, restored
/// or set) has type 0 and no description; one that is replaced keeps its MIME type, type and description.
/// After a backup the customised picture comes first, then the original, then the others; after a restore the
/// original comes first. An APIC frame that TagLib does not hold as a picture is logged and stays, unless all
/// pictures go.
class ZALTAG_EXPORT ZALTagID3 : public ZALTag {
  public:
    ~ZALTagID3() override;

    /// "mp3".
    static const ZALArray<std::string>& supportedFileTypes();
    static bool canInitWithPath(const ZALNullableString& path);
    /// Opens an MP3 file. Null for a null path, another extension, a path that is no regular
    /// file, and a file that holds neither a tag nor an MPEG frame, or a tag of
    /// more than 10,000 frames.
    [[nodiscard]] static std::shared_ptr<ZALTagID3> tagAtPath(const ZALNullableString& path,
                                                              bool readOnly = false,
                                                              ZALError* error = nullptr);
    [[nodiscard]] static std::shared_ptr<ZALTagID3> initWithPath(const ZALNullableString& path, bool readOnly,
                                                                 ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    ZALArray<std::string> propertyKeys() const override;
    ZALJSONValue valueForKey(const std::string& key) const override;
    void setValue(const ZALJSONValue& value, const std::string& key) override;

    bool readOnly() const override;
    [[nodiscard]] bool save(ZALError* error = nullptr) override;
    bool requiresSaving() const override;
    /// True when the file had an ID3v1 tag that was not empty when it was opened; stripping it does not
    /// change this.
    bool hasID3v1Tag() const override;
    bool hasID3v2Tag() const override;

    // The grouping is GRP1Grouping(), or TIT1Grouping() when that is null; set, both frames carry it.

    ZALNullableString TIT1Grouping() const;
    void setTIT1Grouping(const ZALNullableString& grouping);
    /// The GRP1 frame, written in Latin-1 when the text is ASCII and in UTF-16 otherwise; null and the empty
    /// text remove it.
    ZALNullableString GRP1Grouping() const;
    void setGRP1Grouping(const ZALNullableString& grouping);

    std::optional<ZALFirstFrame> firstFrame() const override;

    bool supportsSeveralComments() const override { return true; }
    /// The primary comment: the last COMM frame with an empty description and an ordinary language; else the
    /// comment of the ID3v1 tag; else the empty text (never null).
    ZALNullableString comment() const override;
    /// The COMM frames that hold a text, in tag order, without those of other programs ("iTun" in the
    /// description), and the ID3v1 comment unless it equals one of them. Logs a line for every frame without
    /// text.
    ZALArray<ZALTagComment> allComments() const override;
    /// Removes every COMM frame but the primary one and those of other programs.
    void deleteExtraneousComments() override;
    void deleteID3v1Comment() override;

    /// The record in the first GEOB frame with this very description; null without one.
    template <typename Record>
    std::optional<Record> zalTagPropertyOfClassDescription(const std::string& description) const {
        return Record::propertyWithJSONDict(storedDictionary(description));
    }
    /// Stores a record in that frame, of which only the object changes, or in a new one at the end of the
    /// tag. Null, and a record that has nothing to store, remove the frame.
    void setZalTagPropertyDescription(const ZALTagCustomProperty* record, const std::string& description);

    /// Removes Traktor's private frames from the tag, then does what every tag does.
    void setTraktorCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) override;
    /// The first PRIV frame of Traktor, owned by the tag; null when there is none.
    TagLib::ID3v2::PrivateFrame* findTraktorPrivateFrame() const;

    bool supportsImages() const override { return true; }

    /// The ID3v2 tag; owned by this object and valid as long as it lives (ZALTagWAV: until the next save).
    TagLib::ID3v2::Tag* v2Tag() const;

    const char* className() const override { return "ZALTagID3"; }

  protected:
    struct State;

    ZALTagID3();

    State& state() { return *state_; }
    const State& state() const { return *state_; }

  private:
    std::optional<ZALJSONValue> storedDictionary(const std::string& description) const;
    bool openMP3(const std::string& path, bool readOnly, zal::Failure& failure);

    std::unique_ptr<State> state_;
};
