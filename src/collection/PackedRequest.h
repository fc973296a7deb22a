#pragma once

#include <zaltag/collection/ZALCollectionQueue.h>

#include <map>
#include <memory>
#include <string>

namespace zal {

/// A request as it waits for its batch, which may be that of a whole collection: in one piece of memory, a
/// quarter of what the item takes.
class PackedRequest {
  public:
    PackedRequest() = default;
    /// `key` is the path in the form that requests are kept by; it is needed again.
    PackedRequest(const ZALCollectionQueueItem& item, const std::string& key);
    ZALCollectionQueueItem item(const std::string& key) const;

  private:
    std::unique_ptr<char[]> bytes_;  // their number first
};

/// Requests by the decomposed path.
using PackedRequests = std::map<std::string, PackedRequest>;

}  // namespace zal
