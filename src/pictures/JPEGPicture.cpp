// JPEG: the segments in front of the pixels, and libjpeg.

#include "base/Endian.h"
#include "base/Limits.h"
#include "pictures/PictureFormats.h"

// The library's header takes its standard types from what was included before it.
#include <cstddef>
#include <cstdio>
//
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <csetjmp>

namespace zal {

namespace {

constexpr std::uint8_t app0 = 0xE0;
constexpr std::uint8_t app1 = 0xE1;
constexpr std::uint8_t startOfScan = 0xDA;
constexpr std::uint8_t endOfImage = 0xD9;
constexpr std::string_view exifStart{"Exif\0\0", 6};
constexpr std::size_t segmentMax = 0xFFFF;  // its length counts the two bytes that hold it

struct Segment {
    std::uint8_t marker = 0;
    ZALDataView content;
    std::size_t offset = 0;  // of the marker and the filling in front of it
    std::size_t end = 0;
};

// Walks the segments up to the first scan, by the rules of libjpeg: bytes between segments are skipped.
class SegmentReader {
  public:
    explicit SegmentReader(ZALDataView data) : data_(data) {}

    // Null behind the first scan's header, at an early end of the image and where the structure breaks.
    std::optional<Segment> next() {
        const std::size_t marker = ended_ ? 0 : findMarker();
        if (marker == 0) return std::nullopt;
        ByteReader reader(data_.subspan(marker + 1));
        const std::size_t length = reader.u16be();
        if (reader.failed() || length < 2 || length - 2 > reader.remaining()) return std::nullopt;
        Segment segment{data_[marker], reader.take(length - 2), startOfFilling(marker - 1),
                        marker + 1 + length};
        offset_ = segment.end;
        ended_ = segment.marker == startOfScan;
        return segment;
    }

  private:
    static bool standsAlone(std::uint8_t marker) {
        return marker == 0 || marker == 1 || (marker >= 0xD0 && marker <= 0xD7);
    }

    std::size_t startOfFilling(std::size_t marker) const {
        while (marker > offset_ && data_[marker - 1] == 0xFF) {
            --marker;
        }
        return marker;
    }

    // The position of the next marker's second byte; 0 when there is none.
    std::size_t findMarker() const {
        for (std::size_t i = offset_; i + 1 < data_.size(); ++i) {
            if (data_[i] != 0xFF || data_[i + 1] == 0xFF || standsAlone(data_[i + 1])) continue;
            return data_[i + 1] == endOfImage ? 0 : i + 1;
        }
        return 0;
    }

