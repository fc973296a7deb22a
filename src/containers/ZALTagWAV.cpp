#include <zaltag/containers/ZALTagWAV.h>

#include "base/Numbers.h"
#include "containers/ProcessingRecord.h"
#include "files/FormFile.h"
#include "files/TagFile.h"
#include "id3/ID3State.h"
#include "stores/InfoFields.h"
#include "tag/ZALTagBackEnds.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

using zal::NumberField;
using zal::TextField;

namespace {

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
    auto contents = std::make_unique<zal::TagContents>();
    s.addV2(*contents, *wavfile_);
    info_ = std::make_unique<zal::TagContents>();
    addInfo(*contents);
    addInfo(*info_);
    s.addPictures(*contents, zal::wavArtwork);
    setContents(std::move(contents));
    recordInFile_ = pnTag_ = readPNTag(path);
    return true;
}

void ZALTagWAV::addInfo(zal::TagContents& contents) {
    contents.add(std::make_unique<zal::InfoFields>(wavfile_->info()));
    for (std::size_t i = 1; i < wavfile_->infos().size(); ++i) {
        contents.add(std::make_unique<zal::InfoFields>(wavfile_->infos()[i].tag()), zal::Access::readOnly);
    }
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
    bool isLogged = false;
    const auto ofRecord = writesRecord && !isRefused ? saveRecord(isLogged) : zal::Failure();
    if (!failure && !ofRecord) return true;
    std::string reason = failure.reason();
    if (ofRecord) reason += (failure ? "; " : "") + ("its processing record: " + ofRecord.reason());
    return failSave(error, reason, isLogged && !failure);
}

bool ZALTagWAV::isInFile(const ZALTagVelvetCascade& record) const {
    return recordInFile_ && recordInFile_->JSONDict() == record.JSONDict();
}

zal::Failure ZALTagWAV::saveRecord(bool& isLogged) {
    zal::Failure failure;
    try {
        if (!state().stream->isCurrent()) {
            failure = "another program changed the file";
        } else if (!zal::canCarryProcessingRecord(*path())) {
            failure = "the copy would lose some of its chunks";
        } else {
            const auto failed = writePNTag(pnTag_, *path());
            isLogged = true;
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

// The INFO list

ZALNullableString ZALTagWAV::infoTitle() const {
    return info_->text(TextField::title);
}
void ZALTagWAV::setInfoTitle(const ZALNullableString& title) {
    info_->setText(TextField::title, title);
}
ZALNullableString ZALTagWAV::infoArtist() const {
    return info_->text(TextField::artist);
}
void ZALTagWAV::setInfoArtist(const ZALNullableString& artist) {
    info_->setText(TextField::artist, artist);
}
ZALNullableString ZALTagWAV::infoAlbum() const {
    return info_->text(TextField::album);
}
void ZALTagWAV::setInfoAlbum(const ZALNullableString& album) {
    info_->setText(TextField::album, album);
}
ZALNullableString ZALTagWAV::infoGenre() const {
    return info_->text(TextField::genre);
}
void ZALTagWAV::setInfoGenre(const ZALNullableString& genre) {
    info_->setText(TextField::genre, genre);
}
ZALNullableString ZALTagWAV::infoComment() const {
    return info_->text(TextField::comment);
}
void ZALTagWAV::setInfoComment(const ZALNullableString& comment) {
    info_->setText(TextField::comment, comment);
}
unsigned int ZALTagWAV::infoYear() const {
    return static_cast<unsigned int>(info_->number(NumberField::year));
}
void ZALTagWAV::setInfoYear(unsigned int year) {
    info_->setNumber(NumberField::year, year);
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
