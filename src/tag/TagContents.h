#pragma once

#include "base/Failure.h"
#include "stores/TagStore.h"
#include "tag/Artwork.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zal {

enum class Access { readOnly, readWrite };

/// What a tag object has to show of its file: the stores, of which the first that holds something is read and
/// all are written, and the pictures.
class TagContents {
  public:
    void add(std::unique_ptr<TagStore> store, Access access = Access::readWrite) {
        stores_.push_back({std::move(store), access});
    }
    void setArtwork(std::unique_ptr<ArtworkContainer> container, const ArtworkRules& rules) {
        artwork_.emplace(std::move(container), rules);
    }
    Artwork& artwork() { return *artwork_; }

    /// The first text that is not empty; else the empty text where a store holds that, else null.
    ZALNullableString text(TextField field) const {
        ZALNullableString found;
        for (const Listed& listed : stores_) {
            ZALNullableString text = listed.store->text(field);
            if (text && !text->empty()) return text;
            if (text) found = std::move(text);
        }
        return found;
    }
    void setText(TextField field, const ZALNullableString& text) {
        forEachWritten([&](TagStore& store) { store.setText(field, text); });
    }
    /// The first number that is not 0.
    std::int64_t number(NumberField field) const {
        std::int64_t number = 0;
        for (auto listed = stores_.begin(); number == 0 && listed != stores_.end(); ++listed) {
            number = listed->store->number(field);
        }
        return number;
    }
    void setNumber(NumberField field, std::int64_t number) {
        forEachWritten([&](TagStore& store) { store.setNumber(field, number); });
    }

    /// The values of fields by name: those of the first store that has any.
    Properties properties() const;
    /// Sets the values of a field: in the first store that is written, and in those behind it that have one.
    /// Gives the reason when the file could not give back these very values; nothing is changed then.
    Failure setProperty(const std::string& name, const Properties::Values& values);

    /// What `read` makes of the first payload from which it makes anything; it is called with the bytes and
    /// the store.
    template <typename Read>
    auto firstPayload(const Carrier& carrier, Read read) const
        -> decltype(read(std::declval<const ZALData&>(), std::declval<const TagStore&>())) {
        for (const Listed& listed : stores_) {
            const ZALNullableData payload = listed.store->payload(carrier);
            if (!payload) continue;
            if (auto value = read(*payload, *listed.store)) return value;
        }
        return std::nullopt;
    }

    template <typename Change>
    void forEachWritten(Change change) {
        for (Listed& listed : stores_) {
            if (listed.access == Access::readWrite) change(*listed.store);
        }
    }
    template <typename Condition>
    bool anyStore(Condition condition) const {
        return std::ranges::any_of(stores_, [&](const Listed& listed) { return condition(*listed.store); });
    }

  private:
    struct Listed {
        std::unique_ptr<TagStore> store;
        Access access = Access::readWrite;
    };

    std::vector<Listed> stores_;
    std::optional<Artwork> artwork_;
};

}  // namespace zal
