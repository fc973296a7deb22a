#include <zaltag/containers/ZALTagFLAC.h>

#include "base/Numbers.h"
#include "containers/FLACState.h"
#include "containers/TextCarrier.h"
#include "id3/ID3State.h"
#include "id3/TagFile.h"
#include "id3/TagLibText.h"
#include "tag/ZALTagBackEnds.h"

namespace zal {

ZALNullableString fieldText(const TagLib::Ogg::XiphComment& comment, const std::string& name) {
    const TagLib::Ogg::FieldListMap& fields = comment.fieldListMap();
    const auto field = fields.find(TagLibString(name).upper());
    return field != fields.end() ? ZALNullableString(joinedText(field->second)) : std::nullopt;
}

ZALNullableString fieldText(const FLACFile& file, const std::string& name) {
    for (const XiphStore& store : file.comments()) {
        if (ZALNullableString text = fieldText(store.comment(), name)) return text;
    }
    return std::nullopt;
}

void setFieldText(TagLib::Ogg::XiphComment& comment, const std::string& name, const TagLib::String& text) {
    comment.addField(TagLibString(name), text, true);
}

}  // namespace zal

namespace {

using TagLib::Ogg::XiphComment;

constexpr char commentField[] = "COMMENT";
constexpr char tempoField[] = "BPM";
constexpr char keyField[] = "INITIALKEY";
constexpr char energyField[] = "ENERGYLEVEL";

// A text of the Xiph comment; null when it is empty, so that the ID3 tags are asked.
ZALNullableString textOrNull(std::string text) {
    return text.empty() ? std::nullopt : ZALNullableString(std::move(text));
}

ZALNullableString basicField(const zal::FLACFile& file, TagLib::String (XiphComment::*field)() const) {
    for (const zal::XiphStore& store : file.comments()) {
        if (auto text = textOrNull(zal::stringWithTagLibString((store.comment().*field)()))) return text;
    }
    return std::nullopt;
}

ZALNullableString nonEmptyField(const zal::FLACFile& file, const char* name) {
    return textOrNull(zal::fieldText(file, name).value_or(""));
}

std::int64_t numberField(const zal::FLACFile& file, const char* name) {
    return zal::integerValue(zal::fieldText(file, name).value_or(""));
}

// Numbers below 1 remove the field.
void setNumberField(XiphComment& comment, const char* name, std::int64_t number) {
    zal::setFieldText(comment, name, number > 0 ? TagLib::String(std::to_string(number)) : TagLib::String());
}

}  // namespace

ZALTagFLAC::ZALTagFLAC() = default;
ZALTagFLAC::~ZALTagFLAC() = default;

// Opening and saving

const ZALArray<std::string>& ZALTagFLAC::supportedFileTypes() {
    static const ZALArray<std::string> types{"flac"};
    return types;
}

bool ZALTagFLAC::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTagFLAC> ZALTagFLAC::tagAtPath(const ZALNullableString& path, bool readOnly,
                                                  ZALError* error) {
    return canInitWithPath(path) ? initWithPath(path, readOnly, error) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagFLAC::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagFLAC", path);
}

std::shared_ptr<ZALTagFLAC> ZALTagFLAC::initWithPath(const ZALNullableString& path, bool readOnly,
                                                     ZALError* error) {
    const auto open = [readOnly](const std::string& file, zal::Failure& failure) {
        const std::shared_ptr<ZALTagFLAC> tag(new ZALTagFLAC);
        return tag->openFLAC(file, readOnly, failure) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagFLAC initWithPath:readOnly:]", path, canInitWithPath(path), error, open);
}

bool ZALTagFLAC::openFLAC(const std::string& path, bool readOnly, zal::Failure& failure) {
    State& s = state();
    s.stream = zal::TagLibStream::open(path, readOnly, &failure);
    if (s.stream == nullptr) return false;
    flacfile_ = zal::FLACFile::open(*s.stream);
    if (flacfile_ == nullptr) return false;
    s.setV2TagsOf(*flacfile_);
    if (flacfile_->v1() != nullptr) s.v1Tag = &flacfile_->v1()->tag();
    return true;
}

bool ZALTagFLAC::readOnly() const {
    return state().stream->readOnly();
}

