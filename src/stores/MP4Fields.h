#pragma once

#include "stores/TagStore.h"

#include <mp4tag.h>

namespace zal {

/// The fields of an MP4 file's list of items: iTunes' own items, and freeform ones ("----:...") of texts,
/// several of which are one with a blank between two (", " in the standard fields). Payloads are freeform
/// items, too.
class MP4Fields final : public TagStore {
  public:
    explicit MP4Fields(TagLib::MP4::Tag& tag) : tag_(tag) {}

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
    SeratoForm seratoForm() const override { return SeratoForm::encoded; }
    bool holdsSeratoMetadata() const override;

  private:
    TagLib::MP4::ItemMap itemsOf(const std::string& name, const Properties::Values& values) const;

    TagLib::MP4::Tag& tag_;
};

}  // namespace zal
