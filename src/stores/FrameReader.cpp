#include "stores/FrameReader.h"

#include "base/Limits.h"
#include "base/Unicode.h"
#include "platform/Inflation.h"
#include "stores/ID3Frames.h"
#include "taglib/TagLibBytes.h"
#include "taglib/TagLibText.h"
#include "walks/ID3FrameWalk.h"

#include <id3v1genres.h>
#include <id3v2framefactory.h>
#include <id3v2header.h>
#include <textidentificationframe.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace zal {

namespace {

using TagLib::ByteVector;
using TagLib::ID3v2::Frame;
using TagLib::ID3v2::TextIdentificationFrame;

enum Encoding : std::uint8_t { latin1, utf16, utf16BigEndian, utf8 };

constexpr std::size_t languageSize = 3;

bool isTextFrame(const std::string& id) {
    return id[0] == 'T' || id == "GRP1" || id == "MVNM" || id == "MVIN" || id == "WFED";
}
bool hasLanguage(const std::string& id) {
    return id == "COMM" || id == "USLT";
}
bool beginsWithEncoding(const std::string& id) {
    return isTextFrame(id) || hasLanguage(id) || id == "GEOB" || id == "APIC" || id == "WXXX";
}

bool hasMark(ZALDataView text) {
    return text.size() >= 2 && ((text[0] == 0xFF && text[1] == 0xFE) || (text[0] == 0xFE && text[1] == 0xFF));
}

// How likely it is that a text is in one order: letters of Europe count most, then Japanese syllables.
int likelihood(ZALDataView text, std::size_t highByte) {
    int sum = 0;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
        const std::uint8_t high = text[at + highByte];
        sum += high == 0 ? 4 : high == 0x30 ? 2 : high > 0x30 && high < 0xA0 ? 1 : 0;
    }
    return sum;
}

// UTF-16 without a mark, with all its NULs, in big-endian order. Most that write it are little-endian.
ByteVector bigEndian(ZALDataView text) {
    const bool isSwapped = likelihood(text, 1) >= likelihood(text, 0);
    ByteVector out = TagLibBytes(text);
    for (unsigned at = 0; isSwapped && at + 1 < out.size(); at += 2) {
        std::swap(out[static_cast<int>(at)], out[static_cast<int>(at + 1)]);
    }
    return out;
}

std::size_t textsAt(const std::string& id) {
    return 1 + (hasLanguage(id) ? languageSize : 0);
}

// The encoding under which TagLib can read the texts of a body; null when that is the one it names.
std::optional<Encoding> encodingFor(const std::string& id, ZALDataView body) {
    if (body.empty() || !beginsWithEncoding(id)) return std::nullopt;
    if (body[0] > utf8) return latin1;  // TagLib takes a wider one where the text asks for it
    const bool isText = isTextFrame(id) || hasLanguage(id);
    if (body[0] == latin1 || !isText || body.size() <= textsAt(id)) return std::nullopt;
    const ZALDataView texts = body.subspan(textsAt(id));
    if (body[0] == utf8) {
        const bool isUTF8 = isValidUTF8({reinterpret_cast<const char*>(texts.data()), texts.size()});
        return isUTF8 ? std::nullopt : std::optional(latin1);
    }
    const bool isBare = body[0] == utf16 && !hasMark(texts) &&
                        std::ranges::any_of(texts, [](std::uint8_t byte) { return byte != 0; });
    // A mark further on would be a letter then.
    constexpr std::uint8_t inner[] = {0, 0, 0xFF, 0xFE};
    const auto mark = std::search(texts.begin(), texts.end(), std::begin(inner), std::end(inner));
    return isBare && mark == texts.end() ? std::optional(utf16BigEndian) : std::nullopt;
}

// A body whose texts TagLib can read.
ByteVector readableBody(const std::string& id, const ByteVector& body) {
    const std::optional<Encoding> encoding = encodingFor(id, viewOf(body));
    if (!encoding) return body;
    ByteVector out = body;
    out[0] = static_cast<char>(*encoding);
    if (*encoding != utf16BigEndian) return out;
    const std::size_t head = textsAt(id);
    return out.mid(0, static_cast<unsigned>(head)) + bigEndian(viewOf(body).subspan(head));
}

