#include <zaltag/tag/ZALTagComment.h>

#include "platform/Log.h"

void ZALTagComment::setComment(ZALNullableString comment) {
    if (comment != comment_ && !originalComment_) originalComment_ = std::move(comment_);
    comment_ = std::move(comment);
}

std::string ZALTagComment::description() const {
    return fmt::format("ID3 Version: {}\nLanguage: {}\nComment: {}\nOriginal Comment: {}", tagVersion_,
                       zal::describe(lang_), zal::describe(comment_), zal::describe(originalComment_));
}
