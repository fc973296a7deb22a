#pragma once

#include <zaltag/base/ZALExport.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

class ZALTag;

/// The domain of every error of this library; the constant holds its own name.
ZALTAG_EXPORT extern const std::string ZALTagErrorDomain;
/// User-information key of the tag object whose save failed; the constant holds its own name.
ZALTAG_EXPORT extern const std::string ZALTagErrorFailingTagKey;

/// What went wrong, as the numbers hosts store and compare.
enum class ZALErrorCode : std::int64_t {
    none = 0,
    saveFailed = 1,                      ///< an audio file could not be saved
    openFailed = 2,                      ///< an audio file could not be opened
    propertyRefused = 3,                 ///< a field of an audio file cannot hold a value
    traktorRunning = 1000,               ///< the collection is not written while Traktor runs
    traktorCollectionUnreadable = 1003,  ///< unreadable or not well-formed
    traktorCollectionUnwritable = 1004,
    rekordboxCollectionUnwritable = 1005,
    rekordboxCollectionUnreadable = 1007,  ///< unreadable or not well-formed
};

/// An error of an operation that can fail: filled through an out-parameter, never thrown. A value; copy it
/// freely.
struct ZALTAG_EXPORT ZALError {
    std::string domain;  ///< ZALTagErrorDomain once the error is filled
    ZALErrorCode code = ZALErrorCode::none;

    std::string localizedDescription;         ///< empty when the operation gives none
    std::string localizedRecoverySuggestion;  ///< empty when the operation gives none
    std::shared_ptr<const ZALError> underlyingError;

    /// User information by key: ZALTagErrorFailingTagKey gives the tag object, held weakly.
    std::map<std::string, std::weak_ptr<ZALTag>> userInfo;

    /// The tag object under ZALTagErrorFailingTagKey; null when there is none or it is gone.
    std::shared_ptr<ZALTag> failingTag() const;
};
