#include "records/SeratoSlots.h"

#include "base/Numbers.h"
#include "records/CuePads.h"
#include "serato/CueColors.h"
#include "serato/SlotColor.h"

#include <algorithm>
#include <array>

namespace zal {

namespace {

constexpr std::uint32_t rgbMask = 0xFFFFFF;

double seconds(std::uint32_t milliseconds) {
    return milliseconds / 1000.0;
}

std::string labelOf(const ZALTagCuePoint& cue) {
    return ZALValidUTF8(cue.name().value_or(""));  // what is not UTF-8 would read back as null
}

// As the file has it, also where the record leaves the colour to the slot.
ZALTagCuePoint cuePointOf(const ZALTagSeratoCuePoint& cue) {
    ZALTagCuePoint point(seconds(cue.position()), cue.label());
    const int slots = ZALTagSeratoCuePoint::maximumNumberOfCuePoints();
    point.setColor(writtenColor(cue.color(), cue.index(), slots) & rgbMask);
    point.setPad(cue.index());
    return point;
}

ZALTagCuePoint cuePointOf(const ZALTagSeratoLoop& loop) {
    ZALTagCuePoint point(seconds(loop.position()), loop.label());
    point.setEnd(seconds(loop.endPosition()));
    point.setColor(loop.color() & rgbMask);
    point.setPad(ZALTagCuePoint::noPad);
    return point;
}

// What stands in the slots of a marker: of several for one slot the first.
class Standing {
  public:
    explicit Standing(const std::optional<ZALTagSeratoMarker>& marker) {
        if (!marker) return;
        for (const ZALTagSeratoCuePoint& cue : marker->cuePoints()) {
            put(cues_, cue);
        }
        for (const ZALTagSeratoLoop& loop : marker->loops()) {
            put(loops_, loop);
        }
    }

    const ZALTagSeratoCuePoint* cue(int slot) const {
        return slot >= 0 && slot < slotCount ? cues_[static_cast<std::size_t>(slot)] : nullptr;
    }
    /// This very loop, also one that ends before it begins, where its slot is one of those; null without it.
    template <typename Test>
    const ZALTagSeratoLoop* loop(const ZALTagCuePoint& cue, const Test& isMeant) const {
        if (!cue.end()) return nullptr;
        const std::uint32_t begin = millisecondsFromSeconds(cue.time());
        const std::uint32_t end = millisecondsFromSeconds(*cue.end());
        for (const ZALTagSeratoLoop* one : loops_) {
            if (one != nullptr && one->position() == begin && one->endPosition() == end && isMeant(*one))
                return one;
        }
        return nullptr;
    }
    bool goesToLoops(const ZALTagCuePoint& cue) const {
        return cue.isLoop() || loop(cue, [](const ZALTagSeratoLoop&) { return true; }) != nullptr;
    }
    /// True for what stands in that very place, where the user may have put it beside the grid.
    bool holds(const ZALTagCuePoint& cue) const {
        const std::uint32_t position = millisecondsFromSeconds(cue.time());
        if (goesToLoops(cue)) {
            return std::any_of(loops_.begin(), loops_.end(), [position](const ZALTagSeratoLoop* one) {
                return one != nullptr && one->position() == position;
            });
        }
        const ZALTagSeratoCuePoint* there = this->cue(cue.pad().value_or(ZALTagCuePoint::noPad));
        return there != nullptr && there->position() == position;
    }

  private:
    static constexpr int slotCount = 8;
    static_assert(slotCount == ZALTagSeratoCuePoint::maximumNumberOfCuePoints() &&
                  slotCount == ZALTagSeratoLoop::maximumNumberOfLoops());

    template <typename One>
    using Slots = std::array<const One*, slotCount>;
    template <typename One>
    static void put(Slots<One>& slots, const One& one) {
        const One*& slot = slots[static_cast<std::size_t>(one.index())];
        if (slot == nullptr) slot = &one;
    }

    Slots<ZALTagSeratoCuePoint> cues_{};
    Slots<ZALTagSeratoLoop> loops_{};
};

// The colour of what stands there is kept as long as it is the one that is asked for, or none is.
std::uint32_t colorInSlot(const ZALTagCuePoint& cue, const ZALTagSeratoCuePoint* there) {
    if (there != nullptr && cue.color() == (there->color() & rgbMask)) return there->color();
    if (cue.color()) return nearestCueColor(*cue.color());
    const bool isSame = there != nullptr && cue.pad() == there->index() &&
                        there->position() == millisecondsFromSeconds(cue.time());
    return isSame ? there->color() : ZALTagSeratoCuePoint::colorNotSet;
}

ZALTagSeratoCuePoint cueInSlot(const ZALTagCuePoint& cue, int slot, const Standing& standing) {
    auto made = ZALTagSeratoCuePoint::cuePointWithIndex(static_cast<std::int16_t>(slot),
                                                        millisecondsFromSeconds(cue.time()), labelOf(cue));
    made.setColor(colorInSlot(cue, standing.cue(slot)));
    return made;
}

// The slots of Serato's loops as they are filled.
class LoopSlots {
  public:
    explicit LoopSlots(const Standing& standing) : standing_(standing) {}

