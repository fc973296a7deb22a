#pragma once

#include <zaltag/id3/ZALTagID3.h>

#include <memory>
#include <optional>
#include <string>

namespace zal {
class FormFile;
}

/// The back-end of WAV files ("wav"). They carry an ID3v2 tag in a chunk, in which every field and record
/// lives as in an MP3 file; an INFO list, a second store for the six basic fields; and a chunk "VCAS" with
/// the processing record. There is no ID3v1 tag, and requiresSaving() is not cleared by a save.
///
/// title, artist, album, genre and comment are those of the ID3v2 tag, or of the INFO list where that has
/// none or an empty one; year likewise where it is 0. Setting one sets both.
class ZALTAG_EXPORT ZALTagWAV final : public ZALTagID3 {
  public:
    ~ZALTagWAV() override;

    /// "wav".
    static const ZALArray<std::string>& supportedFileTypes();
    static bool canInitWithPath(const ZALNullableString& path);
    /// Opens a WAV file. Null for a null path, another extension, a path that is no regular
    /// file, and a file that does not begin with RIFF and WAVE or is over 4 GiB long. One without an ID3v2
    /// tag opens with an empty one.
    [[nodiscard]] static std::shared_ptr<ZALTagWAV> tagAtPath(const ZALNullableString& path,
                                                              bool readOnly = false,
                                                              ZALError* error = nullptr);
    [[nodiscard]] static std::shared_ptr<ZALTagWAV> initWithPath(const ZALNullableString& path, bool readOnly,
                                                                 ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    /// Adds infoTitle, infoArtist, infoAlbum, infoGenre, infoComment and infoYear.
    ZALArray<std::string> propertyKeys() const override;
    ZALJSONValue valueForKey(const std::string& key) const override;
    void setValue(const ZALJSONValue& value, const std::string& key) override;

    /// Writes the tags, and then, unless it is null, the processing record by a second rewrite of the file.
    /// The result is that of the tags: a record that could not be written is one log line, and the next save
    /// tries again. It is written also when the tags could not be, as with an object opened read-only, but
    /// not where another program changed the file or where the rewrite would lose a chunk.
    ///
    /// Refused, with one log line and nothing written, for a file whose chunks are damaged: one runs past the
    /// end, or they stop before the end of the form. Such a file can be read.
    ///
    /// v2Tag() is another object after a save that wrote the record; its frames are the same.
    [[nodiscard]] bool save(ZALError* error = nullptr) override;

    // The INFO list alone. Text that is not UTF-8 reads as Latin-1 and becomes UTF-8 with the next save. Null
    // and the empty text remove a field, the year 0 too.

    ZALNullableString infoTitle() const;
    void setInfoTitle(const ZALNullableString& title);
    ZALNullableString infoArtist() const;
    void setInfoArtist(const ZALNullableString& artist);
    ZALNullableString infoAlbum() const;
    void setInfoAlbum(const ZALNullableString& album);
    ZALNullableString infoGenre() const;
    void setInfoGenre(const ZALNullableString& genre);
    ZALNullableString infoComment() const;
    void setInfoComment(const ZALNullableString& comment);
    /// 0 when there is none.
    unsigned int infoYear() const;
    void setInfoYear(unsigned int year);

    /// The record of the chunk "VCAS" at opening, or what was set since; a frame in the ID3v2 tag is not
    /// looked at. Null in a file that has a record means that save() leaves it as it is.
    std::optional<ZALTagVelvetCascade> zalVelvetCascade() const override { return pnTag_; }
    void setZalVelvetCascade(const std::optional<ZALTagVelvetCascade>& record) override { pnTag_ = record; }

    /// The record in the last chunk "VCAS" of a file; null without one, and for one that cannot be read (one
    /// log line when it holds something else).
    static std::optional<ZALTagVelvetCascade> readPNTag(const std::string& path);
    /// Writes the record into a file, in one chunk "VCAS" at the end of its form, by way of a new file named
    /// as the path with "_" behind it; whatever stands there is removed. A null record does nothing. Null is
    /// success, and also a copy that could not be made: one log line, the file is as it was. An error, logged
    /// too, tells that the new file could not take the old one's place or could not be removed.
    ///
    /// A damaged chunk ends the copy: it and all behind it are left out. save() looks for that first.
    static std::optional<ZALError> writePNTag(const std::optional<ZALTagVelvetCascade>& record,
                                              const std::string& path);

    /// False: the library keeps no pictures in WAV files. allImageData() and replacePrimaryImage() work on
    /// those of the ID3v2 tag nevertheless; the other operations see none and change nothing.
    bool supportsImages() const override { return false; }

    const char* className() const override { return "ZALTagWAV"; }

  private:
    ZALTagWAV();

    bool openWAV(const std::string& path, bool readOnly, zal::Failure& failure);
    void addInfo(zal::TagContents& contents);
    zal::Failure saveRecord(bool& isLogged);
    bool isInFile(const ZALTagVelvetCascade& record) const;
    void reopen();

    std::unique_ptr<zal::FormFile> wavfile_;  // over the inherited stream, so it goes first
    std::unique_ptr<zal::TagContents> info_;  // the INFO list alone
    std::optional<ZALTagVelvetCascade> pnTag_;
    std::optional<ZALTagVelvetCascade> recordInFile_;
    bool openedReadOnly_ = false;
    bool isOutdated_ = false;  // the file was replaced by writing the record, and could not be opened again
};
