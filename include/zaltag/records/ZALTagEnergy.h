#pragma once

#include <zaltag/records/ZALTagCustomProperty.h>

/// The energy level that an analysis found.
class ZALTAG_EXPORT ZALTagEnergy : public ZALTagCustomProperty {
  public:
    ZALTagEnergy() = default;
    ZALTagEnergy(std::int64_t energy, std::int64_t algorithm) : energy_(energy) { setAlgorithm(algorithm); }
    /// Named after the key's.
    static ZALTagEnergy keyWithEnergy(std::int64_t energy, std::int64_t algorithm) {
        return {energy, algorithm};
    }
    static ZALTagEnergy initWithEnergy(std::int64_t energy, std::int64_t algorithm) {
        return keyWithEnergy(energy, algorithm);
    }
    static std::optional<ZALTagEnergy> propertyWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagEnergy>(dictionary);
    }
    static std::optional<ZALTagEnergy> initWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagEnergy>(dictionary);
    }

    /// The level; 0 by default.
    std::int64_t energy() const { return energy_; }
    void setEnergy(std::int64_t energy) { energy_ = energy; }

    /// "source", "algorithm" and "energyLevel"; never null.
    std::optional<ZALJSONValue> JSONDict() const override;
    void updateWithJSONDict(const ZALJSONValue& dictionary) override;

    /// "Energy".
    static std::string algorithmKey();
    static std::int64_t algorithmVersion();
    static void setAlgorithmVersion(std::int64_t version);

    /// Equal algorithm and equal energy.
    bool isEqualToTagEnergy(const ZALTagEnergy& other) const;
    bool isEqual(const ZALTagCustomProperty& other) const override;
    std::size_t hash() const override;

  private:
    std::int64_t energy_ = 0;
};
