#pragma once

#include "collection/TrackEdit.h"
#include "collection/XML.h"

#include <zaltag/base/ZALProgrammingError.h>
#include <zaltag/collection/ZALCollectionTrack.h>

#include <algorithm>

// What ZALTrackWithCues does; each program's track instantiates it once. A cue offers, for elements of the
// document: initWithXMLElement() and updateXMLElement(); for itself: copyAsStored() and order().

template <typename Cue>
Cue ZALTrackWithCues<Cue>::valueOf(const StoredCue& stored) {
    if (stored.value) return *stored.value;
    const auto read = Cue::initWithXMLElement(zal::XMLElement::ofHandle(stored.element));
    return read ? read->copyAsStored() : Cue();
}

template <typename Cue>
ZALArray<Cue> ZALTrackWithCues<Cue>::cues() const {
    std::vector<Cue> all;
    all.reserve(cues_.size());
    for (const StoredCue& stored : cues_) {
        all.push_back(valueOf(stored));
    }
    return all;
}

template <typename Cue>
void ZALTrackWithCues<Cue>::addCuesObject(const Cue& cue) {
    insertObject(cue, cues_.size());
}

template <typename Cue>
void ZALTrackWithCues<Cue>::insertObject(const Cue& cue, std::size_t inCuesAtIndex) {
    if (inCuesAtIndex > cues_.size()) throw ZALProgrammingError("a cue was inserted beyond the end");
    cues_.insert(cues_.begin() + static_cast<std::ptrdiff_t>(inCuesAtIndex),
                 {nullptr, std::make_shared<const Cue>(cue.copyAsStored()), cue.number()});
    setNeedsUpdate(true);
}

template <typename Cue>
void ZALTrackWithCues<Cue>::removeCuesObject(const Cue& cue) {
    for (std::size_t index = 0; index < cues_.size(); ++index) {
        if (valueOf(cues_[index]) == cue) return removeObjectFromCuesAtIndex(index);
    }
}

template <typename Cue>
void ZALTrackWithCues<Cue>::removeObjectFromCuesAtIndex(std::size_t index) {
    if (index >= cues_.size()) throw ZALProgrammingError("a cue was removed beyond the end");
    cues_.erase(cues_.begin() + static_cast<std::ptrdiff_t>(index));
    setNeedsUpdate(true);
}

template <typename Cue>
void ZALTrackWithCues<Cue>::removeCues(const std::function<bool(const Cue& cue)>& isGone) {
    const auto removed =
        std::erase_if(cues_, [&](const StoredCue& stored) { return isGone(valueOf(stored)); });
    if (removed != 0) setNeedsUpdate(true);
}

template <typename Cue>
bool ZALTrackWithCues<Cue>::replaceCues(const std::function<bool(const Cue& cue)>& isGone,
                                        const std::vector<Cue>& added) {
    const ZALArray<Cue> old = cues();
    removeCues(isGone);
    for (const Cue& cue : added) {
        addCuesObject(cue);
    }
    const ZALArray<Cue> now = cues();
    if (!(now == old)) return true;
    // Equal cues may have other colours.
    return !std::equal(now.begin(), now.end(), old.begin(), [](const Cue& one, const Cue& before) {
        return !one.color() || one.color() == before.color();
    });
}

template <typename Cue>
bool ZALTrackWithCues<Cue>::replaceCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                             const ZALCueRequest& request) {
    const ZALArray<Cue> here = cues();
    std::vector<Cue> added;
    for (const NewCue& made : newCues(asWritten(cuePoints, request), request.kind)) {
        const auto isHere = [&made](const Cue& cue) {
            return cue.number() == made.cue.number() && made.cue.copyAsStored().isSameMark(cue);
        };
        // What is not of the kind that goes may stand there from the last time.
        const bool stays =
            !isReplaced(made.cue, request.kind) && std::any_of(here.begin(), here.end(), isHere);
        if (!stays) added.push_back(made.cue);
    }
    return replaceCues([&](const Cue& cue) { return isReplaced(cue, request.kind); }, added);
}

// Each cue that is wanted takes one that is there, if there is one like it.
template <typename Cue>
auto ZALTrackWithCues<Cue>::match(const ZALArray<ZALTagCuePoint>& cuePoints,
                                  const ZALCueRequest& request) const -> Match {
    std::vector<Cue> values;
    Match match;
    for (const StoredCue& stored : cues_) {
        values.push_back(valueOf(stored));
        match.isRemoved.push_back(isReplaced(values.back(), request.kind));
    }
    const std::vector<NewCue> made = newCues(asWritten(cuePoints, request), request.kind);
    std::vector<bool> isTaken(cues_.size());
    for (const NewCue& one : made) {
        const Cue wanted = one.cue.copyAsStored();
        const bool isOther = !isReplaced(one.cue, request.kind);  // it may take one that stays in any case
        std::size_t at = 0;
        while (at < cues_.size() &&
               (isTaken[at] || !(match.isRemoved[at] || isOther) || cues_[at].number != one.cue.number() ||
                !wanted.isSameMark(values[at]))) {
            ++at;
        }
        if (at < cues_.size()) {
            match.isRemoved[at] = false;
            isTaken[at] = true;
        } else {
            match.added.push_back(wanted);
        }
    }
    for (const Cue& value : values) {
        match.givesWay.push_back(givesWay(value, made));
    }
    return match;
}

template <typename Cue>
bool ZALTrackWithCues<Cue>::givesWay(const Cue&, const std::vector<NewCue>&) const {
    return false;
}

template <typename Cue>
ZALArray<ZALTagCuePoint> ZALTrackWithCues<Cue>::cuePoints(ZALCueKind kind) const {
    std::vector<ZALTagCuePoint> found;
    for (const StoredCue& stored : cues_) {
        const Cue cue = valueOf(stored);
        if (isReplaced(cue, kind)) found.push_back(cue.cuePoint());
    }
    return found;
}

