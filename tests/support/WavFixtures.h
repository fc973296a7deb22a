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

/// The ids of the chunks of a WAV or AIFF file, each as its four letters, with a blank between. Throws unless
/// all sizes are right and reach to the end of the file.
std::string idsOf(ZALDataView file);
/// The content of the only chunk with this id; throws when there is none or another one.
ZALData contentOf(ZALDataView file, std::string_view id);