    /// Where this loop stands, in its slot; null when there is none like it.
    const ZALTagSeratoLoop* keep(const ZALTagCuePoint& cue) {
        const auto* like =
            standing_.loop(cue, [this](const ZALTagSeratoLoop& loop) { return !slotOf(loop); });
        return like == nullptr ? nullptr : &put(loopFor(cue, *like));
    }
    /// In the lowest free slot; null without one.
    const ZALTagSeratoLoop* add(const ZALTagCuePoint& cue) {
        const auto free = std::find(slots_.begin(), slots_.end(), std::nullopt);
        if (free == slots_.end()) return nullptr;
        ZALTagSeratoLoop made = loopFor(cue, {});
        made.setIndex(static_cast<std::int16_t>(free - slots_.begin()));
        return &put(std::move(made));
    }
    std::vector<ZALTagSeratoLoop> loops() const {
        std::vector<ZALTagSeratoLoop> all;
        for (const auto& slot : slots_) {
            if (slot) all.push_back(*slot);
        }
        return all;
    }

  private:
    // What is not said stays as the old loop has it.
    static ZALTagSeratoLoop loopFor(const ZALTagCuePoint& cue, ZALTagSeratoLoop loop) {
        loop.setPosition(millisecondsFromSeconds(cue.time()));
        loop.setEndPosition(millisecondsFromSeconds(*cue.end()));
        if (cue.color() && cue.color() != (loop.color() & rgbMask)) loop.setColor(*cue.color());
        if (labelOf(cue) != loop.label().value_or("")) loop.setLabel(labelOf(cue));
        return loop;
    }
    std::optional<ZALTagSeratoLoop>& slotOf(const ZALTagSeratoLoop& loop) {
        return slots_[static_cast<std::size_t>(loop.index())];
    }
    const ZALTagSeratoLoop& put(ZALTagSeratoLoop loop) {
        auto& slot = slotOf(loop);
        return slot.emplace(std::move(loop));
    }

