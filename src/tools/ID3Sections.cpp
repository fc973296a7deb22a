#include "tools/Sections.h"

#include "base/Unicode.h"
#include "platform/Log.h"
#include "stores/ID3Frames.h"
#include "taglib/TagLibBytes.h"
#include "tools/PayloadTexts.h"

#include <zaltag/records/ZALTagRecordData.h>

#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <generalencapsulatedobjectframe.h>
#include <id3v2header.h>
#include <privateframe.h>
#include <textidentificationframe.h>
#include <unknownframe.h>

namespace zal {

namespace {

namespace ID3v2 = TagLib::ID3v2;

// What follows a frame's id on its line. `Class` is what TagLib makes of such a frame.

std::string frameText(const ID3v2::CommentsFrame& frame) {
    const TagLib::ByteVector language = frame.language();
    return fmt::format(" ({}) [{}] - '{}'", utf8FromLatin1({language.data(), language.size()}),
                       stringWithTagLibString(frame.description()), stringWithTagLibString(frame.text()));
}

// The decoded content of an object that is known by its description; else nothing.
std::string objectText(const std::string& description, ZALDataView object) {
    for (const RecordText& record : recordTexts()) {
        if (description == record.carrier.object)
            return " : " + record.text(ZALTagRecordDictionary(object), " = ");
    }
    for (const SeratoText& serato : seratoTexts()) {
        if (description != serato.carrier.object) continue;
        return " : " + serato.text(ZALData(object.begin(), object.end()), SeratoForm::raw);
    }
    return {};
}

std::string frameText(const ID3v2::GeneralEncapsulatedObjectFrame& frame) {
    const TagLib::ByteVector object = frame.object();
    const std::string description = stringWithTagLibString(frame.description());
    return fmt::format(" ({}) <{} bytes> - '{}'{}", stringWithTagLibString(frame.mimeType()), object.size(),
                       description, objectText(description, viewOf(object)));
}

std::string frameText(const ID3v2::UserTextIdentificationFrame& frame) {
    TagLib::StringList values = frame.fieldList();
    if (!values.isEmpty()) values.erase(values.begin());  // the first one is the description
    return fmt::format(" ({}) - '{}'", stringWithTagLibString(frame.description()),
                       stringWithTagLibString(values.toString(" ")));
}

std::string frameText(const ID3v2::PrivateFrame& frame) {
    return fmt::format(" ({}) - <{} bytes>", stringWithTagLibString(frame.owner()), frame.data().size());
}

std::string frameText(const ID3v2::AttachedPictureFrame& frame) {
    const TagLib::ByteVector picture = frame.picture();
    return fmt::format(" ({}) <{} bytes> - '{}'{}", stringWithTagLibString(frame.mimeType()), picture.size(),
                       stringWithTagLibString(frame.description()), markOfPicture(viewOf(picture)));
}

template <typename Class>
ZALNullableString textAs(const ID3v2::Frame& frame) {
    const auto* known = dynamic_cast<const Class*>(&frame);
    return known != nullptr ? ZALNullableString(frameText(*known)) : std::nullopt;
}

ZALNullableString groupingText(const ID3v2::Frame& frame) {
    const bool isKnown = dynamic_cast<const ID3v2::UnknownFrame*>(&frame) != nullptr ||
                         dynamic_cast<const ID3v2::TextIdentificationFrame*>(&frame) != nullptr;
    if (!isKnown) return std::nullopt;
    const ZALNullableString text = textOfGRP1(&frame);
    return text ? fmt::format(" - '{}'", *text) : fmt::format(" - {}", unreadable);
}

struct KnownFrame {
    const char* id;
    ZALNullableString (*text)(const ID3v2::Frame& frame);  // null when the frame is not of its class
};

constexpr KnownFrame knownFrames[] = {
    {"COMM", textAs<ID3v2::CommentsFrame>},
    {"GEOB", textAs<ID3v2::GeneralEncapsulatedObjectFrame>},
    {"TXXX", textAs<ID3v2::UserTextIdentificationFrame>},
    {"PRIV", textAs<ID3v2::PrivateFrame>},
    {"APIC", textAs<ID3v2::AttachedPictureFrame>},
    {"GRP1", groupingText},
};

void describeFrame(Report& report, const ID3v2::Frame& frame) {
    const TagLib::ByteVector id = frame.frameID();
    for (const KnownFrame& known : knownFrames) {
        if (id != known.id) continue;
        if (const ZALNullableString text = known.text(frame)) {
            report.line("{}{}", known.id, *text);
        } else {
            logf("TagInspect: Ignoring {} frame after failed cast.", known.id);
        }
    }
}

}  // namespace

void describeStandardFields(Report& report, const std::vector<const TagLib::Tag*>& tags) {
    const auto text = [&](const char* label, TagLib::String (TagLib::Tag::*field)() const) {
        TagLib::String value;
        for (const TagLib::Tag* tag : tags) {
            if (value.isEmpty()) value = (tag->*field)();
        }
        report.text(label, value);
    };
    const auto number = [&](const char* label, unsigned (TagLib::Tag::*field)() const) {
        unsigned value = 0;
        for (const TagLib::Tag* tag : tags) {
            if (value == 0) value = (tag->*field)();
        }
        report.value(label, value);
    };
    text("title", &TagLib::Tag::title);
    text("artist", &TagLib::Tag::artist);
    text("album", &TagLib::Tag::album);
    text("comment", &TagLib::Tag::comment);
    text("genre", &TagLib::Tag::genre);
    number("year", &TagLib::Tag::year);
    number("track", &TagLib::Tag::track);
}

void describeFrames(Report& report, const ID3v2::Tag& tag) {
    for (const ID3v2::Frame* frame : tag.frameList()) {
        describeFrame(report, *frame);
    }
}

void describeID3v2(Report& report, const ID3v2::Tag& tag) {
    const ID3v2::Header& header = *tag.header();
    report.title(fmt::format("ID3v2.{}.{}, {} bytes in tag", header.majorVersion(), header.revisionNumber(),
                             header.tagSize()));
    describeFrames(report, tag);
}

void describeID3v1(Report& report, const TagLib::ID3v1::Tag* tag) {
    if (tag == nullptr) return report.line("no ID3v1 tag found");
    report.title("ID3v1 Tag");
    describeStandardFields(report, {tag});
}

void describeMP3(Report& report, MP3File& file) {
    const TagLib::ID3v1::Tag* v1 = file.v1() != nullptr ? &file.v1()->tag() : nullptr;
    if (!file.hasV2() && v1 == nullptr) return report.line("no ID3V1 or ID3V2 tag found");
    const auto tags = file.v2Tags();
    if (file.hasV2()) {
        // The first one may be missing, when there is only one at the end.
        describeID3v2(report, *tags[file.v2().room() > 0 ? 0 : 1]);
    } else {
        report.line("no ID3v2 tag found");
    }
    describeID3v1(report, v1);
}

void describeAIFF(Report& report, FormFile& file) {
    if (!file.hasV2()) return report.line("no ID3V2 tag found");
    describeID3v2(report, file.v2().tag());
    describeID3v1(report, nullptr);
}

}  // namespace zal
