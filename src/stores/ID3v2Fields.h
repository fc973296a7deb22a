#pragma once

#include "stores/ID3v2Store.h"
#include "stores/TagStore.h"

namespace zal {

/// The fields of an ID3v2 tag: frames, and payloads as GEOB frames.
class ID3v2Fields final : public TagStore {
  public:
    /// A tag that is written.
    explicit ID3v2Fields(ID3v2Store& store) : tag_(store.tag()), store_(&store) {}
    /// A further tag of the file, which never changes.
    explicit ID3v2Fields(const TagLib::ID3v2::Tag& tag) : tag_(tag) {}

    ZALNullableString text(TextField field) const override;
    void setText(TextField field, const ZALNullableString& text) override;
    std::int64_t number(NumberField field) const override;
    void setNumber(NumberField field, std::int64_t number) override;
    Properties properties() const override;
    void setProperty(const std::string& name, const Properties::Values& values) override;
    Properties::Values heldValues(const std::string& name, const Properties::Values& values) const override;
    bool carries(const Carrier&) const override { return true; }
    ZALNullableData payload(const Carrier& carrier) const override;
    void setPayload(const Carrier& carrier, const ZALNullableData& payload) override;
    void movePayloadToEnd(const Carrier& carrier) override;
    bool holdsSeratoMetadata() const override;
    bool holdsTraktorMetadata() const override;

    /// Whether frames were moved, or the grouping was set, since the last call of setIsSaved().
    bool requiresSaving() const { return requiresSaving_; }
    void setIsSaved() { requiresSaving_ = false; }

  private:
    void setComment(const ZALNullableString& text);
    void setGrouping(const ZALNullableString& text);
    void setEnergyLevel(std::int64_t level);

    const TagLib::ID3v2::Tag& tag_;
    ID3v2Store* store_ = nullptr;
    bool requiresSaving_ = false;
};

}  // namespace zal
