#pragma once

#include "records/Carriers.h"
#include "records/SeratoCuePoints.h"

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/records/ZALTagCustomProperty.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace zal {

enum class TextField { title, artist, album, genre, comment, initialKey, modifiedBy, grouping };
enum class NumberField { year, tempo, energyLevel };

/// The fields of a tag by TagLib's names of them, in capitals, and what has no such name.
struct Properties {
    using Values = std::vector<std::string>;

    std::map<std::string, Values> values;
    std::vector<std::string> unsupported;

    bool contain(const std::string& name) const { return values.contains(name); }
    /// Empty when there is none.
    Values of(const std::string& name) const;
};

/// One of the tags that a file carries: the fields and payloads of a tag object under the names that they
/// have there. What a store has no place for reads as null or 0, and setting it does nothing. A save is none
/// of its business.
class TagStore {
  public:
    virtual ~TagStore() = default;

    /// Null when the store does not hold it.
    virtual ZALNullableString text(TextField field) const = 0;
    virtual void setText(TextField field, const ZALNullableString& text) = 0;
    /// 0 when the store does not hold it.
    virtual std::int64_t number(NumberField field) const = 0;
    virtual void setNumber(NumberField field, std::int64_t number) = 0;

    /// Whether the store has a place for a payload.
    virtual bool carries(const Carrier&) const { return false; }
    /// The bytes of a payload; null without one.
    virtual ZALNullableData payload(const Carrier&) const { return std::nullopt; }
    /// Null takes the payload away.
    virtual void setPayload(const Carrier&, const ZALNullableData&) {}
    /// Makes a payload the last one of its kind, where a store has an order.
    virtual void movePayloadToEnd(const Carrier&) {}

    /// Unless the store knows more names, the six basic fields.
    virtual Properties properties() const;
    /// Sets the values of a field by its name; none takes it away. What has no place is left out.
    virtual void setProperty(const std::string& name, const Properties::Values& values);
    /// What a file gives back for values that are set.
    virtual Properties::Values heldValues(const std::string& name, const Properties::Values& values) const;

    /// How Serato's payloads stand in the store.
    virtual SeratoForm seratoForm() const { return SeratoForm::raw; }
    virtual bool holdsSeratoMetadata() const { return false; }
    virtual bool holdsTraktorMetadata() const { return false; }
};

/// The row of a store's table of names for a field; null when the store has no place for it.
template <typename Row, std::size_t size>
const Row* rowOf(const Row (&table)[size], TextField field) {
    const Row* row = std::ranges::find(table, field, &Row::field);
    return row != std::end(table) ? row : nullptr;
}

/// Stores a record. Null, and one that has nothing to store, take it away; one that could not be read again
/// is one log line and leaves what is there.
void setRecord(TagStore& store, const Carrier& carrier, const ZALTagCustomProperty* record);

}  // namespace zal
