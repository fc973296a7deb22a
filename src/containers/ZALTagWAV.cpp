#include <zaltag/containers/ZALTagWAV.h>

#include "base/Numbers.h"
#include "containers/ProcessingRecord.h"
#include "id3/FormFile.h"
#include "id3/ID3State.h"
#include "id3/TagFile.h"
#include "id3/TagLibText.h"
#include "tag/ZALTagBackEnds.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

namespace {

constexpr char titleID[] = "INAM";
constexpr char artistID[] = "IART";
constexpr char albumID[] = "IPRD";
constexpr char genreID[] = "IGNR";
constexpr char commentID[] = "ICMT";

// Null when no list has such a field.
ZALNullableString infoText(const zal::FormFile* file, const char* id) {
    if (file == nullptr) return std::nullopt;
    for (const zal::InfoList& list : file->infos()) {
        if (list.tag().fieldListMap().contains(id))
            return zal::stringWithTagLibString(list.tag().fieldText(id));
    }
    return std::nullopt;
}

void setInfoText(zal::FormFile* file, const char* id, const ZALNullableString& text) {
    if (file != nullptr) file->info().setFieldText(id, zal::TagLibString(text));
}

// A text of the ID3v2 tag, or the one of the INFO list where that has nothing to say.
ZALNullableString firstText(const ZALNullableString& text, const ZALNullableString& infoText) {
    return infoText && text.value_or("").empty() ? infoText : text;
}

struct InfoProperty {
    const char* key;
    ZALNullableString (ZALTagWAV::*text)() const;
    void (ZALTagWAV::*setText)(const ZALNullableString&);
};

constexpr InfoProperty infoProperties[] = {
    {"infoTitle", &ZALTagWAV::infoTitle, &ZALTagWAV::setInfoTitle},
    {"infoArtist", &ZALTagWAV::infoArtist, &ZALTagWAV::setInfoArtist},
    {"infoAlbum", &ZALTagWAV::infoAlbum, &ZALTagWAV::setInfoAlbum},
    {"infoGenre", &ZALTagWAV::infoGenre, &ZALTagWAV::setInfoGenre},
    {"infoComment", &ZALTagWAV::infoComment, &ZALTagWAV::setInfoComment},
};
constexpr char infoYearKey[] = "infoYear";

const InfoProperty* infoProperty(const std::string& key) {
    const auto* found = std::find_if(std::begin(infoProperties), std::end(infoProperties),
                                     [&key](const InfoProperty& property) { return key == property.key; });
    return found != std::end(infoProperties) ? found : nullptr;
}

}  // namespace

ZALTagWAV::ZALTagWAV() = default;
ZALTagWAV::~ZALTagWAV() = default;

// Opening

const ZALArray<std::string>& ZALTagWAV::supportedFileTypes() {
    static const ZALArray<std::string> types{"wav"};
    return types;
}

bool ZALTagWAV::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTagWAV> ZALTagWAV::tagAtPath(const ZALNullableString& path, bool readOnly,
                                                ZALError* error) {
    return canInitWithPath(path) ? initWithPath(path, readOnly, error) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagWAV::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagWAV", path);
}

std::shared_ptr<ZALTagWAV> ZALTagWAV::initWithPath(const ZALNullableString& path, bool readOnly,
                                                   ZALError* error) {
    const auto open = [readOnly](const std::string& file, zal::Failure& failure) {
        const std::shared_ptr<ZALTagWAV> tag(new ZALTagWAV);
        return tag->openWAV(file, readOnly, failure) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagWAV initWithPath:readOnly:]", path, canInitWithPath(path), error, open);
}

bool ZALTagWAV::openWAV(const std::string& path, bool readOnly, zal::Failure& failure) {
    State& s = state();
    openedReadOnly_ = readOnly;
    s.stream = zal::TagLibStream::open(path, readOnly, &failure);
    if (s.stream == nullptr) return false;
    wavfile_ = zal::FormFile::openWAV(*s.stream);
    if (wavfile_ == nullptr) return false;
    s.setV2TagsOf(*wavfile_);
    recordInFile_ = pnTag_ = readPNTag(path);
    return true;
}

