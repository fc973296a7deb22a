#pragma once

namespace zal {

/// The names under which the containers carry one payload; null where a container does not.
struct Carrier {
    const char* object;  ///< the description of the GEOB frame in an ID3v2 tag
    const char* item;    ///< the MP4 item
    const char* field;   ///< the field of a Xiph comment
};

// The library's own records
inline constexpr Carrier keyCarrier{"Key", "----:com.quorvantis.quorvantis:key", "KEY"};
inline constexpr Carrier energyCarrier{"Energy", "----:com.quorvantis.quorvantis:energy", "ENERGY"};
inline constexpr Carrier beatGridCarrier{"BeatGrid", "----:com.quorvantis.quorvantis:beatgrid", "BEATGRID"};
inline constexpr Carrier cuePointsCarrier{"CuePoints", "----:com.quorvantis.quorvantis:cuepoints",
                                          "CUEPOINTS"};
inline constexpr Carrier cascadeCarrier{"VelvetCascade", "----:com.quorvantis.velvetcascade:data",
                                        "VELVETCASCADE"};

// Serato's
inline constexpr Carrier markersCarrier{"Serato Markers_", "----:com.serato.dj:markers", nullptr};
inline constexpr Carrier markers2Carrier{"Serato Markers2", "----:com.serato.dj:markersv2",
                                         "SERATO_MARKERS_V2"};
inline constexpr Carrier seratoGridCarrier{"Serato BeatGrid", "----:com.serato.dj:beatgrid",
                                           "SERATO_BEATGRID"};

}  // namespace zal
