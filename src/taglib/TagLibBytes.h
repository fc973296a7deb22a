#pragma once

#include <zaltag/base/ZALData.h>

#include <tbytevector.h>

namespace zal {

/// A copy of the bytes as TagLib takes them.
inline TagLib::ByteVector TagLibBytes(ZALDataView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<unsigned>(bytes.size())};
}

/// The bytes of one of TagLib's vectors; valid as long as any copy of it is left alone.
inline ZALDataView viewOf(const TagLib::ByteVector& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

}  // namespace zal
