#include <zaltag/platform/ZALTagCloudFileResolver.h>

#include "platform/Log.h"

#include <zaltag/platform/ZALHost.h>

ZALCloudStorage::~ZALCloudStorage() = default;

void ZALTagCloudFileResolver::resolveCloudBeforeUsingFileAtUrl(const std::string& path,
                                                               const Completion& completion) {
    const auto storage = ZALHost::shared().cloudStorage();
    if (storage == nullptr || !storage->isUbiquitousItem(path)) {
        completion(path);
        return;
    }
    std::string error;
    const ZALNullableString local = storage->coordinateReading(path, error);
    if (!local) zal::logf("Could not download local file {} from iCloud: {}", path, error);
    completion(local);
}
