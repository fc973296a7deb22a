#pragma once

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
/// The tempo is the item "tmpo"; 0 is written, and values outside of 16 bits are written as the nearest ones.
/// A null key removes its item, the empty text is stored; of the grouping both remove it. The comment is the
/// only one of allComments().
///
/// The library's own records are the items "----:com.quorvantis.quorvantis:key", "...:energy",
/// "...:beatgrid",
/// "...:cuepoints" and "----:com.quorvantis.velvetcascade:data"; Serato's are freeform items of
/// "com.serato.dj"
/// ("markersv2", "markers", "beatgrid"), as base64 text. hasSeratoMetadata() is true when the name of any
/// item contains "serato".
///
/// Pictures are the covers of the item "covr". Where there is none, hasImages(), allImages(), allImageData()
/// and setAllImages() add an empty item, which is not written. Every cover that is written is called a PNG.
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
    [[nodiscard]] static std::shared_ptr<ZALTagMP4> tagAtPath(const ZALNullableString& path,
                                                              bool readOnly = false,
                                                              ZALError* error = nullptr);
    [[nodiscard]] static std::shared_ptr<ZALTagMP4> initWithPath(const ZALNullableString& path, bool readOnly,
                                                                 ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    bool readOnly() const override;
    /// Fails as well, with a log line, for a file that can be read but whose audio a save could lose: one
    /// whose atoms do not lie within one another, or that holds the places of its audio where they cannot be
    /// kept.
    [[nodiscard]] bool save(ZALError* error = nullptr) override;
    bool hasID3v1Tag() const override { return false; }
    bool hasID3v2Tag() const override { return false; }

    /// The record in the item of this name (bytes, read as Latin-1); null without one.
    template <typename Record>
    std::optional<Record> zalTagPropertyOfClassAtomName(const std::string& atomName) const {
        return Record::propertyWithJSONDict(storedDictionary(atomName));
    }
    /// Stores a record in that item. Null, and a record that has nothing to store, remove the item.
    void setZalTagPropertyAtomName(const ZALTagCustomProperty* record, const std::string& atomName);

    /// True when "NITR" is found in the file from byte 10,000 on. A "free" from there on ends the search
    /// with the block of 1,024 bytes that it stands in. Reads the file.
    bool hasTraktorMetadata() const override;

    bool supportsImages() const override { return true; }

    const char* className() const override { return "ZALTagMP4"; }

  private:
    struct State;

    ZALTagMP4();

    std::optional<ZALJSONValue> storedDictionary(const std::string& atomName) const;
    bool openMP4(const std::string& path, bool readOnly, zal::Failure& failure);
    void addPictures(zal::TagContents& contents);

    std::unique_ptr<State> state_;
};