// TagLib's frames of raw ones, within what all of them may take.
class Maker {
  public:
    bool isSafe() const { return isSafe_; }

    std::unique_ptr<Frame> frameOf(const RawFrame& raw) {
        const std::string id = raw.currentID();
        if (!isSafe_ || !isUsualFrameID(id)) return nullptr;
        if (canStay(raw, id)) return made(raw.bytes, raw.version);
        const FrameContent content = contentOf(raw);
        if (content.encryption >= 0) return made(encryptedFrame(content), 4);
        if (content.body.isEmpty()) return nullptr;
        // Pictures of 2.2 and chapters get the form of 2.4.
        const bool isOfAnotherForm = raw.version < 4 && !content.isCompressed &&
                                     (content.id == "APIC" || content.id == "CHAP" || content.id == "CTOC");
        ByteVector body = content.body;
        if (isOfAnotherForm) body = contentOf({4, false, frameInVersion4(raw)}).body;
        if (content.isCompressed && !inflate(body)) return nullptr;
        return made(plainFrame(content.id, readableBody(content.id, body)), 4);
    }

  private:
    // A frame is not copied where TagLib reads the same from it as it stands.
    static bool canStay(const RawFrame& raw, const std::string& id) {
        const bool isPlain = raw.version > 2 && !raw.isUnsynchronised && raw.bytes[9] == 0;
        if (!isPlain || raw.contentSize() == 0 || id != raw.id()) return false;
        const ZALDataView bytes = viewOf(raw.bytes);
        if (encodingFor(id, bytes.last(raw.contentSize()))) return false;
        if (raw.version == 4) return hasRightSize(raw);
        // Chapters get other headers, and TagLib does not read the parts of a date.
        static constexpr std::string_view others[] = {"CHAP", "CTOC", "TDAT", "TIME"};
        return std::ranges::count(others, id) == 0;
    }

    // TagLib holds what is encrypted as bytes, the octet of the method among them.
    static ByteVector encryptedFrame(const FrameContent& content) {
        constexpr char encrypted = 0x04;
        ByteVector frame =
            plainFrame(content.id, ByteVector(1, static_cast<char>(content.encryption)) + content.body);
        frame[9] = encrypted;
        return frame;
    }

    bool inflate(ByteVector& body) {
        const ZALNullableData plain = inflated(viewOf(body), limits::id3Inflated - inflated_);
        if (!plain) return false;
        inflated_ += plain->size();
        body = TagLibBytes(*plain);
        return !body.isEmpty();
    }

    std::unique_ptr<Frame> made(const ByteVector& bytes, unsigned version) {
        isSafe_ = guard_.takes(viewOf(bytes), version);
        if (!isSafe_) return nullptr;
        header_.setMajorVersion(version);
        const TagLib::ID3v2::Header& header = header_;
        const auto* factory = TagLib::ID3v2::FrameFactory::instance();
        std::unique_ptr<Frame> frame(factory->createFrame(bytes, &header));
        if (frame != nullptr) setFrameVersion(*frame, 4);
        return frame;
    }

    FrameGuard guard_;
    TagLib::ID3v2::Header header_;
    std::uint64_t inflated_ = 0;
    bool isSafe_ = true;
};

// Dates

// The text of a frame, when it is the only one with its id in the tag.
struct DateFrame {
    ReadFrame* read = nullptr;
    std::string text;
};

DateFrame onlyFrame(const RawTag& tag, std::vector<ReadFrame>& frames, std::string_view id) {
    DateFrame found;
    int count = 0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const auto* text = dynamic_cast<TextIdentificationFrame*>(frames[i].frame.get());
        if (text == nullptr || tag.frames[i].id() != id) continue;
        found = {&frames[i], stringWithTagLibString(text->toString())};
        ++count;
    }
    return count == 1 ? found : DateFrame{};
}

