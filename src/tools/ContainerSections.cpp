#include "tools/Sections.h"

#include "stores/MP4Fields.h"
#include "stores/XiphFields.h"
#include "tag/TagContents.h"
#include "taglib/TagLibBytes.h"
#include "taglib/TagLibText.h"
#include "tools/PayloadTexts.h"

#include <zaltag/records/ZALTagRecordData.h>

#include <flacpicture.h>
#include <infotag.h>
#include <mp4coverart.h>
#include <mp4tag.h>
#include <xiphcomment.h>

namespace zal {

namespace {

// Payloads of which the stores hold none have no line.

ZALNullableData payloadIn(const TagContents& stores, const Carrier& carrier) {
    return stores.firstPayload(
        carrier, [](const ZALData& payload, const TagStore&) { return ZALNullableData(payload); });
}

void describeSerato(Report& report, const TagContents& stores) {
    for (const SeratoText& serato : seratoTexts()) {
        const ZALNullableData payload = payloadIn(stores, serato.carrier);
        if (payload) report.value("Serato", serato.text(payload, SeratoForm::encoded));
    }
}

void describeRecords(Report& report, const TagContents& stores) {
    report.title("CUSTOM");
    for (const RecordText& record : recordTexts()) {
        const ZALNullableData payload = payloadIn(stores, record.carrier);
        if (payload) report.value(record.label, record.text(ZALTagRecordDictionary(*payload), ": "));
    }
}

void describePicture(Report& report, const char* label, const std::string& type,
                     const TagLib::ByteVector& picture) {
    report.line("{} - [{}, {} bytes]{}", label, type, picture.size(), markOfPicture(viewOf(picture)));
}

// WAV

void describeInfo(Report& report, FormFile& file) {
    report.title("INFO Chunk");
    if (!file.hasInfo()) return report.line("not found");
    for (const char* id : {"INAM", "IART", "IPRD", "ICMT", "IGNR", "ICRD"}) {
        const TagLib::String text = file.info().fieldText(id);
        if (!text.isEmpty()) report.line("{} - '{}'", id, stringWithTagLibString(text));
    }
}

// MP4

const char* typeOf(TagLib::MP4::CoverArt::Format format) {
    using TagLib::MP4::CoverArt;
    switch (format) {
        case CoverArt::JPEG:
            return "image/jpeg";
        case CoverArt::PNG:
            return "image/png";
        case CoverArt::BMP:
            return "image/bmp";
        case CoverArt::GIF:
            return "image/gif";
        default:
            return "unknown";
    }
}

void describeCovers(Report& report, const TagLib::MP4::Tag& tag) {
    const auto covers =
        tag.contains("covr") ? tag.item("covr").toCoverArtList() : TagLib::MP4::CoverArtList();
    if (covers.isEmpty()) return report.line("covers - none");
    for (const TagLib::MP4::CoverArt& cover : covers) {
        describePicture(report, "cover", typeOf(cover.format()), cover.data());
    }
}

void describeExtras(Report& report, const TagLib::MP4::Tag& tag, const TagContents& stores) {
    report.title("EXTRA");
    if (const auto key = stores.text(TextField::initialKey)) report.value("key", *key);
    if (tag.contains("tmpo")) report.value("tempo", tag.item("tmpo").toInt());
    const std::int64_t energy = stores.number(NumberField::energyLevel);
    if (energy != 0) report.value("energy", energy);
    if (tag.contains("trkn")) {
        const auto [number, total] = tag.item("trkn").toIntPair();
        report.value("track", fmt::format("{} of {}", number, total));
    }
    describeCovers(report, tag);
    describeSerato(report, stores);
}

// FLAC

void describeFields(Report& report, const TagLib::Ogg::XiphComment& comment) {
    report.title("Xiph Tag");
    for (const auto& [name, values] : comment.fieldListMap()) {
        report.line("{} - '{}'", stringWithTagLibString(name),
                    stringWithTagLibString(values.toString("' + '")));
    }
}

void describePictures(Report& report, const FLACFile& file) {
    if (file.pictures().empty()) return report.line("no images found");
    report.title("Images");
    for (const auto& picture : file.pictures()) {
        describePicture(report, "image", stringWithTagLibString(picture->mimeType()), picture->data());
    }
}

}  // namespace

void describeWAV(Report& report, FormFile& file) {
    describeInfo(report, file);
    if (!file.hasV2()) return report.line("no ID3 tag found");
    report.title("ID3 Tag");
    describeID3v2(report, file.v2().tag());
}

void describeMP4(Report& report, MP4File& file) {
    const TagLib::MP4::Tag& tag = file.tag();
    TagContents stores;
    stores.add(std::make_unique<MP4Fields>(file.tag()));
    report.title("MP4 Tag");
    describeStandardFields(report, {&tag});
    describeExtras(report, tag, stores);
    describeRecords(report, stores);
    report.title("ATOMS");
    for (const auto& [name, item] : tag.itemMap()) {
        report.text("atom", name);
    }
}

void describeFLAC(Report& report, FLACFile& file) {
    const TagLib::ID3v1::Tag* v1 = file.v1() != nullptr ? &file.v1()->tag() : nullptr;
    TagContents stores;
    for (const XiphStore& store : file.comments()) {
        stores.add(std::make_unique<XiphFields>(store.comment()), Access::readOnly);
    }
    std::vector<const TagLib::Tag*> tags;
    if (file.hasComment()) {
        describeFields(report, file.comment());
        tags.push_back(&file.comment());
    } else {
        report.line("no Xiph tag found");
    }
    if (file.hasV2()) tags.push_back(&file.v2().tag());
    if (v1 != nullptr) tags.push_back(v1);
    report.title("SUMMARY");
    describeStandardFields(report, tags);
    describeSerato(report, stores);
    describeRecords(report, stores);
    if (file.hasV2()) {
        report.title("ID3v2 Tag");
        describeFrames(report, file.v2().tag());
    } else {
        report.line("no ID3v2 tag found");
    }
    describeID3v1(report, v1);
    describePictures(report, file);
}

}  // namespace zal
