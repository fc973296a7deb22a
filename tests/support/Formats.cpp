#include "support/Formats.h"

#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/WavFixtures.h"

#include <zaltag/tools/ZALCopyTag.h>

#include <algorithm>

namespace {

ZALData seratoFrames(const ZALData& markers, const ZALData& grid) {
    return id3Tag({id3Object("Serato Markers2", "a/b", markers), id3Object("Serato BeatGrid", "a/b", grid)});
}

}  // namespace

const std::vector<Format>& formats() {
    static const std::vector<Format> all{
        {"MP3", "mp3", "ZALTagID3", [] { return mpegFrames(); }, mp3Audio,
         [](const ZALData& markers, const ZALData& grid) {
             return joined({seratoFrames(markers, grid), mpegFrames()});
         }},
        {"MP4",
         "m4a",
         "ZALTagMP4",
         [] { return mp4File(); },
         mp4Audio,
         [](const ZALData& markers, const ZALData& grid) {
             return mp4File({mp4Tag({mp4Freeform("com.serato.dj", "markersv2", {seratoText(markers)}),
                                     mp4Freeform("com.serato.dj", "beatgrid", {seratoText(grid)})})});
         },
         {"modifiedBy"},
         {}},
        {"WAV", "wav", "ZALTagWAV", [] { return wavFile(); },
         [](const std::string& path) { return contentOf(contentsOf(path), "data"); },
         [](const ZALData& markers, const ZALData& grid) {
             return wavFile({riffChunk("ID3 ", seratoFrames(markers, grid))});
         }},
        {"AIFF", "aiff", "ZALTagAIFF", [] { return aiffFile(); },
         [](const std::string& path) { return contentOf(contentsOf(path), "SSND"); },
         [](const ZALData& markers, const ZALData& grid) {
             return aiffFile({iffChunk("ID3 ", seratoFrames(markers, grid))});
         }},
        {"FLAC",
         "flac",
         "ZALTagFLAC",
         [] { return flacFile(); },
         flacAudio,
         [](const ZALData& markers, const ZALData& grid) {
             return flacFile({flacComment(
                 {"serato_markers_v2=" + seratoText(markers), "serato_beatgrid=" + seratoText(grid)})});
         },
         {"grouping", "modifiedBy"},
         {"comment"}},
    };
    return all;
}

const Format& formatOf(std::string_view extension) {
    return *std::find_if(formats().begin(), formats().end(),
                         [&](const Format& format) { return format.extension == extension; });
}

const std::vector<Copier>& copiers() {
    static const std::vector<Copier> all{{"mp3", "mp3", ZALCopyTagID3},     {"m4a", "m4a", ZALCopyTagMP4},
                                         {"m4a", "mp3", ZALCopyTagMP42ID3}, {"wav", "wav", ZALCopyTagWAV},
                                         {"aiff", "aiff", ZALCopyTagAIFF},  {"flac", "flac", ZALCopyTagFLAC}};
    return all;
}
