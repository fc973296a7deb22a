#pragma once

#include "stores/TagStore.h"

#include <xiphcomment.h>

namespace zal {

/// The fields of a Xiph comment, several values of one joined with a blank; payloads are fields, too. What is
/// empty is not there.
class XiphFields final : public TagStore {
  public:
    /// A comment that is written.
    explicit XiphFields(TagLib::Ogg::XiphComment& comment) : comment_(comment), written_(&comment) {}
    /// A further comment of the file, which never changes.
    explicit XiphFields(const TagLib::Ogg::XiphComment& comment) : comment_(comment) {}

    ZALNullableString text(TextField field) const override;
    void setText(TextField field, const ZALNullableString& text) override;
    std::int64_t number(NumberField field) const override;
    void setNumber(NumberField field, std::int64_t number) override;
    Properties properties() const override;
    void setProperty(const std::string& name, const Properties::Values& values) override;
    Properties::Values heldValues(const std::string& name, const Properties::Values& values) const override;
    bool carries(const Carrier& carrier) const override { return carrier.field != nullptr; }
    ZALNullableData payload(const Carrier& carrier) const override;
    void setPayload(const Carrier& carrier, const ZALNullableData& payload) override;
    SeratoForm seratoForm() const override { return SeratoForm::encoded; }
    bool holdsSeratoMetadata() const override;
    bool holdsTraktorMetadata() const override;

  private:
    const TagLib::Ogg::XiphComment& comment_;
    TagLib::Ogg::XiphComment* written_ = nullptr;
};

}  // namespace zal