bool ZALTagWAV::readOnly() const {
    return wavfile_ != nullptr && state().stream->readOnly();
}

// Saving

bool ZALTagWAV::save(ZALError* error) {
    if (!ZALTagID3::save(error)) return false;
    if (wavfile_ == nullptr) return failSave(error, "it is not open");
    if (isOutdated_) reopen();
    const bool writesRecord = pnTag_ && path() && !isInFile(*pnTag_);
    if (writesRecord) wavfile_->setSizes();
    bool isRefused = false;
    const auto failure = zal::saveFile(*state().stream, *wavfile_, isRefused);
    // The record is written also where the tags could not be.
    const auto ofRecord = writesRecord && !isRefused ? saveRecord() : zal::Failure();
    if (!failure && !ofRecord) return true;
    std::string reason = failure.reason();
    if (ofRecord) reason += (failure ? "; " : "") + ("its processing record: " + ofRecord.reason());
    return failSave(error, reason);
}

bool ZALTagWAV::isInFile(const ZALTagVelvetCascade& record) const {
    return recordInFile_ && recordInFile_->JSONDict() == record.JSONDict();
}

zal::Failure ZALTagWAV::saveRecord() {
    zal::Failure failure;
    try {
        if (!state().stream->isCurrent()) {
            failure = "another program changed the file";
        } else if (!zal::canCarryProcessingRecord(*path())) {
            failure = "the copy would lose some of its chunks";
        } else {
            const auto failed = writePNTag(pnTag_, *path());  // logs it
            isOutdated_ = !state().stream->isCurrent();
            if (!isOutdated_) failure = failed ? failed->localizedDescription : "it could not be copied";
        }
    } catch (const std::exception& exception) {  // no memory for an old record
        failure = exception.what();
    }
    if (failure) return failure;
    recordInFile_ = pnTag_;
    reopen();
    return {};
}

// After the record was written the stream stands on a file that is gone.
void ZALTagWAV::reopen() {
    State& s = state();
    try {
        auto stream = zal::TagLibStream::open(s.stream->name(), openedReadOnly_);
        // The next save tries again, also where the file could only be opened for reading now.
        if (stream == nullptr || stream->readOnly() != s.stream->readOnly()) return;
        if (!wavfile_->moveTo(*stream)) return;
        s.stream.swap(stream);
        isOutdated_ = false;
    } catch (const std::exception& exception) {
        zal::logf("could not open '{}' again: {}", zal::describe(path()), exception.what());
    }
}

std::optional<ZALTagVelvetCascade> ZALTagWAV::readPNTag(const std::string& path) {
    return zal::readProcessingRecord(path);
}

std::optional<ZALError> ZALTagWAV::writePNTag(const std::optional<ZALTagVelvetCascade>& record,
                                              const std::string& path) {
    return record ? zal::writeProcessingRecord(*record, path) : std::nullopt;
}

// The six basic fields

ZALNullableString ZALTagWAV::artist() const {
    return firstText(ZALTagID3::artist(), infoArtist());
}
void ZALTagWAV::setArtist(const ZALNullableString& artist) {
    ZALTagID3::setArtist(artist);
    setInfoArtist(artist);
}

ZALNullableString ZALTagWAV::album() const {
    return firstText(ZALTagID3::album(), infoAlbum());
}
void ZALTagWAV::setAlbum(const ZALNullableString& album) {
    ZALTagID3::setAlbum(album);
    setInfoAlbum(album);
}

std::int64_t ZALTagWAV::year() const {
    const std::int64_t year = ZALTagID3::year();
    return year != 0 ? year : infoYear();
}
void ZALTagWAV::setYear(std::int64_t year) {
    ZALTagID3::setYear(year);
    setInfoYear(zal::clampedUnsigned(year));
}

