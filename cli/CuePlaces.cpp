#include "CuePlaces.h"

#include <array>
#include <charconv>

namespace {

ZALArray<ZALTagCuePoint> readOwn(const ZALTag& tag) {
    const auto record = tag.zalCuePoints();
    return record ? record->cuePoints() : ZALArray<ZALTagCuePoint>();
}

void writeOwn(ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (cuePoints.empty()) return tag.setZalCuePoints(std::nullopt);
    const auto record = tag.zalCuePoints();
    tag.setZalCuePoints(
        ZALTagCuePoints::cuePointsWithCuePointArray(cuePoints, record ? record->algorithm() : 0));
}

constexpr CuePlace places[] = {
    {"serato", [](const ZALTag& tag) { return tag.seratoCuePoints(); },
     [](ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints) { tag.setSeratoCuePoints(cuePoints); }},
    {"zal", readOwn, writeOwn},
};

}  // namespace

const CuePlace* cuePlace(const std::string& name) {
    for (const CuePlace& place : places) {
        if (name == place.name) return &place;
    }
    return nullptr;
}

std::vector<std::string> cuePlaceNames() {
    std::vector<std::string> names;
    for (const CuePlace& place : places) {
        names.emplace_back(place.name);
    }
    return names;
}

std::string secondsText(double seconds) {
    std::array<char, 400> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), seconds, std::chars_format::fixed);
    return error == std::errc{} ? std::string(buffer.data(), end) : "0";
}
