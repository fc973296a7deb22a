#pragma once

#include <zaltag/base/ZALError.h>
#include <zaltag/records/ZALTagVelvetCascade.h>

#include <optional>
#include <string>

namespace zal {

/// The record in the last VCAS chunk of a WAV file; null without one, and for one that cannot be read (one
/// log line when it holds something else).
std::optional<ZALTagVelvetCascade> readProcessingRecord(const std::string& path);

/// Rewrites a WAV file with the record in one VCAS chunk at its end: into a new file named as the path with
/// "_" behind it, which then takes the place of the old one in one step. Null when that was done, and also
/// when the new file could not be written: then one line was logged, and the old file is as it was. An error,
/// logged too, when the new file could not take its place or could not be removed.
std::optional<ZALError> writeProcessingRecord(const ZALTagVelvetCascade& record, const std::string& path);

/// Whether such a rewrite would carry over everything that the file holds: not so when the chunks are not as
/// the walker reads them, when something lies behind the form, and when the file would become too long.
bool canCarryProcessingRecord(const std::string& path);

}  // namespace zal
