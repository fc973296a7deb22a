// Stored bytes to every record and back. What a record wrote reads back as a record that writes the same
// bytes.

#include <zaltag/platform/ZALHost.h>
#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/records/ZALTagRecordData.h>
#include <zaltag/records/ZALTagVelvetCascade.h>
#include <zaltag/serato/ZALBase64.h>

#include <cstdlib>

namespace {

ZALNullableData stored(const ZALTagCustomProperty& record) {
    record.hash();
    const auto dictionary = record.JSONDict();
    return dictionary ? tagData(*dictionary) : std::nullopt;  // null also for a number grown infinite
}

template <typename Record>
void roundTrip(const std::optional<ZALJSONValue>& dictionary) {
    const auto record = Record::propertyWithJSONDict(dictionary);
    if (record.has_value() != dictionary.has_value()) std::abort();
    const auto written = record ? stored(*record) : std::nullopt;
    if (!written) return;
    const auto again = Record::propertyWithJSONDict(JSONDict(*written));
    if (!again || stored(*again) != written) std::abort();
}

void readStored(ZALDataView bytes) {
    const auto dictionary = JSONDict(bytes);
    roundTrip<ZALTagKey>(dictionary);
    roundTrip<ZALTagEnergy>(dictionary);
    roundTrip<ZALTagBeatGrid>(dictionary);
    roundTrip<ZALTagCuePoints>(dictionary);
    roundTrip<ZALTagVelvetCascade>(dictionary);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ZALHost::shared().setLogSink([](const std::string&) {});
    readStored({data, size});
    readStored(dataByEncodingBase64({data, size}).value());  // as JSON text, which mutates better
    return 0;
}
