#pragma once

#include <zaltag/base/ZALText.h>
#include <zaltag/records/ZALTagCustomProperty.h>

#include <utility>

/// The musical key that an analysis found.
class ZALTAG_EXPORT ZALTagKey : public ZALTagCustomProperty {
  public:
    ZALTagKey() = default;
    ZALTagKey(ZALNullableString key, std::int64_t algorithm) : key_(std::move(key)) {
        setAlgorithm(algorithm);
    }
    static ZALTagKey keyWithKey(ZALNullableString key, std::int64_t algorithm) {
        return {std::move(key), algorithm};
    }
    static ZALTagKey initWithKey(ZALNullableString key, std::int64_t algorithm) {
        return keyWithKey(std::move(key), algorithm);
    }
    static std::optional<ZALTagKey> propertyWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagKey>(dictionary);
    }
    static std::optional<ZALTagKey> initWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        return recordWithJSONDict<ZALTagKey>(dictionary);
    }

    /// The text exactly as the analysis gave it; null by default.
    const ZALNullableString& key() const { return key_; }
    void setKey(ZALNullableString key) { key_ = std::move(key); }

    /// "source", "algorithm" and "key"; null when the key is null.
    std::optional<ZALJSONValue> JSONDict() const override;
    void updateWithJSONDict(const ZALJSONValue& dictionary) override;

    /// "Key".
    static std::string algorithmKey();
    static std::int64_t algorithmVersion();
    static void setAlgorithmVersion(std::int64_t version);

    /// The same record, or equal algorithm and equal keys; two null keys are not equal.
    bool isEqualToTagKey(const ZALTagKey& other) const;
    bool isEqual(const ZALTagCustomProperty& other) const override;
    std::size_t hash() const override;

  private:
    ZALNullableString key_;
};
