#include "tag/ArtworkPlan.h"

#include <algorithm>

namespace zal {

namespace {

std::optional<std::size_t> firstMarked(std::span<const ArtworkMark> marks, ArtworkMark mark) {
    const auto found = std::ranges::find(marks, mark);
    if (found == marks.end()) return std::nullopt;
    return static_cast<std::size_t>(found - marks.begin());
}

std::uint32_t primaryType(const ArtworkRules& rules) {
    return rules.primaryType.value_or(standardArtworkType);
}

// A further picture, carried over as it is.
PlannedPicture copyOf(const ArtworkRules& rules, std::size_t index) {
    return {index, false, false, rules.keepsTypes ? std::nullopt : std::optional(standardArtworkType)};
}

// The marked pictures on their side of the others; given in the order in which they stand in front.
ArtworkPlan ordered(const ArtworkRules& rules, ArtworkPlan marked, ArtworkPlan others) {
    if (rules.originalIsLast) {
        std::ranges::reverse(marked);
        std::swap(marked, others);
    }
    marked.insert(marked.end(), others.begin(), others.end());
    return marked;
}

}  // namespace

std::optional<std::size_t> originalPicture(const ArtworkRules& rules, std::span<const ArtworkMark> marks) {
    if (const auto marked = firstMarked(marks, ArtworkMark::original)) return marked;
    if (marks.empty()) return std::nullopt;
    const std::size_t unmarked = rules.originalIsLast ? marks.size() - 1 : 0;
    return marks[unmarked] == ArtworkMark::customized ? std::nullopt : std::optional(unmarked);
}

std::optional<std::size_t> customizedPicture(std::span<const ArtworkMark> marks) {
    return firstMarked(marks, ArtworkMark::customized);
}

ArtworkPlan backupPlan(const ArtworkRules& rules, std::size_t count) {
    if (count == 0) return {{std::nullopt, true, false, primaryType(rules)}};
    const PlannedPicture custom{std::nullopt, true, false, primaryType(rules)};
    const PlannedPicture backup{0, false, true, standardArtworkType};
    ArtworkPlan others;
    for (std::size_t i = 1; i < count; ++i) {
        others.push_back(copyOf(rules, i));
    }
    return ordered(rules, {custom, backup}, std::move(others));
}

ArtworkPlan restorePlan(const ArtworkRules& rules, std::span<const ArtworkMark> marks) {
    ArtworkPlan originals;
    ArtworkPlan others;
    for (std::size_t i = 0; i < marks.size(); ++i) {
        if (marks[i] == ArtworkMark::none) others.push_back(copyOf(rules, i));
        if (marks[i] != ArtworkMark::original) continue;
        if (!rules.keepsEveryOriginal) originals.clear();
        originals.insert(originals.begin(), {i, false, false, primaryType(rules)});
    }
    return ordered(rules, std::move(originals), std::move(others));
}

}  // namespace zal
