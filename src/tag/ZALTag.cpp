#include <zaltag/tag/ZALTag.h>

#include "base/Failure.h"
#include "base/Paths.h"
#include "base/Unicode.h"
#include "platform/Log.h"
#include "tag/TagContents.h"
#include "tag/ZALTagBackEnds.h"

#include <zaltag/base/ZALProgrammingError.h>
#include <zaltag/tag/ZALTagComment.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstring>

const std::string ZALTagImageDictionaryImageKey = "ZALTagImageDictionaryImageKey";
const std::string ZALTagImageDictionaryImageTypeKey = "ZALTagImageDictionaryImageTypeKey";

namespace zal {

bool hasExtensionAmong(const ZALNullableString& path, const ZALArray<std::string>& types) {
    if (!path) return false;
    const std::string extension = asciiLowercase(pathExtension(*path));
    return std::find(types.begin(), types.end(), extension) != types.end();
}

}  // namespace zal

using zal::NumberField;
using zal::TextField;

namespace {

[[noreturn]] void abstract(const char* operation) {
    throw ZALProgrammingError(
        fmt::format("-[ZALTag {}] is abstract implement it in your subclass!", operation));
}

// A property as key lookup sees it: either a text or an integer.
struct Property {
    const char* key;
    ZALNullableString (ZALTag::*text)() const;
    void (ZALTag::*setText)(const ZALNullableString&);
    std::int64_t (ZALTag::*integer)() const;
    void (ZALTag::*setInteger)(std::int64_t);
};

constexpr Property textProperty(const char* key, ZALNullableString (ZALTag::*get)() const,
                                void (ZALTag::*set)(const ZALNullableString&)) {
    return {key, get, set, nullptr, nullptr};
}

constexpr Property integerProperty(const char* key, std::int64_t (ZALTag::*get)() const,
                                   void (ZALTag::*set)(std::int64_t)) {
    return {key, nullptr, nullptr, get, set};
}

// The standard keys come first, in their order.
constexpr std::size_t standardKeyCount = 7;
constexpr Property keyedProperties[] = {
    textProperty("artist", &ZALTag::artist, &ZALTag::setArtist),
    textProperty("album", &ZALTag::album, &ZALTag::setAlbum),
    integerProperty("year", &ZALTag::year, &ZALTag::setYear),
    textProperty("title", &ZALTag::title, &ZALTag::setTitle),
    textProperty("comment", &ZALTag::comment, &ZALTag::setComment),
    integerProperty("tempo", &ZALTag::tempo, &ZALTag::setTempo),
    textProperty("initialKey", &ZALTag::initialKey, &ZALTag::setInitialKey),
    textProperty("genre", &ZALTag::genre, &ZALTag::setGenre),
    integerProperty("energyLevel", &ZALTag::energyLevel, &ZALTag::setEnergyLevel),
    textProperty("grouping", &ZALTag::grouping, &ZALTag::setGrouping),
    textProperty("modifiedBy", &ZALTag::modifiedBy, &ZALTag::setModifiedBy),
};

const Property& propertyForKey(const std::string& key) {
    const auto* found = std::find_if(std::begin(keyedProperties), std::end(keyedProperties),
                                     [&key](const Property& property) { return key == property.key; });
    if (found == std::end(keyedProperties))
        throw ZALProgrammingError("ZALTag has no property for the key " + key);
    return *found;
}

ZALArray<std::string> firstKeys(std::size_t count) {
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < count; ++i) {
        keys.emplace_back(keyedProperties[i].key);
    }
    return keys;
}

}  // namespace

ZALTag::ZALTag() = default;
ZALTag::~ZALTag() = default;

void ZALTag::setContents(std::unique_ptr<zal::TagContents> contents) {
    contents_ = std::move(contents);
}

zal::TagContents& ZALTag::contentsFor(const char* operation) const {
    if (contents_ == nullptr) abstract(operation);
    return *contents_;
}

