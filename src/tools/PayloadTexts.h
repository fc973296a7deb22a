#pragma once

#include "records/Carriers.h"
#include "records/SeratoCuePoints.h"

#include <zaltag/base/ZALJSONValue.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zal {

/// What stands for a payload that cannot be decoded.
inline constexpr char unreadable[] = "*UNREADABLE*";

/// A record as a description shows it: its carriers, the label of its line, and its text. `is` stands between
/// a name and its value.
struct RecordText {
    const Carrier& carrier;
    const char* label;
    std::string (*text)(const std::optional<ZALJSONValue>& dictionary, std::string_view is);
};

/// A payload of Serato's likewise.
struct SeratoText {
    const Carrier& carrier;
    std::string (*text)(const ZALNullableData& payload, SeratoForm form);
};

/// Those that a description shows, in its order.
std::span<const RecordText> recordTexts();
std::span<const SeratoText> seratoTexts();

/// The mark of a picture, with a blank in front: " (ZAL Original)", " (ZAL Customized)" or nothing.
std::string markOfPicture(ZALDataView picture);

}  // namespace zal
