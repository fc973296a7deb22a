#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/records/ZALTagCuePoint.h>
#include <zaltag/records/ZALTagCustomProperty.h>

/// The cue points that an analysis found.
class ZALTAG_EXPORT ZALTagCuePoints : public ZALTagCustomProperty {
  public:
    ZALTagCuePoints() = default;
    ZALTagCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, std::int64_t algorithm)
        : cuePoints_(cuePoints) {
        setAlgorithm(algorithm);
    }
    static ZALTagCuePoints cuePointsWithCuePointArray(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                      std::int64_t algorithm) {
        return {cuePoints, algorithm};
    }
    static ZALTagCuePoints initWithCuePointArray(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                 std::int64_t algorithm) {
        return cuePointsWithCuePointArray(cuePoints, algorithm);
    }
    static std::optional<ZALTagCuePoints> propertyWithJSONDict(
        const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagCuePoints>(dictionary);
    }
    static std::optional<ZALTagCuePoints> initWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagCuePoints>(dictionary);
    }

    /// The cues in stored order; none by default.
    const ZALArray<ZALTagCuePoint>& cuePoints() const { return cuePoints_; }
    void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) { cuePoints_ = cuePoints; }

    /// "source", "algorithm" and "cues": objects with the "time" in milliseconds and, where the cue has one,
    /// the "name". Never null.
    std::optional<ZALJSONValue> JSONDict() const override;
    /// One cue for every element of "cues", whatever it holds.
    void updateWithJSONDict(const ZALJSONValue& dictionary) override;

    /// "CuePoints".
    static std::string algorithmKey();
    static std::int64_t algorithmVersion();
    static void setAlgorithmVersion(std::int64_t version);

    /// Equal algorithm and equal cues in equal order.
    bool isEqualToTagCuePoints(const ZALTagCuePoints& other) const;
    bool isEqual(const ZALTagCustomProperty& other) const override;
    std::size_t hash() const override;

  private:
    ZALArray<ZALTagCuePoint> cuePoints_;
};