    ZALDataView data_;
    std::size_t offset_ = 2;  // behind the start of the image
    bool ended_ = false;
};

bool begins(ZALDataView data) {
    return beginsWith(data, "\xFF\xD8\xFF");
}

bool isFrameHeader(std::uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

std::optional<PictureSize> sizeOf(ZALDataView data) {
    SegmentReader reader(data);
    while (const auto segment = reader.next()) {
        if (!isFrameHeader(segment->marker)) continue;
        ByteReader fields(segment->content);
        fields.skip(1);
        const std::uint16_t height = fields.u16be();
        return PictureSize{fields.u16be(), height};
    }
    return std::nullopt;
}

// True when the end of the image stands behind the first scan's header.
bool looksWhole(ZALDataView data) {
    constexpr std::uint8_t end[] = {0xFF, endOfImage};
    SegmentReader reader(data);
    while (const auto segment = reader.next()) {
        if (segment->marker != startOfScan) continue;
        const ZALDataView scans = data.subspan(segment->end);
        return std::find_end(scans.begin(), scans.end(), std::begin(end), std::end(end)) != scans.end();
    }
    return false;
}

// One decoder and its errors. The library leaves through a jump: every function that sets one holds nothing
// that needs destroying, and so does everything between it and the library.
class Decoder {
  public:
    explicit Decoder(ZALDataView data) : data_(data) {
        info_.err = jpeg_std_error(&errors_.base);
        errors_.base.error_exit = fail;
        errors_.base.emit_message = note;
        errors_.base.output_message = keepQuiet;
    }
    ~Decoder() { jpeg_destroy_decompress(&info_); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    bool decode(PictureSize size, std::uint8_t* rgba) {
        if (setjmp(errors_.escape) != 0) return false;
        jpeg_create_decompress(&info_);
        info_.mem->max_memory_to_use = static_cast<long>(limits::decoderMemory);
        progress_.progress_monitor = countScans;
        info_.progress = &progress_;
        jpeg_mem_src(&info_, data_.data(), data_.size());
        jpeg_read_header(&info_, TRUE);
        const bool inks = info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK;
        info_.out_color_space = inks ? JCS_CMYK : JCS_EXT_RGBA;
        jpeg_start_decompress(&info_);
        if (PictureSize{info_.output_width, info_.output_height} != size) return false;
        if (info_.output_components != 4) return false;
        while (info_.output_scanline < info_.output_height) {
            JSAMPROW row = rgba + std::size_t{info_.output_scanline} * size.width * 4;
            jpeg_read_scanlines(&info_, &row, 1);
            if (inks) paint(row, size.width, info_.saw_Adobe_marker != 0);
        }
        jpeg_finish_decompress(&info_);
        return true;
    }

  private:
    struct Errors {
        jpeg_error_mgr base;  // first, so that the library's pointer is also one to this
        std::jmp_buf escape;
    };

    [[noreturn]] static void fail(j_common_ptr info) {
        std::longjmp(reinterpret_cast<Errors*>(info->err)->escape, 1);
    }

    // Below 0 the library could go on with made-up pixels. A missing end of the image and bytes between
    // segments leave the pixels whole.
    static void note(j_common_ptr info, int level) {
        const int code = info->err->msg_code;
        const bool harmless = code == JWRN_JPEG_EOF || code == JWRN_EXTRANEOUS_DATA ||
                              code == JWRN_ADOBE_XFORM || code == JWRN_JFIF_MAJOR;
        if (level < 0 && !harmless) fail(info);
    }

    static void keepQuiet(j_common_ptr /*info*/) {}

    static void countScans(j_common_ptr info) {
        const auto* decoder = reinterpret_cast<j_decompress_ptr>(info);
        if (decoder->input_scan_number > limits::jpegScans) fail(info);
    }

    // Inks to colours in place; Adobe's programs store them inverted.
    static void paint(std::uint8_t* row, std::size_t width, bool inverted) {
        const unsigned flip = inverted ? 0 : 0xFF;
        for (std::uint8_t* pixel = row; pixel != row + width * 4; pixel += 4) {
            const unsigned key = pixel[3] ^ flip;
            for (int i = 0; i < 3; ++i) {
                pixel[i] = static_cast<std::uint8_t>((pixel[i] ^ flip) * key / 0xFF);
            }
            pixel[3] = 0xFF;
        }
    }

    ZALDataView data_;
    jpeg_decompress_struct info_{};
    jpeg_progress_mgr progress_{};
    Errors errors_{};
};

bool decode(ZALDataView data, PictureSize size, std::uint8_t* rgba) {
    return Decoder(data).decode(size, rgba);
}

bool isExif(const Segment& segment) {
    return segment.marker == app1 && beginsWith(segment.content, exifStart);
}

ZALDataView exifOf(ZALDataView data) {
    SegmentReader reader(data);
    while (const auto segment = reader.next()) {
        if (isExif(*segment)) return segment->content.subspan(exifStart.size());
    }
    return {};
}

ZALData exifSegment(ZALDataView exif) {
    const std::size_t length = 2 + exifStart.size() + exif.size();
    ZALData out{0xFF, app1, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
    out.reserve(2 + length);
    out.insert(out.end(), exifStart.begin(), exifStart.end());
    out.insert(out.end(), exif.begin(), exif.end());
    return out;
}

ZALNullableData withExif(ZALDataView data, ZALDataView exif) {
    if (exif.size() > segmentMax - 2 - exifStart.size()) return std::nullopt;
    const ZALData added = exif.empty() ? ZALData() : exifSegment(exif);
    std::size_t place = 2;  // behind the start of the image and the JFIF header
    SegmentReader reader(data);
    while (const auto segment = reader.next()) {
        if (isExif(*segment)) return spliced(data, segment->offset, segment->end - segment->offset, added);
        if (segment->marker == app0 && segment->offset == place) place = segment->end;
    }
    return spliced(data, place, 0, added);
}

}  // namespace

const PictureFormat jpegFormat{"jpeg",  limits::picturePixels, begins, sizeOf, decode, looksWhole, exifOf,
                               withExif};

}  // namespace zal
