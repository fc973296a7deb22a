#include <zaltag/base/ZALProgrammingError.h>
#include <zaltag/records/ZALTagCustomProperty.h>

#include "records/RecordHash.h"

namespace {

[[noreturn]] void abstractMember(const char* member) {
    throw ZALProgrammingError(std::string(member) + " is abstract implement it in your subclass!");
}

}  // namespace

ZALTagCustomProperty::~ZALTagCustomProperty() = default;

std::string ZALTagCustomProperty::source() const {
    return "quorvantis";
}

std::optional<ZALJSONValue> ZALTagCustomProperty::JSONDict() const {
    abstractMember("-[ZALTagCustomProperty JSONDict]");
}

void ZALTagCustomProperty::updateWithJSONDict(const ZALJSONValue&) {
    abstractMember("-[ZALTagCustomProperty updateWithJSONDict:]");
}

std::string ZALTagCustomProperty::algorithmKey() {
    abstractMember("+[ZALTagCustomProperty algorithmKey]");
}

std::int64_t ZALTagCustomProperty::algorithmVersion() {
    abstractMember("+[ZALTagCustomProperty algorithmVersion]");
}

void ZALTagCustomProperty::setAlgorithmVersion(std::int64_t) {
    abstractMember("+[ZALTagCustomProperty setAlgorithmVersion:]");
}

bool ZALTagCustomProperty::isEqualToTagProperty(const ZALTagCustomProperty& other) const {
    if (this == &other) return true;
    // The source is compared with itself on purpose: it is one constant, and the other's is never asked.
    return source() == source() && algorithm_ == other.algorithm_;
}

bool ZALTagCustomProperty::isEqual(const ZALTagCustomProperty& other) const {
    return isEqualToTagProperty(other);
}

std::size_t ZALTagCustomProperty::hash() const {
    return zal::formattedHash("{}{}", source(), algorithm_);
}

ZALJSONValue::Object ZALTagCustomProperty::envelope() const {
    return {{"source", source()}, {"algorithm", algorithm_}};
}
