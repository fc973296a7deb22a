#include "Relocation.h"

#include <zaltag/collection/ZALCollectionPath.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace {

constexpr double longestDifference = 1;  // of two lengths, in seconds

std::string nameOf(const ZALTrackIdentity& identity) {
    const std::string loose = ZALLoosePath(identity.path.value_or(""));
    return loose.substr(loose.rfind('/') + 1);
}

// What both sides must have in common; empty when nothing is said.
std::string keyOf(const ZALTrackIdentity& identity, bool byTags) {
    if (!byTags) return identity.size ? nameOf(identity) : std::string();
    if (!identity.title || identity.title->empty() || !identity.artist || !identity.duration) return {};
    return *identity.title + '\n' + *identity.artist;
}

// Sizes in larger units may have been rounded either way.
bool hasSameSize(const ZALTrackIdentity& one, const ZALTrackIdentity& other) {
    if (!one.size || !other.size) return false;
    const std::uint64_t unit = std::max(one.sizeUnit, other.sizeUnit);
    const auto inUnits = [unit](const ZALTrackIdentity& identity) {
        return static_cast<double>(*identity.size) * static_cast<double>(identity.sizeUnit) /
               static_cast<double>(unit);
    };
    const double difference = std::abs(inUnits(one) - inUnits(other));
    return one.sizeUnit == other.sizeUnit ? difference == 0 : difference < 1;
}

bool isSame(const ZALTrackIdentity& one, const ZALTrackIdentity& other, bool byTags) {
    return byTags ? std::abs(*one.duration - *other.duration) <= longestDifference : hasSameSize(one, other);
}

}  // namespace

std::vector<std::pair<std::size_t, std::string>> relocated(const Collection& collection,
                                                           const std::vector<RelocatedItem>& items,
                                                           bool byTags) {
    std::unordered_multimap<std::string, const RelocatedItem*> wanted;
    for (const RelocatedItem& item : items) {
        const std::string key = keyOf(item.identity, byTags);
        if (!key.empty()) wanted.emplace(key, &item);
    }
    std::vector<std::pair<std::size_t, std::string>> found;
    if (wanted.empty()) return found;
    collection.database()->forEachIdentity([&](const ZALTrackIdentity& identity) {
        const std::string key = identity.path ? keyOf(identity, byTags) : std::string();
        if (key.empty()) return;
        const auto [begin, end] = wanted.equal_range(key);
        for (auto item = begin; item != end; ++item) {
            if (isSame(item->second->identity, identity, byTags))
                found.emplace_back(item->second->number, *identity.path);
        }
    });
    std::sort(found.begin(), found.end());
    return found;
}
