#include "collection/PackedRequest.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace zal {

namespace {

template <typename Value>
void put(std::string& out, const Value& value) {
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// Small numbers, as nearly all are, take one byte.
void putSize(std::string& out, std::size_t size) {
    for (; size >= 0x80; size >>= 7) {
        out += static_cast<char>(size | 0x80);
    }
    out += static_cast<char>(size);
}

template <typename Value>
Value taken(std::string_view& in) {
    Value value{};
    std::memcpy(&value, in.data(), sizeof value);
    in.remove_prefix(sizeof value);
    return value;
}

std::size_t takenSize(std::string_view& in) {
    std::size_t size = 0;
    for (unsigned shift = 0;; shift += 7) {
        const auto byte = taken<std::uint8_t>(in);
        size |= std::size_t{byte & 0x7FU} << shift;
        if (byte < 0x80) return size;
    }
}

// A text, or null: its length comes one higher, null as 0.
void putText(std::string& out, const ZALNullableString& text) {
    putSize(out, text ? text->size() + 1 : 0);
    out += text.value_or("");
}

ZALNullableString takenText(std::string_view& in) {
    const std::size_t size = takenSize(in);
    if (size == 0) return std::nullopt;
    std::string text(in.substr(0, size - 1));
    in.remove_prefix(size - 1);
    return text;
}

// A bit each, above those of the kind of cues.
constexpr unsigned keepsTimes = 4, includesUndated = 8, hasOffset = 16;

void putRequest(std::string& out, const ZALCueRequest& request) {
    const bool isOff = request.offset != 0;
    put(out, static_cast<std::uint8_t>(
                 static_cast<unsigned>(request.kind) | (request.keepsTimes ? keepsTimes : 0) |
                 (request.includesUndated ? includesUndated : 0) | (isOff ? hasOffset : 0)));
    if (isOff) put(out, request.offset);
}

ZALCueRequest takenRequest(std::string_view& in) {
    const auto bits = taken<std::uint8_t>(in);
    ZALCueRequest request(static_cast<ZALCueKind>(bits & static_cast<unsigned>(ZALCueKind::all)));
    request.keepsTimes = (bits & keepsTimes) != 0;
    request.includesUndated = (bits & includesUndated) != 0;
    if ((bits & hasOffset) != 0) request.offset = taken<double>(in);
    return request;
}

// What a cue point says besides its time and name; a bit each.
constexpr unsigned saysEnd = 1, saysColor = 2, saysPad = 4, kindShift = 3;

void putCue(std::string& out, const ZALTagCuePoint& cue) {
    put(out, cue.time());
    putText(out, cue.name());
    const unsigned says = (cue.end() ? saysEnd : 0) | (cue.color() ? saysColor : 0) |
                          (cue.pad() ? saysPad : 0) | static_cast<unsigned>(cue.kind()) << kindShift;
    put(out, static_cast<std::uint8_t>(says));
    if (cue.end()) put(out, *cue.end());
    if (cue.color()) put(out, *cue.color());
    if (cue.pad()) put(out, *cue.pad());
}

ZALTagCuePoint takenCue(std::string_view& in) {
    const auto time = taken<double>(in);
    ZALTagCuePoint cue(time, takenText(in));
    const auto says = taken<std::uint8_t>(in);
    if (says & saysEnd) cue.setEnd(taken<double>(in));
    cue.setKind(static_cast<ZALTagCuePoint::Kind>(says >> kindShift));
    if (says & saysColor) cue.setColor(taken<std::uint32_t>(in));
    if (says & saysPad) cue.setPad(taken<int>(in));
    return cue;
}

}  // namespace

PackedRequest::PackedRequest(const ZALCollectionQueueItem& item, const std::string& key) {
    std::string out;
    putText(out, item.path == key ? ZALNullableString() : item.path);
    put(out, item.modificationDate);
    putRequest(out, item.request);
    putSize(out, item.cuePoints.size());
    for (const ZALTagCuePoint& cue : item.cuePoints) {
        putCue(out, cue);
    }
    const std::size_t size = out.size();
    bytes_ = std::make_unique<char[]>(sizeof size + size);  // no more than it takes
    std::memcpy(bytes_.get(), &size, sizeof size);
    std::memcpy(bytes_.get() + sizeof size, out.data(), size);
}

ZALCollectionQueueItem PackedRequest::item(const std::string& key) const {
    std::size_t size = 0;
    std::memcpy(&size, bytes_.get(), sizeof size);
    std::string_view in(bytes_.get() + sizeof size, size);
    ZALCollectionQueueItem item;
    item.path = takenText(in).value_or(key);
    item.modificationDate = taken<std::chrono::system_clock::time_point>(in);
    item.request = takenRequest(in);
    std::vector<ZALTagCuePoint> cuePoints(takenSize(in));
    for (ZALTagCuePoint& cue : cuePoints) {
        cue = takenCue(in);
    }
    item.cuePoints = cuePoints;
    return item;
}

}  // namespace zal