// Two numbers of two digits within their ranges.
bool isPair(const std::string& text, int firstMin, int firstMax, int secondMin, int secondMax) {
    if (text.size() != 4 || !std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; }))
        return false;
    const int first = (text[0] - '0') * 10 + text[1] - '0';
    const int second = (text[2] - '0') * 10 + text[3] - '0';
    return first >= firstMin && first <= firstMax && second >= secondMin && second <= secondMax;
}

void merge(DateFrame& frame) {
    frame.read->frame.reset();
    frame.read->isMerged = true;
}

// Year, day and time of version 2.3 are one frame in 2.4.
void joinDates(const RawTag& tag, std::vector<ReadFrame>& frames) {
    if (tag.version != 3) return;
    DateFrame year = onlyFrame(tag, frames, "TYER");
    DateFrame day = onlyFrame(tag, frames, "TDAT");
    if (year.read == nullptr || year.text.size() != 4 || !isPair(day.text, 1, 31, 1, 12)) return;
    std::string date = year.text + "-" + day.text.substr(2) + "-" + day.text.substr(0, 2);
    merge(day);
    DateFrame time = onlyFrame(tag, frames, "TIME");
    if (isPair(time.text, 0, 23, 0, 59)) {
        date += "T" + time.text.substr(0, 2) + ":" + time.text.substr(2);
        merge(time);
    }
    year.read->frame->setText(TagLibString(date));
    year.read->isRenewed = true;
}

// Genres

// The name of a number of the ID3v1 list; empty for another text.
TagLib::String genreName(const TagLib::String& text) {
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    const bool hasDigits = !text.isEmpty() && text[0] >= '0' && text[0] <= '9';
    return isNumber && hasDigits ? TagLib::ID3v1::genre(number) : TagLib::String();
}

// The names for a value of one number, or of several, each in brackets; the value itself when it is not only
// that. A number without a name stays.
TagLib::StringList namedValues(const TagLib::String& value) {
    if (const TagLib::String name = genreName(value); !name.isEmpty()) return name;
    TagLib::StringList names;
    TagLib::String rest = value;
    while (rest.startsWith("(")) {
        const int end = rest.find(")");
        const TagLib::String name =
            end > 0 ? genreName(rest.substr(1, static_cast<unsigned>(end - 1))) : TagLib::String();
        if (name.isEmpty()) return value;
        names.append(name);
        rest = rest.substr(static_cast<unsigned>(end + 1));
    }
    return names.isEmpty() || !rest.isEmpty() ? TagLib::StringList(value) : names;
}

// TagLib joins the values of a genre; read as another text they are a list.
std::unique_ptr<Frame> asList(const RawFrame& raw) {
    const ByteVector body = readableBody("TCON", contentOf(raw).body);
    const TagLib::ID3v2::Header header;
    const auto* factory = TagLib::ID3v2::FrameFactory::instance();
    return std::unique_ptr<Frame>(factory->createFrame(plainFrame("TIT1", body), &header));
}

void nameGenre(const RawFrame& raw, ReadFrame& read) {
    auto* genre = dynamic_cast<TextIdentificationFrame*>(read.frame.get());
    const auto list = asList(raw);
    const auto* text = dynamic_cast<const TextIdentificationFrame*>(list.get());
    if (genre == nullptr || text == nullptr) return;
    TagLib::StringList names;
    for (const TagLib::String& value : text->fieldList()) {
        names.append(namedValues(value));
    }
    if (names == text->fieldList()) return;
    genre->setText(names);
    read.isRenewed = true;
}

}  // namespace

bool readFrames(const RawTag& tag, GenreNumbers genres, std::vector<ReadFrame>& frames,
                const std::function<bool(const std::string& id)>& isWanted) {
    if (tag.frames.size() > limits::id3Frames) return false;
    Maker maker;
    frames.reserve(tag.frames.size());
    for (const RawFrame& raw : tag.frames) {
        ReadFrame& read = frames.emplace_back();
        if (isWanted && !isWanted(raw.currentID())) continue;
        read.frame = maker.frameOf(raw);
        if (genres == GenreNumbers::named && read.frame != nullptr && read.frame->frameID() == "TCON")
            nameGenre(raw, read);
    }
    if (maker.isSafe()) joinDates(tag, frames);
    return maker.isSafe();
}

}  // namespace zal
