#include "records/CuePads.h"

#include <algorithm>

namespace zal {

namespace {

using Kind = ZALTagCuePoint::Kind;

bool isMarker(const ZALTagCuePoint& cue) {
    return cue.kind() != Kind::cue && cue.kind() != Kind::loop;
}

// Deals the pads of a program out.
class Pads {
  public:
    Pads(const ZALArray<ZALTagCuePoint>& cuePoints, const PadRules& rules)
        : cuePoints_(cuePoints),
          rules_(rules),
          isTaken_(static_cast<std::size_t>(rules.mostPads)),
          dealt_(cuePoints.size(), undecided) {}

    std::vector<int> inOrder();
    std::vector<int> asSaid();

  private:
    static constexpr int undecided = -2;

    template <typename Test>
    void decide(const Test& isMeant, int (Pads::*pad)(const ZALTagCuePoint& cue)) {
        for (std::size_t i = 0; i < dealt_.size(); ++i) {
            if (dealt_[i] == undecided && isMeant(cuePoints_[i])) dealt_[i] = (this->*pad)(cuePoints_[i]);
        }
    }
    int none(const ZALTagCuePoint&) { return ZALTagCuePoint::noPad; }
    int said(const ZALTagCuePoint& cue);
    int lowestFree(const ZALTagCuePoint& cue);

    const ZALArray<ZALTagCuePoint>& cuePoints_;
    const PadRules& rules_;
    std::vector<bool> isTaken_;
    std::vector<int> dealt_;
};

int Pads::said(const ZALTagCuePoint& cue) {
    const int pad = cue.pad().value_or(ZALTagCuePoint::noPad);
    if (pad < 0 || pad >= rules_.mostPads || isTaken_[static_cast<std::size_t>(pad)]) return undecided;
    isTaken_[static_cast<std::size_t>(pad)] = true;
    return pad;
}

int Pads::lowestFree(const ZALTagCuePoint& cue) {
    const auto end = isTaken_.begin() + rules_.pads;
    const auto free = std::find(isTaken_.begin(), end, false);
    if (free == end) return none(cue);
    *free = true;
    return static_cast<int>(free - isTaken_.begin());
}

std::vector<int> Pads::inOrder() {
    for (std::size_t i = 0; i < dealt_.size(); ++i) {
        const bool isOff = cuePoints_[i].kind() == Kind::load && !rules_.loadsHavePads;
        dealt_[i] = isOff ? ZALTagCuePoint::noPad : static_cast<int>(i);
    }
    return std::move(dealt_);
}

std::vector<int> Pads::asSaid() {
    const auto isOff = [](const ZALTagCuePoint& cue) { return cue.pad() == ZALTagCuePoint::noPad; };
    decide(
        [&](const ZALTagCuePoint& cue) {
            return (isOff(cue) && rules_.hasOthers) || (cue.kind() == Kind::load && !rules_.loadsHavePads);
        },
        &Pads::none);
    decide([](const ZALTagCuePoint& cue) { return !isMarker(cue); }, &Pads::said);
    decide(isMarker, &Pads::said);
    decide([&](const ZALTagCuePoint& cue) { return !isOff(cue); }, &Pads::lowestFree);
    decide(isOff, &Pads::lowestFree);
    return std::move(dealt_);
}

}  // namespace

bool saysPads(const ZALArray<ZALTagCuePoint>& cuePoints) {
    return std::any_of(cuePoints.begin(), cuePoints.end(),
                       [](const ZALTagCuePoint& cue) { return cue.pad().has_value(); });
}

std::vector<int> padsOf(const ZALArray<ZALTagCuePoint>& cuePoints, const PadRules& rules) {
    Pads pads(cuePoints, rules);
    return saysPads(cuePoints) ? pads.asSaid() : pads.inOrder();
}

}  // namespace zal
