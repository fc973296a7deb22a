#pragma once

namespace zal {

/// Gives one open file the extended attributes of another, changing only what differs. Returns 0, or the
/// system's error number when an attribute of the user or the access control list cannot be kept. Attributes
/// of other name spaces are kept as far as the system lets, except those that vouch for the content. An
/// access control list that the target inherited from its folder goes when the source has none.
int copyExtendedAttributes(int source, int target);

}  // namespace zal
