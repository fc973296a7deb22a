#pragma once

#include <zaltag/base/ZALData.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// A chunk of a RIFF file: id, little-endian size, content, and a pad byte behind an odd content.
ZALData riffChunk(std::string_view id, const ZALData& content);
/// A RIFF chunk of the type WAVE around these chunks.
ZALData riffForm(std::initializer_list<ZALData> chunks);
/// The format chunk of one channel of 16 bits at 44.1 kHz.
ZALData wavFormat();
/// The audio chunk of 100 samples.
ZALData wavAudio();
/// A WAV file of these chunks behind format and audio.
ZALData wavFile(std::initializer_list<ZALData> chunks = {});
/// An INFO list of fields with an id and a text, each with a final NUL.
ZALData infoList(std::initializer_list<std::pair<std::string_view, std::string_view>> fields);

struct RiffChunk {
    std::string id;
    ZALData content;

    bool operator==(const RiffChunk&) const = default;
};

/// The chunks of a WAV file whose sizes are all right and reach to the end of the file; throws for any other.
std::vector<RiffChunk> chunksOf(ZALDataView file);
/// Their ids, each as its four letters, with a blank between.
std::string idsOf(ZALDataView file);
/// The content of the only chunk with this id; throws when there is none or another one.
ZALData contentOf(ZALDataView file, std::string_view id);
