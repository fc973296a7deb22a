#pragma once

#include "containers/WavMetadataParser.h"

namespace zal {

/// Copies a WAV file chunk by chunk into a new one, without its VCAS chunks, and puts a new VCAS chunk at the
/// end of the form. What the walk does not reach is left out: damaged chunks, and what lies behind the form.
///
/// Serves one file once: OpenFile(), OpenOutput(), SetPayload(), ParseFile(); then done() and not failed()
/// say that the new file is complete.
class WavVelvetCascadeTagInserter final : public WavMetadataParser {
  public:
    /// Makes the new file, after taking away whatever file or link has its name, and gives it the attributes
    /// of the opened one. False, with error() set, when that is not possible.
    bool OpenOutput(const std::string& path);
    void SetPayload(ZALData payload) { newPayload_ = std::move(payload); }

    bool done() const { return done_; }
    bool failed() const { return failed_; }
    /// Returns when the new file is on the disk; false, with error() set, when it may not be.
    bool SyncOutput();

    /// The file that is copied and the new one; null unless they are open.
    ZALFileHandle* input() const { return input_.get(); }
    ZALFileHandle* output() const { return output_.get(); }

  private:
    void OnRIFF(std::uint32_t formType) override;
    void OnRIFFEnd() override;
    void OnLIST(std::uint32_t listType) override;
    void OnVCAS() override;
    void OnOther() override;

    bool IsGood() const { return output_ != nullptr && !error_; }
    bool Note(const std::error_code& error);
    void Write(ZALDataView bytes);
    void CopyChunk(ZALDataView start);
    void Transfer(std::int64_t count);

    std::unique_ptr<ZALFileHandle> output_;
    std::uint64_t written_ = 0;
    ZALData newPayload_;
    bool failed_ = false;
    bool done_ = false;
};

}  // namespace zal
