#pragma once

#include <zaltag/id3/ZALTagID3.h>

#include <memory>

namespace zal {
class FormFile;
}

/// The back-end of AIFF and AIFF-C files ("aif", "aiff"), which carry an ID3v2 tag in a chunk: every field,
/// record and picture is that of ZALTagID3. There is no ID3v1 tag, and requiresSaving() is not cleared by a
/// save.
class ZALTAG_EXPORT ZALTagAIFF final : public ZALTagID3 {
  public:
    ~ZALTagAIFF() override;

    /// "aif", "aiff".
    static const ZALArray<std::string>& supportedFileTypes();
    static bool canInitWithPath(const ZALNullableString& path);
    /// Opens an AIFF file. Null for a null path, another extension, a path that is no regular
    /// file, and a file that does not begin as an AIFF or AIFF-C form or is over 4 GiB long. One without a
    /// tag opens with an empty one.
    [[nodiscard]] static std::shared_ptr<ZALTagAIFF> tagAtPath(const ZALNullableString& path,
                                                               bool readOnly = false,
                                                               ZALError* error = nullptr);
    [[nodiscard]] static std::shared_ptr<ZALTagAIFF> initWithPath(const ZALNullableString& path,
                                                                  bool readOnly, ZALError* error = nullptr);
    /// Throws ZALProgrammingError: the factory with one argument belongs to ZALTag alone.
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    /// As every tag's, and refused, with one log line, for a file whose chunks are damaged: one runs past the
    /// end, or they stop before the end of the form. Such a file can be read.
    [[nodiscard]] bool save(ZALError* error = nullptr) override;

    const char* className() const override { return "ZALTagAIFF"; }

  private:
    ZALTagAIFF();

    bool openAIFF(const std::string& path, bool readOnly, zal::Failure& failure);

    std::unique_ptr<zal::FormFile> aifffile_;  // over the inherited stream, so it goes first
};