bool ZALTagFLAC::save(ZALError* error) {
    if (!ZALTagID3::save(error)) return false;
    const auto failure = zal::saveFile(*state().stream, *flacfile_);
    return !failure || failSave(error, failure);
}

// Basic fields

ZALNullableString ZALTagFLAC::artist() const {
    const auto artist = basicField(*flacfile_, &XiphComment::artist);
    return artist ? artist : ZALTagID3::artist();
}
void ZALTagFLAC::setArtist(const ZALNullableString& artist) {
    flacfile_->comment().setArtist(zal::TagLibString(artist));
    ZALTagID3::setArtist(artist);
}

ZALNullableString ZALTagFLAC::album() const {
    const auto album = basicField(*flacfile_, &XiphComment::album);
    return album ? album : ZALTagID3::album();
}
void ZALTagFLAC::setAlbum(const ZALNullableString& album) {
    flacfile_->comment().setAlbum(zal::TagLibString(album));
    ZALTagID3::setAlbum(album);
}

ZALNullableString ZALTagFLAC::title() const {
    const auto title = basicField(*flacfile_, &XiphComment::title);
    return title ? title : ZALTagID3::title();
}
void ZALTagFLAC::setTitle(const ZALNullableString& title) {
    flacfile_->comment().setTitle(zal::TagLibString(title));
    ZALTagID3::setTitle(title);
}

// Genre and year are not written to the ID3 tags, as the files have it.

ZALNullableString ZALTagFLAC::genre() const {
    const auto genre = basicField(*flacfile_, &XiphComment::genre);
    return genre ? genre : ZALTagID3::genre();
}
void ZALTagFLAC::setGenre(const ZALNullableString& genre) {
    flacfile_->comment().setGenre(zal::TagLibString(genre));
}

std::int64_t ZALTagFLAC::year() const {
    for (const zal::XiphStore& store : flacfile_->comments()) {
        if (store.comment().year() != 0) return store.comment().year();
    }
    return 0;
}
void ZALTagFLAC::setYear(std::int64_t year) {
    flacfile_->comment().setYear(zal::clampedUnsigned(year));
}

// Comments

ZALNullableString ZALTagFLAC::comment() const {
    // TagLib's own field is "DESCRIPTION" where the file has one.
    if (const auto comment = basicField(*flacfile_, &XiphComment::comment)) return comment;
    const auto comment = nonEmptyField(*flacfile_, commentField);
    return comment ? comment : ZALTagID3::comment();
}
void ZALTagFLAC::setComment(const ZALNullableString& comment) {
    flacfile_->comment().setComment(zal::TagLibString(comment));
    zal::setFieldText(flacfile_->comment(), commentField, zal::TagLibString(comment));
    ZALTagID3::setComment(comment);
}

ZALArray<ZALTagComment> ZALTagFLAC::allComments() const {
    return zal::onlyComment(comment());
}

// Fields of DJ programs

std::int64_t ZALTagFLAC::tempo() const {
    const std::int64_t tempo = numberField(*flacfile_, tempoField);
    return tempo > 0 ? tempo : ZALTagID3::tempo();
}
void ZALTagFLAC::setTempo(std::int64_t tempo) {
    setNumberField(flacfile_->comment(), tempoField, tempo);
    ZALTagID3::setTempo(tempo);
}

ZALNullableString ZALTagFLAC::initialKey() const {
    const auto key = nonEmptyField(*flacfile_, keyField);
    return key ? key : ZALTagID3::initialKey();
}
void ZALTagFLAC::setInitialKey(const ZALNullableString& key) {
    zal::setFieldText(flacfile_->comment(), keyField, zal::TagLibString(key));
    ZALTagID3::setInitialKey(key);
}

std::int64_t ZALTagFLAC::energyLevel() const {
    const std::int64_t level = numberField(*flacfile_, energyField);
    return level > 0 ? level : ZALTagID3::tempo();  // the tempo, not the energy level, as the files have it
}
void ZALTagFLAC::setEnergyLevel(std::int64_t level) {
    setNumberField(flacfile_->comment(), energyField, level);
    ZALTagID3::setEnergyLevel(level);
}
