#pragma once

#include "FuzzSupport.h"

#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include <utility>
#include <vector>

/// The positions of the cue points in slots that are written.
inline std::vector<std::uint32_t> writtenPositions(const ZALTagSeratoMarkerOld& marker) {
    std::vector<std::uint32_t> out;
    for (const auto& cue : marker.cuePoints()) {
        if (cue.index() < 5) out.push_back(cue.position());
    }
    return out;
}

/// What one write of a legacy marker must hold, and that reading and writing it again changes nothing.
inline void checkWriting(const ZALTagSeratoMarkerOld& marker) {
    for (const auto& [fileType, size] : {std::pair{"mp3", 318U}, std::pair{"m4a", 276U}}) {
        if (!marker.isRenderableForFileType(fileType)) continue;
        const ZALData written = marker.markerDataForFileType(fileType);
        require(written.size() == size);
        const auto again = ZALTagSeratoMarkerOld::initWithData(written, fileType);
        require(again.has_value());
        require(writtenPositions(*again) == writtenPositions(marker));
        require(again->isRenderableForFileType(fileType));
        require(again->markerDataForFileType(fileType) == written);
    }
    const ZALData encoded = marker.encodedMarkerDataForFileType("m4a").value();
    const auto again = ZALTagSeratoMarkerOld::markerWithEncodedData(encoded);
    require(again->encodedMarkerDataForFileType("m4a") == encoded);
}
