#include "base/Failure.h"

namespace zal {

std::shared_ptr<const ZALError> underlyingError(const char* domain, const Failure& failure) {
    auto error = std::make_shared<ZALError>();
    error->domain = domain;
    error->localizedDescription = failure.reason();
    return error;
}

bool fillError(ZALError* error, ZALErrorCode code, const Failure& failure) {
    if (error == nullptr) return false;
    *error = ZALError();
    error->domain = ZALTagErrorDomain;
    error->code = code;
    error->localizedDescription = failure.reason();
    error->underlyingError = underlyingError("file system", failure);
    return false;
}

}  // namespace zal
