#include "containers/WavMetadataParser.h"

#include <limits>

namespace zal {

void WavMetadataParser::ParseRIFF() {
    std::uint32_t formType = 0;
    if (remaining_ < 4 || !ReadID(formType) || formType != fourCC("WAVE")) return;
    OnRIFF(formType);
    std::int64_t size = 0;
    std::uint32_t id = 0;
    while (ReadChunkHeader(size, id)) {
        EnterChunk(size, [this, id] { ParseChunk(id); });
    }
    OnRIFFEnd();
}

void WavMetadataParser::ParseChunk(std::uint32_t id) {
    if (id == fourCC("LIST")) return ParseLIST();
    if (id == fourCC("VCAS")) return ParseVCAS();
    OnOther();
}

void WavMetadataParser::ParseLIST() {
    std::uint32_t listType = 0;
    if (remaining_ < 4 || !ReadID(listType)) return;  // without a type it is no list
    OnLIST(listType);
    std::int64_t size = 0;
    std::uint32_t id = 0;
    while (ReadChunkHeader(size, id)) {
        EnterChunk(size, [] {});
    }
}

void WavMetadataParser::ParseVCAS() {
    if (remaining_ < 4) return;  // holds no record
    OnVCAS();
    payload_.clear();
    if (remaining_ > std::numeric_limits<std::int32_t>::max()) return;  // more than one read takes
    payload_.resize(static_cast<std::size_t>(remaining_));
    Read(payload_.data(), static_cast<std::int32_t>(remaining_));
}

void WavMetadataParser::OnRIFF(std::uint32_t /*formType*/) {}
void WavMetadataParser::OnRIFFEnd() {}
void WavMetadataParser::OnLIST(std::uint32_t /*listType*/) {}
void WavMetadataParser::OnVCAS() {}
void WavMetadataParser::OnOther() {}

}  // namespace zal
