// read LIST: opens every file of a list and reads every field, record and payload, and the pictures as bytes.

#include "Measure.h"

#include <zaltag/zaltag.h>

#include <cstdlib>

namespace {

struct Sums {
    std::uint64_t files = 0;
    std::uint64_t texts = 0;
    std::uint64_t comments = 0;
    std::uint64_t pictures = 0;
    std::uint64_t payloads = 0;
    std::uint64_t rest = 0;
};

std::uint64_t lengthOf(const ZALNullableString& text) {
    return text ? text->size() : 0;
}

void readSerato(const ZALTag& tag, Sums& sums) {
    const auto oldMarker = tag.oldSeratoMarker();
    const auto marker = tag.seratoMarker();
    const auto grid = tag.seratoGrid();
    if (oldMarker) sums.rest += oldMarker->cuePoints().size();
    if (marker) sums.rest += marker->cuePoints().size();
    if (grid) sums.rest += grid->gridPoints().size();
    sums.payloads += marker.has_value() + grid.has_value();
}

void read(const std::string& path, Sums& sums) {
    const auto tag = ZALTag::tagAtPath(path, true);
    if (tag == nullptr) std::abort();
    ++sums.files;
    for (const auto& text : {tag->title(), tag->artist(), tag->album(), tag->genre(), tag->initialKey()}) {
        sums.texts += lengthOf(text);
    }
    for (const auto& text : {tag->modifiedBy(), tag->grouping(), tag->comment()}) {
        sums.rest += lengthOf(text);
    }
    sums.rest += static_cast<std::uint64_t>(tag->year() + tag->tempo() + tag->energyLevel());
    for (const ZALTagComment& comment : tag->allComments()) {
        sums.rest += lengthOf(comment.comment());
        ++sums.comments;
    }
    const auto key = tag->zalKey();
    const auto energy = tag->zalEnergy();
    const auto beatGrid = tag->zalBeatGrid();
    const auto cuePoints = tag->zalCuePoints();
    sums.payloads += key.has_value() + energy.has_value() + beatGrid.has_value() + cuePoints.has_value();
    sums.rest += tag->zalVelvetCascade().has_value();
    sums.rest += tag->seratoCuePoints().size();
    sums.rest += static_cast<std::uint64_t>(tag->hasSeratoMetadata() + tag->hasTraktorMetadata());
    tag->forEachImageData([&sums](ZALDataView data, std::uint32_t) { sums.pictures += data.size(); });
    readSerato(*tag, sums);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    ZALHost::shared().setLogSink([](const std::string&) {});
    Sums sums;
    Measure measure;
    measure.start();
    forEachLine(arguments[1], [&sums](const std::string& path) { read(path, sums); });
    measure.stop();
    measure.found("files", sums.files);
    measure.found("bytes of texts", sums.texts);
    measure.found("bytes of pictures", sums.pictures);
    measure.found("payloads", sums.payloads);
    measure.print();
    return sums.rest == 0;
}
