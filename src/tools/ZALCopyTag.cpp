#include <zaltag/tools/ZALCopyTag.h>

#include <zaltag/containers/ZALTagFLAC.h>
#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/containers/ZALTagWAV.h>
#include <zaltag/id3/ZALTagAIFF.h>
#include <zaltag/id3/ZALTagID3.h>

namespace {

struct Copier {
    bool (*takesSource)(const ZALNullableString& path);
    bool (*takesDestination)(const ZALNullableString& path);
    ZALCopyTagFunction copy;
};

constexpr Copier copiers[] = {
    {ZALTagID3::canInitWithPath, ZALTagID3::canInitWithPath, ZALCopyTagID3},
    {ZALTagMP4::canInitWithPath, ZALTagMP4::canInitWithPath, ZALCopyTagMP4},
    {ZALTagMP4::canInitWithPath, ZALTagID3::canInitWithPath, ZALCopyTagMP42ID3},
    {ZALTagWAV::canInitWithPath, ZALTagWAV::canInitWithPath, ZALCopyTagWAV},
    {ZALTagAIFF::canInitWithPath, ZALTagAIFF::canInitWithPath, ZALCopyTagAIFF},
    {ZALTagFLAC::canInitWithPath, ZALTagFLAC::canInitWithPath, ZALCopyTagFLAC},
};

}  // namespace

ZALCopyTagFunction ZALCopyTagFunctionForPaths(const ZALNullableString& source,
                                              const ZALNullableString& destination) {
    for (const Copier& copier : copiers) {
        if (copier.takesSource(source) && copier.takesDestination(destination)) return copier.copy;
    }
    return nullptr;
}
