#include "stores/TextPayloads.h"

#include "taglib/TagLibText.h"

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

}  // namespace zal