const ZALArray<std::string>& ZALTag::supportedFileTypes() {
    static const ZALArray<std::string> types = [] {
        std::vector<std::string> all;
        for (const zal::BackEnd& backEnd : zal::backEnds()) {
            const auto& some = backEnd.supportedFileTypes();
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }();
    return types;
}

bool ZALTag::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTag> ZALTag::tagAtPath(const ZALNullableString& path, bool readOnly, ZALError* error) {
    return initWithPath(path, readOnly, error);
}

std::shared_ptr<ZALTag> ZALTag::initWithPath(const ZALNullableString& path, bool readOnly, ZALError* error) {
    return initReceiver("ZALTag", path, readOnly, error);
}

std::shared_ptr<ZALTag> ZALTag::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTag", path);
}

std::shared_ptr<ZALTag> ZALTag::initReceiver(const char* receiverClass, const ZALNullableString& path,
                                             bool readOnly, ZALError* error) {
    if (std::strcmp(receiverClass, "ZALTag") != 0) {
        throw ZALProgrammingError("-[ZALTag initWithPath:readOnly:] must not be called by subclasses");
    }
    for (const zal::BackEnd& backEnd : zal::backEnds()) {
        if (backEnd.canInitWithPath(path)) return backEnd.initWithPath(path, readOnly, error);
    }
    const auto& types = supportedFileTypes();
    zal::fillError(error, ZALErrorCode::openFailed,
                   fmt::format("unsupported file type (supported: {})", fmt::join(types, ", ")));
    return nullptr;
}

std::shared_ptr<ZALTag> ZALTag::initReceiver(const char* receiverClass, const ZALNullableString& path) {
    if (std::strcmp(receiverClass, "ZALTag") != 0) {
        throw ZALProgrammingError("-[ZALTag initWithPath:] must not be called by subclasses");
    }
    return initReceiver(receiverClass, path, false, nullptr);
}

const ZALArray<std::string>& ZALTag::standardPropertyKeys() {
    static const ZALArray<std::string> keys = firstKeys(standardKeyCount);
    return keys;
}

ZALArray<std::string> ZALTag::propertyKeys() const {
    return firstKeys(std::size(keyedProperties));
}

ZALJSONValue ZALTag::valueForKey(const std::string& key) const {
    const Property& property = propertyForKey(key);
    if (property.integer != nullptr) return (this->*property.integer)();
    return (this->*property.text)();
}

void ZALTag::setValue(const ZALJSONValue& value, const std::string& key) {
    const Property& property = propertyForKey(key);
    if (property.setInteger != nullptr) {
        (this->*property.setInteger)(value.integerValue());
    } else {
        (this->*property.setText)(value.stringValue());
    }
}

bool ZALTag::save(ZALError* /*error*/) {
    return true;
}

bool ZALTag::failSave(ZALError* error, const zal::Failure& failure, bool isLogged) {
    const std::string line = fmt::format("could not save '{}': {}", zal::describe(path()), failure.reason());
    if (!isLogged) error == nullptr ? zal::log(line) : zal::logFailure(line);
    zal::fillError(error, ZALErrorCode::saveFailed, failure);
    if (error != nullptr) error->userInfo[ZALTagErrorFailingTagKey] = weak_from_this();
    return false;
}

void ZALTag::copyValuesFromTag(const ZALTag& other) {
    ZALJSONValue::Object values;
    for (const std::string& key : standardPropertyKeys()) {
        values[key] = other.valueForKey(key);
    }
    for (const std::string& key : standardPropertyKeys()) {
        setValue(values[key], key);
    }
    if (!supportsImages() || !other.hasImages()) return;
    const ZALArray<ZALTagImageDictionary> images = other.allImages();
    const bool isWhole = images.size() == other.allStoredImages().size();
    if (!images.empty() && isWhole) setAllImages(images);
}

std::string ZALTag::description() const {
    std::string out = fmt::format("<{}: {}>{{\n", className(), fmt::ptr(this));
    std::vector<std::string> keys = standardPropertyKeys().elements();
    std::sort(keys.begin(), keys.end());
    for (const std::string& key : keys) {
        const ZALJSONValue value = valueForKey(key);
        const std::string text =
            value.isInteger() ? std::to_string(value.integerValue()) : value.stringValue().value_or("(null)");
        out += fmt::format("    {} = {};\n", key, text);
    }
    return out + "}";
}

