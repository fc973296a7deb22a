#include <zaltag/base/ZALJSON.h>
#include <zaltag/records/ZALTagRecordData.h>
#include <zaltag/serato/ZALBase64.h>

#include "base/Unicode.h"
#include "platform/Log.h"

namespace {

std::string_view textOf(ZALDataView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

ZALDataView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

ZALNullableData ZALTagRecordData(const ZALJSONValue& dictionary) {
    if (!dictionary.isObject() || !ZALJSON::isValid(dictionary)) {
        zal::logf("Invalid generated json object: {}", ZALJSON::description(dictionary));
        return std::nullopt;
    }
    std::string error;
    const auto json = ZALJSON::serialize(dictionary, false, &error);
    const bool isTooLong = json && json->size() > ZALJSON::lengthMax;  // nobody could read it again
    if (isTooLong) error = fmt::format("it is {} bytes long", json->size());
    if (!json || isTooLong) {
        zal::logf("Failed to serialize json object {} error:{}", ZALJSON::description(dictionary), error);
        return std::nullopt;
    }
    return ZALDataByEncodingBase64(bytesOf(*json));
}

std::optional<ZALJSONValue> ZALTagRecordDictionary(ZALDataView storedBytes) {
    const ZALNullableData json = ZALDataByDecodingBase64(storedBytes);
    if (!json || json->empty()) return std::nullopt;
    std::string error = "the text is not an object";
    auto value = ZALJSON::parse(textOf(*json), &error);
    if (value && value->isObject()) return value;
    // The error may quote the bytes that are at fault, so it too is made fit to print.
    zal::logDamage(fmt::format("failed to parse json data {} with error: {}", ZALValidUTF8(textOf(*json)),
                               ZALValidUTF8(error)));
    return std::nullopt;
}
