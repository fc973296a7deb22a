#pragma once

#include "platform/FileReplacement.h"

#include <string>

namespace zal {

/// Takes UTF-8 markup in pieces and hands it on in an encoding of single bytes that ends at `last` (0x7F or
/// 0xFF); a character beyond it becomes a character reference, so that nothing is lost.
class LimitedWriter {
  public:
    LimitedWriter(const ChunkSink& sink, char32_t last) : sink_(sink), last_(last) {}
    bool write(ZALDataView bytes);
    /// False when a character was left unfinished or the sink gave up.
    bool finish() const { return done_ && missing_ == 0; }

  private:
    void append(std::uint8_t byte, std::string& out);

    const ChunkSink& sink_;
    const char32_t last_;
    char32_t character_ = 0;
    int missing_ = 0;  // bytes that the character still needs
    bool done_ = true;
};

}  // namespace zal
