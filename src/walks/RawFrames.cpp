#include "walks/RawFrames.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "taglib/TagLibBytes.h"

#include <id3v2synchdata.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace zal {

namespace {

using TagLib::ByteVector;
namespace SynchData = TagLib::ID3v2::SynchData;

// Where version 2.4 put the frames of 2.2; for those that it left out, the name that 2.3 has.
constexpr std::pair<std::string_view, std::string_view> successors[] = {
    {"BUF", "RBUF"},  {"CNT", "PCNT"},  {"COM", "COMM"},  {"CRA", "AENC"}, {"EQU", "EQUA"}, {"ETC", "ETCO"},
    {"GEO", "GEOB"},  {"GP1", "GRP1"},  {"IPL", "TIPL"},  {"LNK", "LINK"}, {"MCI", "MCDI"}, {"MLL", "MLLT"},
    {"MVI", "MVIN"},  {"MVN", "MVNM"},  {"PCS", "PCST"},  {"PIC", "APIC"}, {"POP", "POPM"}, {"REV", "RVRB"},
    {"RVA", "RVAD"},  {"SLT", "SYLT"},  {"STC", "SYTC"},  {"TAL", "TALB"}, {"TBP", "TBPM"}, {"TCM", "TCOM"},
    {"TCO", "TCON"},  {"TCP", "TCMP"},  {"TCR", "TCOP"},  {"TCT", "TCAT"}, {"TDA", "TDAT"}, {"TDR", "TDRL"},
    {"TDS", "TDES"},  {"TDY", "TDLY"},  {"TEN", "TENC"},  {"TFT", "TFLT"}, {"TID", "TGID"}, {"TIM", "TIME"},
    {"TKE", "TKEY"},  {"TKW", "TKWD"},  {"TLA", "TLAN"},  {"TLE", "TLEN"}, {"TMT", "TMED"}, {"TOA", "TOPE"},
    {"TOF", "TOFN"},  {"TOL", "TOLY"},  {"TOR", "TDOR"},  {"TOT", "TOAL"}, {"TP1", "TPE1"}, {"TP2", "TPE2"},
    {"TP3", "TPE3"},  {"TP4", "TPE4"},  {"TPA", "TPOS"},  {"TPB", "TPUB"}, {"TRC", "TSRC"}, {"TRD", "TRDA"},
    {"TRK", "TRCK"},  {"TS2", "TSO2"},  {"TSA", "TSOA"},  {"TSC", "TSOC"}, {"TSI", "TSIZ"}, {"TSP", "TSOP"},
    {"TSS", "TSSE"},  {"TST", "TSOT"},  {"TT1", "TIT1"},  {"TT2", "TIT2"}, {"TT3", "TIT3"}, {"TXT", "TEXT"},
    {"TXX", "TXXX"},  {"TYE", "TDRC"},  {"UFI", "UFID"},  {"ULT", "USLT"}, {"WAF", "WOAF"}, {"WAR", "WOAR"},
    {"WAS", "WOAS"},  {"WCM", "WCOM"},  {"WCP", "WCOP"},  {"WFD", "WFED"}, {"WPB", "WPUB"}, {"WXX", "WXXX"},
    {"IPLS", "TIPL"}, {"TORY", "TDOR"}, {"TYER", "TDRC"},
};

// Flags of a frame, in the second octet of its flags.
struct Flags {
    unsigned group, compressed, encrypted, unsynchronised, length;
};
constexpr Flags flags23{0x20, 0x80, 0x40, 0, 0};
constexpr Flags flags24{0x40, 0x08, 0x04, 0x02, 0x01};

std::size_t idSize(unsigned version) {
    return version == 2 ? 3 : 4;
}
std::size_t headerSize(unsigned version) {
    return version == 2 ? 6 : 10;
}

bool isLetterOrDigit(std::uint8_t c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Small letters and blanks are wrong, but written; so is an id of version 2.2 in a frame of a later one.
bool isID(ZALDataView bytes, std::size_t at, unsigned version) {
    if (at > bytes.size() || bytes.size() - at < idSize(version) || !isLetterOrDigit(bytes[at])) return false;
    const auto isOfID = [](std::uint8_t c) { return isLetterOrDigit(c) || c == ' '; };
    if (version == 2) return isLetterOrDigit(bytes[at + 1]) && isLetterOrDigit(bytes[at + 2]);
    return isOfID(bytes[at + 1]) && isOfID(bytes[at + 2]) && (isOfID(bytes[at + 3]) || bytes[at + 3] == 0);
}

// A frame or padding begins there, or the tag ends.
bool leadsOn(ZALDataView bytes, std::uint64_t at) {
    if (at == bytes.size()) return true;
    if (at > bytes.size() || bytes.size() - at < 4) return false;
    const ZALDataView id = bytes.subspan(static_cast<std::size_t>(at), 4);
    return isUsualFrameID({id.begin(), id.end()}) || std::ranges::count(id, 0) == 4;
}

std::uint32_t syncSafe(std::uint32_t plain) {
    return (plain & 0x7F000000) >> 3 | (plain & 0x7F0000) >> 2 | (plain & 0x7F00) >> 1 | (plain & 0x7F);
}

// Some programs write the sizes of 2.4 as those of 2.3: then only the plain number leads to another frame.
std::uint32_t contentSizeAt(ZALDataView bytes, std::size_t at, unsigned version) {
    ByteReader reader(bytes.subspan(at + idSize(version)));
    if (version == 2) return std::uint32_t{reader.u8()} << 16 | reader.u16be();
    const std::uint32_t plain = reader.u32be();
    if (version == 3 || (plain & 0x80808080) != 0) return plain;
    const std::uint32_t safe = syncSafe(plain);
    if (safe == plain) return plain;
    const std::uint64_t content = at + headerSize(version);
    return leadsOn(bytes, content + plain) && !leadsOn(bytes, content + safe) ? plain : safe;
}

void putSyncSafe(ByteVector& bytes, unsigned at, std::uint32_t number) {
    for (unsigned i = 0; i < 4; ++i) {
        bytes[static_cast<int>(at + i)] = static_cast<char>(number >> (21 - 7 * i) & 0x7F);
    }
}

ByteVector syncSafeBytes(std::uint32_t number) {
    ByteVector bytes(4, '\0');
    putSyncSafe(bytes, 0, number);
    return bytes;
}

// A frame of version 2.4 whose content comes in two parts.
ByteVector madeFrame(const std::string& id, unsigned first, unsigned second, const ByteVector& front,
                     const ByteVector& body) {
    const unsigned size = front.size() + body.size();
    ByteVector frame(10 + size, '\0');
    std::copy_n(id.begin(), 4, frame.begin());
    putSyncSafe(frame, 4, size);
    frame[8] = static_cast<char>(first);
    frame[9] = static_cast<char>(second);
    std::copy(front.begin(), front.end(), frame.begin() + 10);
    std::copy(body.begin(), body.end(), frame.begin() + 10 + front.size());
    return frame;
}

ByteVector contentBytes(const RawFrame& frame) {
    return frame.bytes.mid(static_cast<unsigned>(headerSize(frame.version)));
}

bool isChapter(const std::string& id) {
    return id == "CHAP" || id == "CTOC";
}

// Where the frames in a chapter begin: behind its id and four times, or, in a table, behind its entries.
std::size_t behindChapterHead(const std::string& id, ZALDataView body) {
    const auto behindText = [body](std::size_t at) {
        const auto end = std::find(body.begin() + static_cast<std::ptrdiff_t>(at), body.end(), 0);
        return end == body.end() ? body.size() : static_cast<std::size_t>(end - body.begin()) + 1;
    };
    std::size_t at = behindText(0);
    if (id == "CHAP") return std::min(at + 16, body.size());
    unsigned entries = at + 1 < body.size() ? body[at + 1] : 0;
    at = std::min(at + 2, body.size());
    for (; entries > 0 && at < body.size(); --entries) {
        at = behindText(at);
    }
    return at;
}

// The frames in a chapter; none where the chapter is not to be read.
RawTag framesInChapter(const FrameContent& chapter, unsigned version, std::size_t at) {
    return rawFrames(version, false, chapter.body.mid(static_cast<unsigned>(at)));
}

bool hasReadableFrames(const FrameContent& content) {
    return isChapter(content.id) && !content.isCompressed && content.encryption < 0;
}

ByteVector converted(const RawFrame& frame, int depth);

ByteVector convertedChapter(const FrameContent& chapter, unsigned version, int depth) {
    const std::size_t at = behindChapterHead(chapter.id, viewOf(chapter.body));
    const RawTag inner = framesInChapter(chapter, version, at);
    ByteVector body = chapter.body.mid(0, static_cast<unsigned>(at));
    for (const RawFrame& frame : inner.frames) {
        body.append(converted(frame, depth + 1));
    }
    return body.append(inner.tail);
}

// Behind the format stand type, description and data in both forms.
constexpr unsigned oldPictureHead = 4;

std::string mimeTypeOf(const ByteVector& oldPicture) {
    const std::string format(oldPicture.mid(1, 3).data(), 3);
    if (format == "-->") return format;
    if (format == "JPG" || format == "jpg") return "image/jpeg";
    return format == "PNG" || format == "png" ? "image/png" : "image/" + format;
}

ByteVector convertedPicture(const ByteVector& old) {
    ByteVector body = old.mid(0, 1);
    const std::string mimeType = mimeTypeOf(old);
    body.append(ByteVector(mimeType.data(), static_cast<unsigned>(mimeType.size())));
    body.append('\0');
    return body.append(old.mid(oldPictureHead));
}

bool isOldPicture(const RawFrame& frame, const FrameContent& content) {
    return frame.version == 2 && content.id == "APIC" && content.body.size() > oldPictureHead;
}

// Of versions 2.2 and 2.3.
ByteVector convertedOldFrame(const RawFrame& frame, int depth) {
    FrameContent content = contentOf(frame);
    if (isOldPicture(frame, content)) content.body = convertedPicture(content.body);
    if (hasReadableFrames(content) && depth < limits::id3ChapterNesting)
        content.body = convertedChapter(content, frame.version, depth);
    ByteVector front;
    unsigned flags = 0;
    const auto add = [&](bool isSet, unsigned flag, const ByteVector& octets) {
        if (!isSet) return;
        flags |= flag;
        front.append(octets);
    };
    add(content.group >= 0, flags24.group, ByteVector(1, static_cast<char>(content.group)));
    add(content.encryption >= 0, flags24.encrypted, ByteVector(1, static_cast<char>(content.encryption)));
    add(content.isCompressed, flags24.compressed | flags24.length, syncSafeBytes(content.size));
    const unsigned old = frame.version == 3 ? static_cast<std::uint8_t>(frame.bytes[8]) : 0;
    return madeFrame(content.id, old >> 1 & 0x70, flags, front, content.body);
}

ByteVector converted(const RawFrame& frame, int depth) {
    if (frame.version < 4) return convertedOldFrame(frame, depth);
    if (!frame.isUnsynchronised && hasRightSize(frame)) return frame.bytes;
    const ByteVector content = contentBytes(frame);
    auto second = static_cast<std::uint8_t>(frame.bytes[9]);
    if (frame.isUnsynchronised && SynchData::decode(content) != content) second |= flags24.unsynchronised;
    return madeFrame(frame.id(), static_cast<std::uint8_t>(frame.bytes[8]), second, {}, content);
}

}  // namespace

std::string RawFrame::id() const {
    return {bytes.data(), idSize(version)};
}

std::string RawFrame::currentID() const {
    std::string current = id();
    if (version == 4) return current;
    while (current.size() > 3 && (current.back() == ' ' || current.back() == '\0')) {
        current.pop_back();
    }
    if (current.size() == 4 && current[0] != 'I' && current[0] != 'T') return current;
    for (const auto& [old, later] : successors) {
        if (current.size() == old.size() && current == old) return std::string(later);
    }
    return current.size() == 3 ? current + " " : id();
}

std::size_t RawFrame::contentSize() const {
    return bytes.size() - headerSize(version);
}

bool hasRightSize(const RawFrame& frame) {
    ByteReader said(viewOf(frame.bytes).subspan(4, 4));
    const std::uint32_t number = said.u32be();
    return (number & 0x80808080) == 0 && syncSafe(number) == frame.contentSize();
}

bool ID3v2Header::read(ZALDataView bytes) {
    constexpr std::string_view mark = "ID3";
    if (bytes.size() < length || !std::equal(mark.begin(), mark.end(), bytes.begin())) return false;
    ByteReader reader(bytes.subspan(3));
    version = reader.u8();
    revision = reader.u8();
    const unsigned flags = reader.u8();
    const std::uint32_t octets = reader.u32be();
    if (version == 0xFF || revision == 0xFF || (octets & 0x80808080) != 0) return false;
    size = syncSafe(octets);
    isUnsynchronised = (flags & 0x80) != 0;
    isExtended = version > 2 && (flags & 0x40) != 0;
    isCompressed = version == 2 && (flags & 0x40) != 0;
    hasFooter = version > 3 && (flags & 0x10) != 0;
    return true;
}

RawTag rawFrames(unsigned version, bool isUnsynchronised, const ByteVector& bytes) {
    RawTag tag;
    tag.version = version;
    const ZALDataView view = viewOf(bytes);
    std::size_t at = 0;
    while (at + headerSize(version) <= view.size() && isID(view, at, version)) {
        const std::uint64_t size = headerSize(version) + std::uint64_t{contentSizeAt(view, at, version)};
        if (size > view.size() - at || tag.frames.size() > limits::id3Frames) break;
        tag.frames.push_back(
            {version, isUnsynchronised, bytes.mid(static_cast<unsigned>(at), static_cast<unsigned>(size))});
        at += static_cast<std::size_t>(size);
    }
    const bool isPadding = std::ranges::all_of(view.subspan(at), [](std::uint8_t byte) { return byte == 0; });
    if (!isPadding) tag.tail = bytes.mid(static_cast<unsigned>(at));
    return tag;
}

RawTag rawTag(const ID3v2Header& header, const ByteVector& bytes) {
    if (header.version < 2 || header.version > 4 || header.isCompressed) {
        RawTag opaque;
        opaque.version = header.version;
        opaque.isOpaque = true;
        return opaque;
    }
    const bool isDecodedWhole = header.isUnsynchronised && header.version < 4;
    ByteVector decoded = isDecodedWhole ? SynchData::decode(bytes) : bytes;
    if (header.isExtended && decoded.size() >= 4) {
        const std::uint32_t number = viewOf(decoded).size() >= 4 ? ByteReader(viewOf(decoded)).u32be() : 0;
        // The size of version 2.3 is without itself.
        const std::uint64_t size = header.version == 3 ? 4 + std::uint64_t{number} : syncSafe(number);
        if (size <= decoded.size()) decoded = decoded.mid(static_cast<unsigned>(size));
    }
    return rawFrames(header.version, header.isUnsynchronised && !isDecodedWhole, decoded);
}

FrameContent contentOf(const RawFrame& frame) {
    FrameContent content;
    content.id = frame.currentID();
    content.body = contentBytes(frame);
    if (frame.version == 2) return content;
    const Flags& known = frame.version == 3 ? flags23 : flags24;
    const unsigned flags = static_cast<std::uint8_t>(frame.bytes[9]);
    if (frame.isUnsynchronised || (flags & known.unsynchronised) != 0)
        content.body = SynchData::decode(content.body);
    ByteReader reader(viewOf(content.body));
    const auto octet = [&](unsigned flag) { return (flags & flag) != 0 ? int{reader.u8()} : -1; };
    content.isCompressed = (flags & known.compressed) != 0;
    if (frame.version == 3) {
        if (content.isCompressed) content.size = reader.u32be();
        content.encryption = octet(known.encrypted);
        content.group = octet(known.group);
    } else {
        content.group = octet(known.group);
        content.encryption = octet(known.encrypted);
        // TagLib and others write a compressed frame's length also where the flag for it is missing.
        constexpr std::uint8_t deflate = 0x78;
        const bool isBare = content.isCompressed && (flags & known.length) == 0 && reader.remaining() > 0 &&
                            viewOf(content.body)[reader.offset()] == deflate;
        const bool hasLength = (flags & known.length) != 0 || (content.isCompressed && !isBare);
        if (hasLength) content.size = syncSafe(reader.u32be());
    }
    content.body = content.body.mid(static_cast<unsigned>(reader.offset()));
    return content;
}

bool isSameContent(const RawFrame& old, const RawFrame& now) {
    const bool isSameForm = old.version == now.version && old.isUnsynchronised == now.isUnsynchronised;
    if (isSameForm && old.bytes == now.bytes) return true;
    const FrameContent before = contentOf(old);
    FrameContent after = contentOf(now);
    if (before == after) return true;
    if (before.id != after.id) return false;
    if (isOldPicture(old, before)) return after.body == convertedPicture(before.body);
    if (!hasReadableFrames(before) || !hasReadableFrames(after)) return false;
    const std::size_t at = behindChapterHead(before.id, viewOf(before.body));
    const RawTag one = framesInChapter(before, old.version, at);
    const RawTag other = framesInChapter(after, now.version, at);
    const auto head = static_cast<unsigned>(at);
    if (before.body.mid(0, head) != after.body.mid(0, head) || one.tail != other.tail) return false;
    after.body = before.body;
    return before == after && std::ranges::equal(one.frames, other.frames, isSameContent);
}

ByteVector frameInVersion4(const RawFrame& frame) {
    return converted(frame, 0);
}

ByteVector plainFrame(const std::string& id, const ByteVector& body) {
    return madeFrame(id, 0, 0, {}, body);
}

ByteVector tagHeader(std::uint32_t size) {
    ByteVector header("ID3\4\0\0", 6);
    return header.append(syncSafeBytes(size));
}

bool isUsualFrameID(const std::string& id) {
    return id.size() == 4 &&
           std::ranges::all_of(id, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

}  // namespace zal