ZALNullableString ZALTagWAV::title() const {
    return firstText(ZALTagID3::title(), infoTitle());
}
void ZALTagWAV::setTitle(const ZALNullableString& title) {
    ZALTagID3::setTitle(title);
    setInfoTitle(title);
}

ZALNullableString ZALTagWAV::genre() const {
    return firstText(ZALTagID3::genre(), infoGenre());
}
void ZALTagWAV::setGenre(const ZALNullableString& genre) {
    ZALTagID3::setGenre(genre);
    setInfoGenre(genre);
}

ZALNullableString ZALTagWAV::comment() const {
    return firstText(ZALTagID3::comment(), infoComment());
}
void ZALTagWAV::setComment(const ZALNullableString& comment) {
    ZALTagID3::setComment(comment);
    setInfoComment(comment);
}

// The INFO list

ZALNullableString ZALTagWAV::infoTitle() const {
    return infoText(wavfile_.get(), titleID);
}
void ZALTagWAV::setInfoTitle(const ZALNullableString& title) {
    setInfoText(wavfile_.get(), titleID, title);
}

ZALNullableString ZALTagWAV::infoArtist() const {
    return infoText(wavfile_.get(), artistID);
}
void ZALTagWAV::setInfoArtist(const ZALNullableString& artist) {
    setInfoText(wavfile_.get(), artistID, artist);
}

ZALNullableString ZALTagWAV::infoAlbum() const {
    return infoText(wavfile_.get(), albumID);
}
void ZALTagWAV::setInfoAlbum(const ZALNullableString& album) {
    setInfoText(wavfile_.get(), albumID, album);
}

ZALNullableString ZALTagWAV::infoGenre() const {
    return infoText(wavfile_.get(), genreID);
}
void ZALTagWAV::setInfoGenre(const ZALNullableString& genre) {
    setInfoText(wavfile_.get(), genreID, genre);
}

ZALNullableString ZALTagWAV::infoComment() const {
    return infoText(wavfile_.get(), commentID);
}
void ZALTagWAV::setInfoComment(const ZALNullableString& comment) {
    setInfoText(wavfile_.get(), commentID, comment);
}

unsigned int ZALTagWAV::infoYear() const {
    if (wavfile_ == nullptr) return 0;
    for (const zal::InfoList& list : wavfile_->infos()) {
        if (list.tag().year() != 0) return list.tag().year();
    }
    return 0;
}
void ZALTagWAV::setInfoYear(unsigned int year) {
    if (wavfile_ != nullptr) wavfile_->info().setYear(year);
}

// Properties by key

ZALArray<std::string> ZALTagWAV::propertyKeys() const {
    std::vector<std::string> keys = ZALTagID3::propertyKeys().elements();
    for (const InfoProperty& property : infoProperties) {
        keys.emplace_back(property.key);
    }
    keys.emplace_back(infoYearKey);
    return keys;
}

ZALJSONValue ZALTagWAV::valueForKey(const std::string& key) const {
    if (key == infoYearKey) return static_cast<std::int64_t>(infoYear());
    const InfoProperty* property = infoProperty(key);
    return property != nullptr ? ZALJSONValue((this->*property->text)()) : ZALTagID3::valueForKey(key);
}

void ZALTagWAV::setValue(const ZALJSONValue& value, const std::string& key) {
    if (key == infoYearKey) return setInfoYear(zal::clampedUnsigned(value.integerValue()));
    const InfoProperty* property = infoProperty(key);
    if (property == nullptr) return ZALTagID3::setValue(value, key);
    (this->*property->setText)(value.stringValue());
}

// Pictures: none

void ZALTagWAV::setAllImages(const ZALArray<ZALTagImageDictionary>& /*images*/) {}
bool ZALTagWAV::replaceOriginalImage(const ZALImagePtr& /*image*/) {
    return false;
}
void ZALTagWAV::backupOriginalImageAndSetCustomImage(const ZALImagePtr& /*image*/) {}
void ZALTagWAV::restoreOriginalImage() {}
