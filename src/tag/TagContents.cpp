#include "tag/TagContents.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace zal {

Properties TagContents::properties() const {
    Properties found;
    for (const Listed& listed : stores_) {
        Properties some = listed.store->properties();
        found.values.merge(some.values);
        for (std::string& name : some.unsupported) {
            if (std::ranges::find(found.unsupported, name) == found.unsupported.end())
                found.unsupported.push_back(std::move(name));
        }
    }
    return found;
}

Failure TagContents::setProperty(const std::string& name, const Properties::Values& values) {
    const auto isWritten = [](const Listed& listed) { return listed.access == Access::readWrite; };
    const auto first = std::ranges::find_if(stores_, isWritten);
    if (first == stores_.end()) return "no tag of the file can be written";
    if (!values.empty()) {
        const Properties::Values held = first->store->heldValues(name, values);
        const std::string quoted = fmt::format("'{}'", fmt::join(values, "', '"));
        if (held.empty()) return fmt::format("the file has no place for {}", quoted);
        if (held != values) return fmt::format("{} would become '{}'", quoted, fmt::join(held, "', '"));
    } else if (std::ranges::any_of(stores_, [&](const Listed& listed) {
                   return !isWritten(listed) && listed.store->properties().contain(name);
               })) {
        return "a further tag of the file holds it, which is never written";
    }
    for (auto listed = first; listed != stores_.end(); ++listed) {
        const Properties::Values present = listed->store->properties().of(name);
        const bool isTold = !present.empty() || listed == first;
        if (isWritten(*listed) && isTold && present != values) listed->store->setProperty(name, values);
    }
    return {};
}

}  // namespace zal
