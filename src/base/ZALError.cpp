#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALProgrammingError.h>

const std::string ZALTagErrorDomain = "ZALTagErrorDomain";
const std::string ZALTagErrorFailingTagKey = "ZALTagErrorFailingTagKey";

std::shared_ptr<ZALTag> ZALError::failingTag() const {
    const auto found = userInfo.find(ZALTagErrorFailingTagKey);
    return found == userInfo.end() ? nullptr : found->second.lock();
}

ZALProgrammingError::~ZALProgrammingError() = default;
