#pragma once

#include <wavfile.h>

namespace TagLib::RIFF::WAV {

/// TagLib's WAV file with its chunks within reach.
class ZALFile : public File {
  public:
    using File::File;

    /// The data of the first chunk with this id; TagLib's empty vector when there is none.
    ByteVector getChunk(const ByteVector& id);
    /// The first LIST chunk, whatever its list type.
    ByteVector infoChunk();
    /// Replaces that chunk, or adds one, in the stream at once.
    void setInfoChunk(const ByteVector& data);
    /// The LIST chunk that TagLib's INFO tag was read from: the first of the type INFO.
    ByteVector infoTagChunk();
};

}  // namespace TagLib::RIFF::WAV
