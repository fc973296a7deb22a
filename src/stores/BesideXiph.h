#pragma once

#include "stores/TagStore.h"

#include <memory>
#include <utility>

namespace zal {

/// An ID3 tag of a FLAC file, where it stands behind the Xiph comment: genre and year are not written to it,
/// the year is not read from it, Serato's records stand in the comment alone, and the tempo is read for the
/// energy level, as the files have it.
class BesideXiph final : public TagStore {
  public:
    explicit BesideXiph(std::unique_ptr<TagStore> store) : store_(std::move(store)) {}

    ZALNullableString text(TextField field) const override { return store_->text(field); }
    void setText(TextField field, const ZALNullableString& text) override {
        if (field != TextField::genre) store_->setText(field, text);
    }
    std::int64_t number(NumberField field) const override {
        return field == NumberField::year ? 0 : store_->number(NumberField::tempo);
    }
    void setNumber(NumberField field, std::int64_t number) override {
        if (field != NumberField::year) store_->setNumber(field, number);
    }
    Properties properties() const override { return store_->properties(); }
    void setProperty(const std::string& name, const Properties::Values& values) override {
        store_->setProperty(name, values);
    }
    bool carries(const Carrier& carrier) const override {
        const bool isSerato =
            &carrier == &markersCarrier || &carrier == &markers2Carrier || &carrier == &seratoGridCarrier;
        return !isSerato && store_->carries(carrier);
    }
    ZALNullableData payload(const Carrier& carrier) const override {
        return carries(carrier) ? store_->payload(carrier) : std::nullopt;
    }
    void setPayload(const Carrier& carrier, const ZALNullableData& payload) override {
        if (carries(carrier)) store_->setPayload(carrier, payload);
    }

  private:
    std::unique_ptr<TagStore> store_;
};

}  // namespace zal
