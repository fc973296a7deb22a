// The lens make of PNG files: of the input as a file whose check sums are put right, and of a small picture
// with the input as its EXIF block.

#include "LensMake.h"
#include "base/Endian.h"

#include <zlib.h>

namespace {

ZALData withRightSums(ZALDataView data) {
    ZALData out(data.begin(), data.end());
    for (std::size_t at = 8; at + 12 <= out.size();) {
        zal::ByteReader reader(ZALDataView(out).subspan(at));
        const std::size_t length = reader.u32be();
        if (length > out.size() - at - 12) break;
        zal::ByteWriter sum;
        sum.u32be(static_cast<std::uint32_t>(::crc32(0, &out[at + 4], static_cast<uInt>(length + 4))));
        std::copy(sum.data().begin(), sum.data().end(), &out[at + 8 + length]);
        at += length + 12;
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ZALData plain = ZALImage::imageWithPixels(8, 8, ZALData(256, 0x5A))->PNGData().value();
    markPicture(withRightSums({data, size}));
    const auto carrier = zal::pngFormat.withExif(plain, {data, size});
    if (!carrier) std::abort();
    markPicture(*carrier);
    return 0;
}
