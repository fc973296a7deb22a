#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/records/ZALTagCustomProperty.h>

#include <utility>

/// The beats and the tempo that an analysis found.
class ZALTAG_EXPORT ZALTagBeatGrid : public ZALTagCustomProperty {
  public:
    ZALTagBeatGrid() = default;
    ZALTagBeatGrid(std::optional<ZALArray<double>> beats, double tempo, std::int64_t algorithm)
        : beats_(std::move(beats)), tempo_(tempo) {
        setAlgorithm(algorithm);
    }
    /// The tempo has single precision here, as in the files.
    static ZALTagBeatGrid beatGridWithBeats(std::optional<ZALArray<double>> beats, float tempo,
                                            std::int64_t algorithm) {
        return {std::move(beats), tempo, algorithm};
    }
    /// The doubled "With" belongs to the name.
    static ZALTagBeatGrid initWithWithBeats(std::optional<ZALArray<double>> beats, float tempo,
                                            std::int64_t algorithm) {
        return beatGridWithBeats(std::move(beats), tempo, algorithm);
    }
    static std::optional<ZALTagBeatGrid> propertyWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagBeatGrid>(dictionary);
    }
    static std::optional<ZALTagBeatGrid> initWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagBeatGrid>(dictionary);
    }

    /// The times of the beats as the analysis gave them, in order; null by default.
    const std::optional<ZALArray<double>>& beats() const { return beats_; }
    void setBeats(std::optional<ZALArray<double>> beats) { beats_ = std::move(beats); }

    /// Beats per minute; 0 by default. Read from a file, it has single precision (and is infinite beyond it).
    double tempo() const { return tempo_; }
    void setTempo(double tempo) { tempo_ = tempo; }

    /// "source", "algorithm", "beats" and "tempo"; null when the beats are null.
    std::optional<ZALJSONValue> JSONDict() const override;
    /// A beat that is no number is read by its value as a number (0 for what has none).
    void updateWithJSONDict(const ZALJSONValue& dictionary) override;

    /// "BeatGrid".
    static std::string algorithmKey();
    static std::int64_t algorithmVersion();
    static void setAlgorithmVersion(std::int64_t version);

    /// The same record, or equal algorithm, pretty much equal beats and exactly equal tempo. Null beats count
    /// as no beats.
    bool isEqualToTagBeatGrid(const ZALTagBeatGrid& other) const;
    /// True when both arrays have as many beats and no two at one place differ by more than 1e-13.
    static bool isBeatArray(const ZALArray<double>& beats,
                            const ZALArray<double>& prettyMuchEqualToBeatArray);
    bool isEqual(const ZALTagCustomProperty& other) const override;
    std::size_t hash() const override;

  private:
    std::optional<ZALArray<double>> beats_;
    double tempo_ = 0;
};
