#pragma once

#include <zaltag/id3/ZALTagID3.h>

#include <memory>
#include <string>

namespace zal {
class FLACFile;
class XiphFields;
}  // namespace zal

/// The back-end of FLAC files ("flac"). The fields live in the file's Xiph comment, several values of one
/// field joined with a blank. ID3v2 and ID3v1 tags, which a FLAC file can carry as well, are read where the
/// comment has nothing and written beside it, as far as the file has them; none is added.
///
/// Genre and year are set in the comment only, and the year is read from it alone. The tempo is the field
/// "BPM", the key "INITIALKEY", the energy level "ENERGYLEVEL" (without it the tempo of the ID3v2 tag, as the
/// files have it); values below 1 and the empty text remove them. The comment is TagLib's comment field and
/// "COMMENT"; it is never null, and the only one of allComments().
///
/// The library's own records are the fields "KEY", "ENERGY", "BEATGRID", "CUEPOINTS" and "VELVETCASCADE";
/// Serato's "SERATO_MARKERS_V2" and "SERATO_BEATGRID", as base64 text, are in the comment alone; there is no
/// legacy one. hasSeratoMetadata() is true when some field has a name that does not begin with "SERATO", and
/// hasTraktorMetadata() likewise with "TRAKTOR", as the files have it.
///
/// Pictures are the file's picture blocks; those of the ID3v2 tag are not looked at.
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
    [[nodiscard]] static std::shared_ptr<ZALTagFLAC> tagAtPath(const ZALNullableString& path,
                                                               bool readOnly = false,
                                                               ZALError* error = nullptr);
    [[nodiscard]] static std::shared_ptr<ZALTagFLAC> initWithPath(const ZALNullableString& path,
                                                                  bool readOnly, ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    /// Fails as well, with a log line, when the comment or a picture has grown over the 16 MiB that a
    /// metadata block holds.
    [[nodiscard]] bool save(ZALError* error = nullptr) override;

    ZALArray<ZALTagComment> allComments() const override;

    /// The record in the field of this name, in any case; null without one.
    template <typename Record>
    std::optional<Record> zalTagPropertyOfClassXiphName(const std::string& xiphName) const {
        return Record::propertyWithJSONDict(storedXiphDictionary(xiphName));
    }
    /// Stores a record in that field. Null, and a record that has nothing to store, remove the field.
    void setZalTagPropertyXiphName(const ZALTagCustomProperty* record, const std::string& xiphName);

    const char* className() const override { return "ZALTagFLAC"; }

  private:
    ZALTagFLAC();

    std::optional<ZALJSONValue> storedXiphDictionary(const std::string& xiphName) const;
    bool openFLAC(const std::string& path, bool readOnly, zal::Failure& failure);
    void addPictures(zal::TagContents& contents);

    std::unique_ptr<zal::FLACFile> flacfile_;  // over the inherited stream, so it goes first
    zal::XiphFields* fields_ = nullptr;        // of the first comment; they belong to the contents
};