template <typename Cue>
ZALCuePlan ZALTrackWithCues<Cue>::planCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                const ZALCueRequest& request) const {
    ZALCuePlan plan;
    for (const ZALTagCuePoint& asked : ZALCuePointsMovedBy(ZALSortedCuePoints(cuePoints), request.offset)) {
        plan.outcomes.push_back({asked, std::nullopt});
    }
    const std::vector<NewCue> made = newCues(asWritten(cuePoints, request), request.kind);
    for (const NewCue& one : made) {
        plan.outcomes[one.place].held = one.cue.copyAsStored().cuePoint();
    }
    for (const StoredCue& stored : cues_) {
        if (givesWay(valueOf(stored), made)) ++plan.gridMarkersOffPads;
    }
    return plan;
}

template <typename Cue>
std::size_t ZALTrackWithCues<Cue>::Match::kept() const {
    return static_cast<std::size_t>(std::count(isRemoved.begin(), isRemoved.end(), false));
}

template <typename Cue>
bool ZALTrackWithCues<Cue>::Match::isChange() const {
    return !added.empty() || kept() != isRemoved.size() ||
           std::find(givesWay.begin(), givesWay.end(), true) != givesWay.end();
}

template <typename Cue>
bool ZALTrackWithCues<Cue>::hasCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                         const ZALCueRequest& request) const {
    return !match(cuePoints, request).isChange();
}

template <typename Cue>
zal::TrackEdit ZALTrackWithCues<Cue>::editOfMarks(const char* elementName, const zal::XMLStyle& style,
                                                  const ZALArray<ZALTagCuePoint>& cuePoints,
                                                  const ZALCueRequest& request,
                                                  zal::XMLDocument* scratch) const {
    const Match found = match(cuePoints, request);
    zal::TrackEdit edit;
    edit.style = style;
    edit.cues = found.kept() + found.added.size();
    edit.isChanged = found.isChange();
    std::vector<std::pair<const void*, std::size_t>> cues;
    for (std::size_t i = 0; i < cues_.size(); ++i) {
        cues.emplace_back(cues_[i].element, i);
    }
    std::sort(cues.begin(), cues.end());
    for (auto mark = element().firstChild(elementName); mark; mark = mark.next(elementName)) {
        const auto cue =
            std::lower_bound(cues.begin(), cues.end(), std::pair<const void*, std::size_t>(mark.handle(), 0));
        const bool isCue = cue != cues.end() && cue->first == mark.handle();
        if (isCue && found.givesWay[cue->second])
            edit.markAttributes[edit.isRemoved.size()] = {{padAttribute(), "-1", false}};
        edit.isRemoved.push_back(isCue ? found.isRemoved[cue->second] : edit.cues > 0);
    }
    for (const Cue& cue : found.added) {
        edit.added.emplace_back();
        if (scratch == nullptr) continue;
        const zal::XMLElement made = scratch->makeRoot(elementName);
        cue.writeTo(made);
        edit.added.back() = zal::markupOf(made, edit.style, 0);
    }
    return edit;
}

template <typename Cue>
bool ZALTrackWithCues<Cue>::readCues(const char* elementName) {
    struct Found {
        std::int64_t order;
        void* element;
    };
    std::vector<Found> found;
    bool hasElements = false;
    for (auto child = element().firstChild(elementName); child; child = child.next(elementName)) {
        hasElements = true;
        if (const auto order = Cue::orderOfXMLElement(child)) found.push_back({*order, child.handle()});
    }
    const auto isBefore = [](const Found& a, const Found& b) { return a.order < b.order; };
    std::stable_sort(found.begin(), found.end(), isBefore);
    cues_.reserve(found.size());
    for (const Found& cue : found) {
        cues_.push_back({cue.element, nullptr, cue.order});
    }
    if (!cues_.empty()) setNeedsUpdate(true);
    return hasElements && cues_.empty();
}

namespace zal {

template <typename Cue>
void bringMarkUpToDate(XMLElement element) {
    if constexpr (requires { Cue::isUpToDate(element); }) {
        if (Cue::isUpToDate(element)) return;
    }
    if (const auto cue = Cue::initWithXMLElement(element)) cue->updateXMLElement(element);
}

}  // namespace zal

template <typename Cue>
void ZALTrackWithCues<Cue>::writeCues(const char* elementName) {
    zal::XMLElement parent = element();
    std::vector<void*> kept;
    kept.reserve(cues_.size());
    for (const StoredCue& stored : cues_) {
        kept.push_back(stored.element);
    }
    std::sort(kept.begin(), kept.end());
    for (auto child = parent.firstChild(elementName); child;) {
        const zal::XMLElement next = child.next(elementName);
        if (!std::binary_search(kept.begin(), kept.end(), child.handle())) parent.removeChild(child);
        child = next;
    }
    for (StoredCue& stored : cues_) {
        if (stored.element != nullptr) {
            const auto element = zal::XMLElement::ofHandle(stored.element);
            zal::bringMarkUpToDate<Cue>(element);
            parent.moveToEnd(element);
        } else {
            const zal::XMLElement made = parent.appendChild(elementName);
            stored.value->writeTo(made);
            stored = {made.handle(), nullptr, stored.number};
        }
    }
}

template <typename Cue>
void ZALTrackWithCues<Cue>::leaveDocument() {
    for (StoredCue& stored : cues_) {
        if (stored.element != nullptr)
            stored = {nullptr, std::make_shared<const Cue>(valueOf(stored)), stored.number};
    }
    ZALCollectionTrack::leaveDocument();
}
