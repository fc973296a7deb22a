#pragma once

#include "containers/WavParserBase.h"

#include <zaltag/base/ZALData.h>

namespace zal {

/// Knows the WAVE form, its lists, and the chunk of the processing record, whose payload it keeps; calls a
/// hook for every chunk of the form. The hooks here do nothing.
class WavMetadataParser : public WavParserBase {
  public:
    /// The payload of the last VCAS chunk, pad byte and all; empty when there is none.
    const ZALData& VCASPayload() const { return payload_; }

  protected:
    void ParseRIFF() override;

    void OnRIFF(std::uint32_t formType) override;
    void OnRIFFEnd() override;
    void OnLIST(std::uint32_t listType) override;
    void OnVCAS() override;
    void OnOther() override;

  private:
    void ParseChunk(std::uint32_t id);
    void ParseLIST();
    void ParseVCAS();

    ZALData payload_;
};

}  // namespace zal
