#pragma once

#include "stores/TagStore.h"

#include <infotag.h>

namespace zal {

/// The fields of an INFO list.
class InfoFields final : public TagStore {
  public:
    /// A list that is written.
    explicit InfoFields(TagLib::RIFF::Info::Tag& tag) : tag_(tag), written_(&tag) {}
    /// A further list of the file, which never changes.
    explicit InfoFields(const TagLib::RIFF::Info::Tag& tag) : tag_(tag) {}

    ZALNullableString text(TextField field) const override;
    void setText(TextField field, const ZALNullableString& text) override;
    std::int64_t number(NumberField field) const override;
    void setNumber(NumberField field, std::int64_t number) override;

  private:
    const TagLib::RIFF::Info::Tag& tag_;
    TagLib::RIFF::Info::Tag* written_ = nullptr;
};

}  // namespace zal
