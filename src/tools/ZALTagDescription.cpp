#include <zaltag/tools/ZALTagDescription.h>

#include "tag/ZALTagBackEnds.h"
#include "taglib/TagLibStream.h"
#include "tools/Sections.h"

#include <zaltag/containers/ZALTagFLAC.h>
#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/containers/ZALTagWAV.h>
#include <zaltag/id3/ZALTagAIFF.h>
#include <zaltag/id3/ZALTagID3.h>

#include <exception>

namespace {

// How the files of one type are described. False when the stream's file is not of the type.
struct FileDescriber {
    bool (*accepts)(const ZALNullableString& path);
    bool (*describe)(zal::Report& report, zal::TagLibStream& stream);
    const char* invalid;
};

template <auto open, auto describe>
bool describeWith(zal::Report& report, zal::TagLibStream& stream) {
    const auto file = open(stream);
    if (file != nullptr) describe(report, *file);
    return file != nullptr;
}

constexpr FileDescriber describers[] = {
    {ZALTagID3::canInitWithPath, describeWith<zal::MP3File::open, zal::describeMP3>, "not a valid mpeg file"},
    {ZALTagWAV::canInitWithPath, describeWith<zal::FormFile::openWAV, zal::describeWAV>,
     "not a valid wav file"},
    {ZALTagAIFF::canInitWithPath, describeWith<zal::FormFile::openAIFF, zal::describeAIFF>,
     "not a valid aif(f) file"},
    {ZALTagMP4::canInitWithPath, describeWith<zal::MP4File::open, zal::describeMP4>, "not a valid m4a file"},
    {ZALTagFLAC::canInitWithPath, describeWith<zal::FLACFile::open, zal::describeFLAC>,
     "not a valid flac file"},
};

// What memory cannot hold ends the report with the line that stands for a file that cannot be read.
void describeFile(zal::Report& report, const std::string& path, const FileDescriber& describer) {
    try {
        const auto stream = zal::TagLibStream::open(path, true);
        if (stream != nullptr && describer.describe(report, *stream)) return;
    } catch (const std::exception&) {  // below
    }
    report.line("{}", describer.invalid);
}

}  // namespace

std::string ZALTagDescription(const ZALNullableString& path) {
    zal::Report report;
    for (const FileDescriber& describer : describers) {
        if (!describer.accepts(path)) continue;
        describeFile(report, *path, describer);
        return report.text();
    }
    report.line("not a mp3, m4a, mp4, wav, or aif(f) file");
    return report.text();
}

void ZALPrintV2Tag(const TagLib::ID3v2::Tag* /*tag*/) {}
void ZALPrintMP4Tag(const TagLib::MP4::Tag* /*tag*/) {}