    const Standing& standing_;
    std::array<std::optional<ZALTagSeratoLoop>, ZALTagSeratoLoop::maximumNumberOfLoops()> slots_;
};

// Loops that are there keep their slots; the others get the free ones in the order of time.
void fillLoops(SeratoSlots& slots, std::vector<std::size_t> places, const Standing& standing) {
    LoopSlots loops(standing);
    const auto hold = [&](std::size_t place, const ZALTagSeratoLoop* loop) {
        if (loop != nullptr) slots.outcomes[place].held = cuePointOf(*loop);
        return loop != nullptr;
    };
    std::erase_if(places,
                  [&](std::size_t place) { return hold(place, loops.keep(slots.outcomes[place].asked)); });
    const auto beginOf = [&slots](std::size_t place) {
        return millisecondsFromSeconds(slots.outcomes[place].asked.time());
    };
    std::stable_sort(places.begin(), places.end(),
                     [&](std::size_t one, std::size_t other) { return beginOf(one) < beginOf(other); });
    for (const std::size_t place : places) {
        hold(place, loops.add(slots.outcomes[place].asked));
    }
    slots.loops = loops.loops();
}

// A cue that stands in its slot keeps what else the slot holds, unless nothing was said of its colour.
ZALTagSeratoCuePointOld oldCueFor(const ZALTagSeratoCuePoint& cue,
                                  const std::vector<ZALTagSeratoCuePointOld>& old) {
    auto made = ZALTagSeratoCuePointOld::cuePointWithIndex(cue.index(), cue.position());
    if (cue.color() == ZALTagSeratoCuePoint::colorNotSet) return made;
    for (const ZALTagSeratoCuePointOld& slot : old) {
        if (slot.index() == cue.index() && slot.position() == cue.position()) made = slot;
    }
    made.setColor(cue.color() & rgbMask);
    return made;
}

// All nine slots, the ninth as it was.
std::vector<ZALTagSeratoCuePointOld> oldLoopsFor(const std::vector<ZALTagSeratoLoop>& loops,
                                                 const std::vector<ZALTagSeratoCuePointOld>& old) {
    ZALTagSeratoCuePointOld unused = ZALTagSeratoCuePointOld::placeholderLoop();
    unused.setColor(0);
    std::vector<ZALTagSeratoCuePointOld> slots(ZALTagSeratoCuePointOld::maximumNumberOfLoopPoints(), unused);
    if (old.size() >= slots.size()) slots.back() = old[slots.size() - 1];
    for (const ZALTagSeratoLoop& loop : loops) {
        ZALTagSeratoCuePointOld& slot = slots[static_cast<std::size_t>(loop.index())];
        slot.setPosition(loop.position());
        slot.setLoopPosition(loop.endPosition());
        slot.setColor(loop.color() & rgbMask);
        slot.setLoopLocked(loop.isLocked() ? 1 : 0);
    }
    return slots;
}

}  // namespace

ZALArray<ZALTagCuePoint> cuePointsOfSeratoMarker(const std::optional<ZALTagSeratoMarker>& marker) {
    std::vector<ZALTagCuePoint> cuePoints;
    if (!marker) return cuePoints;
    for (const ZALTagSeratoCuePoint& cue : marker->cuePoints()) {
        cuePoints.push_back(cuePointOf(cue));
    }
    return cuePoints;
}

ZALArray<ZALTagCuePoint> loopsOfSeratoMarker(const std::optional<ZALTagSeratoMarker>& marker) {
    std::vector<ZALTagCuePoint> cuePoints;
    if (!marker) return cuePoints;
    for (const ZALTagSeratoLoop& loop : marker->loops()) {
        cuePoints.push_back(cuePointOf(loop));
    }
    return cuePoints;
}

ZALArray<ZALTagCuePoint> cuePointsOnSeratoGrid(const ZALArray<ZALTagCuePoint>& cuePoints,
                                               const std::optional<ZALTagSeratoGrid>& grid,
                                               const std::optional<ZALTagSeratoMarker>& marker) {
    if (!grid) return cuePoints;
    std::vector<ZALTagCuePoint> moved = cuePoints.elements();
    const Standing standing(marker);
    for (ZALTagCuePoint& cue : moved) {
        if (!standing.holds(cue)) cue.moveTo(grid->gridTimeForTime(cue.time()));
    }
    return moved;
}

SeratoSlots seratoSlotsFor(const ZALArray<ZALTagCuePoint>& cuePoints,
                           const std::optional<ZALTagSeratoMarker>& marker) {
    const Standing standing(marker);
    SeratoSlots slots;
    std::vector<ZALTagCuePoint> cues;
    std::vector<std::size_t> cuePlaces, loopPlaces;
    for (std::size_t i = 0; i < cuePoints.size(); ++i) {
        slots.outcomes.push_back({cuePoints[i], std::nullopt});
        if (standing.goesToLoops(cuePoints[i])) {
            loopPlaces.push_back(i);
        } else {
            cuePlaces.push_back(i);
            cues.push_back(cuePoints[i]);
        }
    }
    slots.cues.emplace();
    const std::vector<int> pads = padsOf(cues, {.hasOthers = false});
    for (std::size_t i = 0; i < cues.size(); ++i) {
        const int room = ZALTagSeratoCuePoint::maximumNumberOfCuePoints();
        if (pads[i] == ZALTagCuePoint::noPad || pads[i] > room) continue;
        // One cue more than there is room for says so in the log; the others would only say it again.
        ZALTagSeratoCuePoint made = cueInSlot(cues[i], pads[i], standing);
        if (pads[i] == room) continue;
        slots.outcomes[cuePlaces[i]].held = cuePointOf(made);
        slots.cues->push_back(std::move(made));
    }
    if (!loopPlaces.empty()) fillLoops(slots, loopPlaces, standing);
    return slots;
}

SeratoSlots seratoLoopSlotsFor(const ZALArray<ZALTagCuePoint>& loops,
                               const std::optional<ZALTagSeratoMarker>& marker) {
    const Standing standing(marker);
    SeratoSlots slots;
    std::vector<std::size_t> places;
    for (const ZALTagCuePoint& loop : loops) {
        if (standing.goesToLoops(loop)) places.push_back(slots.outcomes.size());
        slots.outcomes.push_back({loop, std::nullopt});
    }
    fillLoops(slots, places, standing);
    return slots;
}

ZALTagSeratoMarker seratoMarkerWithSlots(std::optional<ZALTagSeratoMarker> marker, const SeratoSlots& slots) {
    if (!marker) {
        marker.emplace();
        marker->setMajor(1);
        marker->setMinor(1);
    }
    if (slots.cues) marker->setCuePoints(*slots.cues);
    if (slots.loops) marker->setLoops(*slots.loops);
    return *std::move(marker);
}

ZALTagSeratoMarkerOld oldSeratoMarkerWithSlots(std::optional<ZALTagSeratoMarkerOld> marker,
                                               const SeratoSlots& slots) {
    if (!marker) {
        marker.emplace();
        marker->setMajor(2);
        marker->setMinor(5);
    }
    if (slots.cues) {
        std::vector<ZALTagSeratoCuePointOld> made;
        for (const ZALTagSeratoCuePoint& cue : *slots.cues) {
            made.push_back(oldCueFor(cue, marker->cuePoints()));
        }
        marker->setCuePoints(std::move(made));
    }
    if (slots.loops) marker->setLoopPoints(oldLoopsFor(*slots.loops, marker->loopPoints()));
    return *std::move(marker);
}

}  // namespace zal
