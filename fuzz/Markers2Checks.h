#pragma once

#include "FuzzSupport.h"

#include <zaltag/serato/ZALTagSeratoMarker.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

/// Where the next "CUE" entry starts, from an offset on; the size of the bytes for none.
inline std::size_t plainlyFoundCue(const ZALData& bytes, std::size_t from) {
    for (std::size_t at = from; at + 9 <= bytes.size(); ++at) {
        if (std::memcmp(&bytes[at], "CUE", 4) == 0) return at;
    }
    return bytes.size();
}

/// The removal of "CUE" entries in its plainest words: cut one out, search again from where it stood.
inline ZALData plainlyWithoutCues(ZALData bytes) {
    std::size_t hit = 0;
    while ((hit = plainlyFoundCue(bytes, hit)) < bytes.size()) {
        std::uint64_t size = 0;
        for (std::size_t i = hit + 4; i < hit + 8; ++i) {
            size = size << 8 | bytes[i];
        }
        size += 8;
        if (size > bytes.size() - hit) return {};
        const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(hit);
        bytes.erase(first, first + static_cast<std::ptrdiff_t>(size));
    }
    return bytes;
}

/// What one write of a marker must hold, and that reading and writing it again changes nothing.
inline void checkWriting(const ZALTagSeratoMarker& marker, ZALDataView record) {
    const ZALData payload = dataByDecodingBase64(record.subspan(2)).value();
    const ZALData carried = plainlyWithoutCues({payload.begin() + 2, payload.end()});
    ZALData expected{marker.major(), marker.minor()};
    const auto& cues = marker.cuePoints();
    for (std::size_t i = 0; i < std::min<std::size_t>(cues.size(), 8); ++i) {
        const ZALData entry = cues[i].cuePointData();
        expected.insert(expected.end(), entry.begin(), entry.end());
    }
    expected.insert(expected.end(), carried.begin(), carried.end());
    const ZALData written = marker.markerData().value();
    require(dataByDecodingBase64(ZALDataView(written).subspan(2)) == expected);

    const auto again = ZALTagSeratoMarker::markerWithData(written);
    require(again.has_value());
    require(ZALTagSeratoMarker::markerWithEncodedData(marker.encodedMarkerData().value()) == again);
    // Cutting can join bytes to a new entry, which the next reader finds.
    if (plainlyFoundCue(carried, 0) == carried.size()) require(again->markerData() == written);
}

/// Reads and checks a record in its raw or encoded form; both throw for a payload without version bytes.
inline void checkMarkers2(ZALDataView raw) {
    try {
        if (const auto marker = ZALTagSeratoMarker::markerWithData(raw)) checkWriting(*marker, raw);
    } catch (const std::out_of_range&) {
        require(dataByDecodingBase64(raw.subspan(2))->size() < 2);
    }
}

inline void checkEncodedMarkers2(ZALDataView encoded) {
    const ZALData decoded = dataByDecodingBase64(encoded).value();
    try {
        const auto marker = ZALTagSeratoMarker::markerWithEncodedData(encoded);
        if (marker) checkWriting(*marker, ZALDataView(decoded).subspan(42));
    } catch (const std::out_of_range&) {
        require(dataByDecodingBase64(ZALDataView(decoded).subspan(44))->size() < 2);
    }
}

/// The raw record of a payload.
inline ZALData recordOfPayload(ZALDataView payload) {
    return joined("\x01\x01", dataByEncodingBase64(joined("\x01\x01", payload)).value());
}
