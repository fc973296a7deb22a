#pragma once

#include <zaltag/base/ZALError.h>

#include <memory>
#include <string>
#include <utility>

namespace zal {

/// Why something could not be done, in words for a person; nothing when it was done.
class Failure {
  public:
    Failure() = default;
    Failure(std::string reason) : reason_(std::move(reason)) {}  // empty: it was done
    Failure(const char* reason) : reason_(reason) {}
    explicit operator bool() const { return !reason_.empty(); }
    const std::string& reason() const { return reason_; }

  private:
    std::string reason_;
};

/// An error of the machine or of a library below, known by its text.
std::shared_ptr<const ZALError> underlyingError(const char* domain, const Failure& failure);

/// Fills an error of this library, when one is asked for: the reason is its description, and that of the
/// error below it. Gives false.
bool fillError(ZALError* error, ZALErrorCode code, const Failure& failure);

}  // namespace zal
