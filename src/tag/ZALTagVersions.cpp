// The newest versions of the analysis algorithms, from the maker's web service.

#include "base/Failure.h"
#include "platform/Log.h"

#include <zaltag/base/ZALJSON.h>
#include <zaltag/platform/ZALHTTPClient.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/platform/ZALMainQueue.h>
#include <zaltag/tag/ZALTag.h>

#include <atomic>
#include <utility>

namespace {

constexpr const char* servicePath = "/Services/Analysis/LatestAlgorithmVersions";

std::atomic<bool> areValid{false};

template <typename Record>
void takeVersion(const ZALJSONValue& reply) {
    const auto& members = reply.objectValue();
    const auto found = members.find(Record::algorithmKey());
    if (found == members.end()) return;
    Record::setAlgorithmVersion(found->second.integerValue());
}

zal::Failure taken(const ZALHTTPReply& reply) {
    if (!reply.ok) return fmt::format("failed to get algorithm version from the server: {}", reply.error);
    const std::string text(reply.body.begin(), reply.body.end());
    std::string reason;
    const auto parsed = ZALJSON::parse(text, &reason);
    if (!parsed || !parsed->isObject()) {
        if (parsed) reason = "it is no object";
        return fmt::format("failed to parse json data {} with error: {}", ZALValidUTF8(text), reason);
    }
    takeVersion<ZALTagKey>(*parsed);
    takeVersion<ZALTagEnergy>(*parsed);
    takeVersion<ZALTagBeatGrid>(*parsed);
    takeVersion<ZALTagCuePoints>(*parsed);
    areValid = true;
    return {};
}

void takeReply(const ZALHTTPReply& reply, const ZALCompletion& completion) {
    const zal::Failure failure = taken(reply);
    if (failure) completion ? zal::logFailure(failure.reason()) : zal::log(failure.reason());
    if (!completion) return;
    ZALMainQueue::shared().post([completion, failure] {
        ZALError error;
        if (failure) zal::fillError(&error, ZALErrorCode::none, failure);
        completion(!failure, failure ? &error : nullptr);
    });
}

}  // namespace

bool ZALTag::validAlgorithmVersions() {
    return areValid;
}

void ZALTag::updateAlgorithmVersions(ZALCompletion completion) {
    const ZALNullableString host = ZALHost::shared().serviceHost();
    if (!host) return takeReply({.ok = false, .error = "no service host is set", .body = {}}, completion);
    ZALHost::shared().httpClient()->get(
        "https://" + *host + servicePath,
        [completion = std::move(completion)](const ZALHTTPReply& reply) { takeReply(reply, completion); });
}
