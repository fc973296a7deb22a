#include "tag/ZALTagBackEnds.h"

#include <zaltag/containers/ZALTagFLAC.h>
#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/containers/ZALTagWAV.h>
#include <zaltag/id3/ZALTagAIFF.h>
#include <zaltag/id3/ZALTagID3.h>

namespace zal {

namespace {

template <typename Class>
std::shared_ptr<ZALTag> make(const ZALNullableString& path, bool readOnly, ZALError* error) {
    return Class::initWithPath(path, readOnly, error);
}

template <typename Class>
constexpr BackEnd backEnd() {
    return {&Class::supportedFileTypes, &Class::canInitWithPath, &make<Class>};
}

}  // namespace

std::span<const BackEnd> backEnds() {
    static constexpr BackEnd table[] = {backEnd<ZALTagID3>(), backEnd<ZALTagMP4>(), backEnd<ZALTagWAV>(),
                                        backEnd<ZALTagAIFF>(), backEnd<ZALTagFLAC>()};
    return table;
}

}  // namespace zal
