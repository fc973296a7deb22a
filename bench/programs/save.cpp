// save inPlace|safe fields|page|grow|record ROUND LIST [PASSES]: opens every file of a list, changes its tags
// and saves it, that many times. `fields` sets title and comment to others of the same length, `page` the key
// alone, `grow` a comment of 1,500 characters, `record` the processing record.

#include "Measure.h"

#include <zaltag/zaltag.h>

#include <cstdlib>

namespace {

std::string sameLength(const ZALNullableString& text, char round) {
    if (!text || text->empty()) std::abort();
    return text->substr(0, text->size() - 1) + round;
}

void change(ZALTag& tag, const std::string& what, char round) {
    if (what == "fields") {
        tag.setTitle(sameLength(tag.title(), round));
        tag.setComment(sameLength(tag.comment(), round));
    } else if (what == "page") {
        tag.setInitialKey(sameLength(tag.initialKey(), round));
    } else if (what == "grow") {
        tag.setComment(std::string(1500, round));
    } else {
        const auto name = std::make_shared<const std::string>(std::string("before the processing ") + round);
        tag.setZalVelvetCascade(ZALTagVelvetCascade(name, true));
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 5) return 2;
    const std::string what = arguments[2];
    const char round = *arguments[3];
    ZALHost::shared().setSaveMode(arguments[1] == std::string("safe") ? ZALSaveMode::safe
                                                                      : ZALSaveMode::inPlace);
    std::uint64_t saved = 0;
    Measure measure;
    measure.start();
    for (int passes = passesOf(count, arguments, 5); passes > 0; --passes) {
        forEachLine(arguments[4], [&](const std::string& path) {
            const auto tag = ZALTag::tagAtPath(path);
            if (tag == nullptr) std::abort();
            change(*tag, what, letterOf(round, passes));
            saved += tag->save();
        });
    }
    measure.stop();
    measure.found("saved", saved);
    measure.print();
}
