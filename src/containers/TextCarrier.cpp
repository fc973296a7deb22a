#include "containers/TextCarrier.h"

#include "id3/TagLibText.h"

#include <zaltag/records/ZALTagRecordData.h>

namespace zal {

std::string joinedText(const TagLib::StringList& texts) {
    return stringWithTagLibString(texts.toString(" "));
}

TagLib::String carrierText(ZALDataView payload) {
    return latin1TagLibString({payload.begin(), payload.end()});
}

ZALNullableData payloadOf(const ZALNullableString& text) {
    if (!text) return std::nullopt;
    return ZALData(text->begin(), text->end());
}

std::optional<ZALJSONValue> recordDictionaryOf(const ZALNullableString& text) {
    const ZALNullableData payload = payloadOf(text);
    return payload ? JSONDict(*payload) : std::nullopt;
}

ZALArray<ZALTagComment> onlyComment(const ZALNullableString& text) {
    if (!text) return {};
    ZALTagComment comment;
    comment.setComment(text);
    comment.setOriginalComment(text);
    comment.setIsPrimary(true);
    return {comment};
}

}  // namespace zal