// Fields

ZALNullableString ZALTag::artist() const {
    return contentsFor("artist").text(TextField::artist);
}
void ZALTag::setArtist(const ZALNullableString& artist) {
    contentsFor("setArtist:").setText(TextField::artist, artist);
}
ZALNullableString ZALTag::album() const {
    return contentsFor("album").text(TextField::album);
}
void ZALTag::setAlbum(const ZALNullableString& album) {
    contentsFor("setAlbum:").setText(TextField::album, album);
}
ZALNullableString ZALTag::title() const {
    return contentsFor("title").text(TextField::title);
}
void ZALTag::setTitle(const ZALNullableString& title) {
    contentsFor("setTitle:").setText(TextField::title, title);
}
ZALNullableString ZALTag::genre() const {
    return contentsFor("genre").text(TextField::genre);
}
void ZALTag::setGenre(const ZALNullableString& genre) {
    contentsFor("setGenre:").setText(TextField::genre, genre);
}
ZALNullableString ZALTag::initialKey() const {
    return contentsFor("initialKey").text(TextField::initialKey);
}
void ZALTag::setInitialKey(const ZALNullableString& key) {
    contentsFor("setInitialKey:").setText(TextField::initialKey, key);
}
ZALNullableString ZALTag::modifiedBy() const {
    return contentsFor("modifiedBy").text(TextField::modifiedBy);
}
void ZALTag::setModifiedBy(const ZALNullableString& name) {
    contentsFor("setModifiedBy:").setText(TextField::modifiedBy, name);
}
ZALNullableString ZALTag::grouping() const {
    return contentsFor("grouping").text(TextField::grouping);
}
void ZALTag::setGrouping(const ZALNullableString& grouping) {
    contentsFor("setGrouping:").setText(TextField::grouping, grouping);
}
ZALNullableString ZALTag::comment() const {
    return contentsFor("comment").text(TextField::comment);
}
void ZALTag::setComment(const ZALNullableString& comment) {
    contentsFor("setComment:").setText(TextField::comment, comment);
}

std::int64_t ZALTag::year() const {
    return contentsFor("year").number(NumberField::year);
}
void ZALTag::setYear(std::int64_t year) {
    contentsFor("setYear:").setNumber(NumberField::year, year);
}
std::int64_t ZALTag::tempo() const {
    return contentsFor("tempo").number(NumberField::tempo);
}
void ZALTag::setTempo(std::int64_t tempo) {
    contentsFor("setTempo:").setNumber(NumberField::tempo, tempo);
}
std::int64_t ZALTag::energyLevel() const {
    return contentsFor("energyLevel").number(NumberField::energyLevel);
}
void ZALTag::setEnergyLevel(std::int64_t level) {
    contentsFor("setEnergyLevel:").setNumber(NumberField::energyLevel, level);
}

ZALArray<ZALTagComment> ZALTag::allComments() const {
    contentsFor("allComments");
    const ZALNullableString text = comment();
    if (!text) return {};
    ZALTagComment only;
    only.setComment(text);
    only.setOriginalComment(text);
    only.setIsPrimary(true);
    return {only};
}

// What only back-ends can do

void ZALTag::setCommentWithComment(const ZALTagComment&) {
    abstract("setCommentWithComment:");
}
void ZALTag::deleteExtraneousComments() {
    abstract("deleteExtraneousComments");
}
void ZALTag::deleteID3v1Comment() {
    abstract("deleteID3v1Comment");
}
bool ZALTag::supportsImages() const {
    abstract("supportsImages");
}
std::optional<ZALFirstFrame> ZALTag::firstFrame() const {
    return std::nullopt;
}
bool ZALTag::hasID3v1Tag() const {
    abstract("hasID3v1Tag");
}
bool ZALTag::hasID3v2Tag() const {
    abstract("hasID3v2Tag");
}
bool ZALTag::readOnly() const {
    abstract("readOnly");
}
