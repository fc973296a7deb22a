#pragma once

#include <zaltag/base/ZALError.h>

#include <functional>

/// Takes the outcome of an operation that ended later: success, and the error of a failure that has one,
/// else null. The error lives for the call.
using ZALCompletion = std::function<void(bool success, const ZALError* error)>;
