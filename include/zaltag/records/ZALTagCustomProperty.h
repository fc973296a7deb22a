#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALJSONValue.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// The base of the library's own records: what an analysis found, stored in an audio file as a small JSON
/// dictionary. A record is a value: copy it freely, use one copy from one thread at a time. Abstract members
/// throw ZALProgrammingError with "... is abstract implement it in your subclass!"; a file can cause no
/// exception.
///
/// Every concrete class has static propertyWithJSONDict() and initWithJSONDict() that make it from its
/// dictionary: null for null and for a value that is no JSON object. Reading a dictionary never fails: an
/// absent entry, or one of another type, reads as null or 0.
///
/// The class-level members tell which algorithm makes such records and which version of it is the newest
/// known: one process-wide number per concrete class, 0 until it is set. They may be called from any thread.
class ZALTAG_EXPORT ZALTagCustomProperty {
  public:
    ZALTagCustomProperty() = default;
    virtual ~ZALTagCustomProperty();

    /// The version of the algorithm that made this record; 0 by default.
    std::int64_t algorithm() const { return algorithm_; }
    void setAlgorithm(std::int64_t algorithm) { algorithm_ = algorithm; }

    /// Who makes the records: always "quorvantis".
    std::string source() const;

    /// The record as a dictionary ready for tagData(); null when there is nothing to store. Abstract here.
    virtual std::optional<ZALJSONValue> JSONDict() const;
    /// Takes the record's fields from its dictionary. Abstract here.
    virtual void updateWithJSONDict(const ZALJSONValue& dictionary);

    /// The name of this kind of record in the table of algorithm versions. Abstract here.
    static std::string algorithmKey();
    /// The newest known version of the algorithm. Abstract here.
    static std::int64_t algorithmVersion();
    static void setAlgorithmVersion(std::int64_t version);

    /// True for equal `algorithm`, whatever the records hold besides.
    bool isEqualToTagProperty(const ZALTagCustomProperty& other) const;
    /// The equality of this record's class, which the other record must have or derive from.
    virtual bool isEqual(const ZALTagCustomProperty& other) const;
    /// Equal for equal records.
    virtual std::size_t hash() const;

    /// isEqual() of the record on the left.
    bool operator==(const ZALTagCustomProperty& other) const { return isEqual(other); }

  protected:
    // Copied as part of a concrete record only, which cannot lose its fields that way.
    ZALTagCustomProperty(const ZALTagCustomProperty&) = default;
    ZALTagCustomProperty& operator=(const ZALTagCustomProperty&) = default;

    /// A dictionary with the two entries that every analysis record has: "source" and "algorithm".
    ZALJSONValue::Object envelope() const;

    /// What initWithJSONDict() of every concrete class does.
    template <typename Record>
    static std::optional<Record> recordWithJSONDict(const std::optional<ZALJSONValue>& dictionary) {
        if (!dictionary || !dictionary->isObject()) return std::nullopt;
        Record record;
        record.updateWithJSONDict(*dictionary);
        return record;
    }

  private:
    std::int64_t algorithm_ = 0;
};
