#include "platform/Inflation.h"

#include <zlib.h>

#include <array>
#include <new>
#include <utility>

namespace zal {

struct InflationCount::Stream : z_stream {};

InflationCount::InflationCount() : stream_(std::make_unique<Stream>()) {
    if (::inflateInit(stream_.get()) != Z_OK) throw std::bad_alloc();
}

InflationCount::~InflationCount() {
    ::inflateEnd(stream_.get());
}

bool InflationCount::take(ZALDataView bytes, std::uint64_t most) {
    std::array<std::uint8_t, 1 << 15> dropped;
    stream_->next_in = const_cast<Bytef*>(bytes.data());
    stream_->avail_in = static_cast<uInt>(bytes.size());
    do {
        stream_->next_out = dropped.data();
        stream_->avail_out = static_cast<uInt>(dropped.size());
        const int result = ::inflate(stream_.get(), Z_NO_FLUSH);
        made_ += dropped.size() - stream_->avail_out;
        if (made_ > most || (result != Z_OK && result != Z_BUF_ERROR)) return false;
    } while (stream_->avail_out == 0);
    return true;
}

ZALNullableData inflated(ZALDataView bytes, std::uint64_t most) {
    z_stream stream{};
    if (::inflateInit(&stream) != Z_OK) throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_streamp)> end(&stream, ::inflateEnd);
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    ZALData made;
    int result = Z_OK;
    while (result == Z_OK && made.size() <= most) {
        constexpr std::size_t block = 1 << 15;
        made.resize(made.size() + block);
        stream.next_out = made.data() + made.size() - block;
        stream.avail_out = block;
        result = ::inflate(&stream, Z_NO_FLUSH);
        made.resize(made.size() - stream.avail_out);
    }
    return result == Z_STREAM_END && made.size() <= most ? ZALNullableData(std::move(made)) : std::nullopt;
}

}  // namespace zal
