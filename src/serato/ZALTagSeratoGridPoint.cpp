#include <zaltag/serato/ZALTagSeratoGridPoint.h>

#include "base/Description.h"
#include "base/Endian.h"
#include "platform/Log.h"

#include <bit>

std::optional<ZALTagSeratoGridPoint> ZALTagSeratoGridPoint::gridPointWithData(ZALDataView data) {
    if (data.size() != 8) {
        zal::logDamage(fmt::format("Serato grid point incorrect size: {}", zal::describe(data)));
        return std::nullopt;
    }
    zal::ByteReader in(data);
    ZALTagSeratoGridPoint point;
    point.position_ = in.f32be();
    point.beatsToNext_ = in.u32be();
    point.tempo_ = std::bit_cast<float>(point.beatsToNext_);
    return point;
}

std::string ZALTagSeratoGridPoint::description() const {
    return fmt::format("{} position: {}, beatsToNext: {}, tempo: {}",
                       zal::defaultDescription("ZALTagSeratoGridPoint", this), position_, beatsToNext_,
                       tempo_);
}
