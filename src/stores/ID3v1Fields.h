#pragma once

#include "stores/TagStore.h"

#include <id3v1tag.h>

namespace zal {

/// The fields of an ID3v1 tag.
class ID3v1Fields final : public TagStore {
  public:
    explicit ID3v1Fields(TagLib::ID3v1::Tag& tag) : tag_(tag) {}

    ZALNullableString text(TextField field) const override;
    void setText(TextField field, const ZALNullableString& text) override;
    std::int64_t number(NumberField field) const override;
    void setNumber(NumberField field, std::int64_t number) override;

  private:
    TagLib::ID3v1::Tag& tag_;
};

}  // namespace zal
