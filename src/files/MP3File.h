#pragma once

#include "stores/ID3v1Store.h"
#include "stores/ID3v2Store.h"
#include "walks/FirstFrame.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zal {

/// The tags of an MP3 file: ID3v2 in front of the audio, ID3v1 behind it. Further ID3v2 tags, behind the
/// first or at the file's end, are read and stay as they are, as do tags of other kinds.
class MP3File {
  public:
    /// Null when the stream's file is no MP3, and when TagLib must not see its tags.
    static std::unique_ptr<MP3File> open(TagLibStream& stream);

    ID3v2Store& v2() { return *v2_; }
    const ID3v2Store& v2() const { return *v2_; }
    bool hasV2() const { return v2_->room() > 0 || !further_.empty(); }
    /// In the order of the file; the first one is v2()'s.
    std::vector<const TagLib::ID3v2::Tag*> v2Tags() const;
    const RawTag& rawV2() const { return v2_->raw(); }

    std::optional<ZALFirstFrame> firstFrame() const { return firstFrameOf(stream_); }

    /// Null when there is none.
    ID3v1Store* v1() const { return v1_.get(); }
    ID3v1Store& makeV1();

    /// Puts what changed into the stream; nothing when nothing did. `fill` is called when something did, and
    /// tells whether it set more. Gives the reason why the file cannot be saved, or an empty text.
    std::string write(bool stripsV1 = false, const std::function<bool()>& fill = nullptr);
    /// Takes the file as it is after that was committed.
    void accept();

  private:
    explicit MP3File(TagLibStream& stream) : stream_(stream) {}

    bool readTags();
    void stripV1();

    TagLibStream& stream_;
    std::uint64_t position_ = 0;  // of the first ID3v2 tag, or where it is to go
    std::unique_ptr<ID3v2Store> v2_;
    std::vector<std::unique_ptr<ID3v2Store>> further_;
    std::unique_ptr<ID3v1Store> v1_;
    bool isV1InFile_ = false;
    ID3v2Edit edit_;
    bool isV1Written_ = false;
    bool isV1Stripped_ = false;
};

}  // namespace zal
