#include "containers/ZALFile.h"

namespace TagLib::RIFF::WAV {

ByteVector ZALFile::getChunk(const ByteVector& id) {
    for (unsigned int i = 0; i < chunkCount(); ++i) {
        if (chunkName(i) == id) return chunkData(i);
    }
    return {};
}

ByteVector ZALFile::infoChunk() {
    return getChunk("LIST");
}

void ZALFile::setInfoChunk(const ByteVector& data) {
    setChunkData("LIST", data);
}

ByteVector ZALFile::infoTagChunk() {
    for (unsigned int i = 0; i < chunkCount(); ++i) {
        if (chunkName(i) != "LIST") continue;
        const ByteVector data = chunkData(i);
        if (data.startsWith("INFO")) return data;
    }
    return {};
}

}  // namespace TagLib::RIFF::WAV
