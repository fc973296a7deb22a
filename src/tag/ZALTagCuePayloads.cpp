// What a tag object holds of cue points, as bytes.

#include "tag/TagContents.h"

#include <zaltag/tag/ZALTag.h>

namespace {

// Calls a function for every place that a payload with cue points may have in the file's tags.
template <typename Function>
void forEachPlace(zal::TagContents& contents, const Function& function) {
    contents.forEachWritten([&](zal::TagStore& store) {
        for (const zal::Carrier* carrier :
             {&zal::markers2Carrier, &zal::markersCarrier, &zal::cuePointsCarrier}) {
            if (store.carries(*carrier)) function(store, *carrier);
        }
    });
}

}  // namespace

std::vector<ZALNullableData> ZALTag::cuePayloads() const {
    std::vector<ZALNullableData> payloads;
    forEachPlace(contentsFor("cuePayloads"), [&](const zal::TagStore& store, const zal::Carrier& carrier) {
        payloads.push_back(store.payload(carrier));
    });
    return payloads;
}

bool ZALTag::setCuePayloads(const std::vector<ZALNullableData>& payloads) {
    if (payloads.size() != cuePayloads().size()) return false;
    auto payload = payloads.begin();
    forEachPlace(contentsFor("setCuePayloads:"), [&](zal::TagStore& store, const zal::Carrier& carrier) {
        if (store.payload(carrier) != *payload) store.setPayload(carrier, *payload);
        ++payload;
    });
    return true;
}
