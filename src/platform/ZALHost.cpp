#include <zaltag/platform/ZALHost.h>

#include "platform/RunningPrograms.h"
#include "platform/UserFolders.h"

#include <zaltag/base/ZALVersion.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t longestLine = 4096;

// A line fit for a terminal: what could move the cursor or end the line is escaped.
std::string escaped(std::string_view line) {
    std::string out;
    out.reserve(line.size());
    for (const char c : line) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            out += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            char hexadecimal[5];
            std::snprintf(hexadecimal, sizeof hexadecimal, "\\x%02x", static_cast<unsigned>(byte));
            out += hexadecimal;
        } else {
            out += c;
        }
    }
    return out;
}

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The line with its middle left out, cut between characters.
std::string shortened(const std::string& line) {
    if (line.size() <= longestLine) return line;
    static constexpr std::string_view gap = " ... ";
    std::size_t head = longestLine / 2;
    std::size_t tail = line.size() - (longestLine / 2 - gap.size());
    while (head > 0 && continuesCharacter(line[head])) {
        --head;
    }
    while (tail < line.size() && continuesCharacter(line[tail])) {
        ++tail;
    }
    return line.substr(0, head).append(gap).append(line, tail);
}

void writeToStandardError(const std::string& line) {
    const std::string text = shortened(escaped(line)) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

ZALNullableString processVariable(const std::string& name) {
    const char* const value = std::getenv(name.c_str());
    return value == nullptr ? ZALNullableString() : value;
}

}  // namespace

struct ZALHost::Services {
    mutable std::mutex mutex;
    std::shared_ptr<const ZALLogSink> logSink;  // null: standard error
    std::shared_ptr<ZALFileSystem> fileSystem = ZALFileSystem::machine();
    std::shared_ptr<ZALCloudStorage> cloudStorage;
    std::shared_ptr<ZALUserDefaults> userDefaults = ZALUserDefaults::machine();
    std::shared_ptr<ZALFolderBookmarks> folderBookmarks = ZALFolderBookmarks::machine();
    std::shared_ptr<ZALClock> clock = ZALClock::machine();
    std::shared_ptr<ZALHTTPClient> httpClient = ZALHTTPClient::machine();
    std::function<ZALNullableString(const std::string&)> environment;
    std::function<std::vector<std::string>()> documentsFolders;
    std::function<std::vector<std::string>()> runningPrograms;
    std::function<std::string(const std::string&)> localizer;
    std::string bootVolumeName = "Macintosh HD";
    ZALNullableString serviceHost;
    ZALNullableString certificateAuthorityFile;
    bool logsFailures = true;
    ZALSaveMode saveMode = ZALSaveMode::safe;
    ZALCollectionSaveMode collectionSaveMode = ZALCollectionSaveMode::everyTrackWithCues;
    std::string name = program_invocation_short_name;
    std::string version = ZALHost::libraryVersion();

    template <typename T>
    T get(const T& field) const {
        const std::lock_guard lock(mutex);
        return field;
    }
    template <typename T>
    void set(T& field, T value) {
        const std::lock_guard lock(mutex);
        std::swap(field, value);  // the old value is destroyed with the argument, after the lock
    }
};

ZALHost::ZALHost() : services_(std::make_unique<Services>()) {}
ZALHost::~ZALHost() = default;

ZALHost& ZALHost::shared() {
    // Never destroyed: threads of the host may still log while the process ends.
    static ZALHost* const host = new ZALHost;
    return *host;
}

void ZALHost::setLogSink(ZALLogSink sink) {
    services_->set(services_->logSink, sink ? std::make_shared<const ZALLogSink>(std::move(sink))
                                            : std::shared_ptr<const ZALLogSink>());
}

void ZALHost::log(const std::string& line) const {
    if (const auto sink = services_->get(services_->logSink)) {
        (*sink)(line);
    } else {
        writeToStandardError(line);
    }
}

void ZALHost::setFileSystem(std::shared_ptr<ZALFileSystem> fileSystem) {
    services_->set(services_->fileSystem, fileSystem ? std::move(fileSystem) : ZALFileSystem::machine());
}
std::shared_ptr<ZALFileSystem> ZALHost::fileSystem() const {
    return services_->get(services_->fileSystem);
}

void ZALHost::setCloudStorage(std::shared_ptr<ZALCloudStorage> storage) {
    services_->set(services_->cloudStorage, std::move(storage));
}
std::shared_ptr<ZALCloudStorage> ZALHost::cloudStorage() const {
    return services_->get(services_->cloudStorage);
}

void ZALHost::setUserDefaults(std::shared_ptr<ZALUserDefaults> defaults) {
    services_->set(services_->userDefaults, defaults ? std::move(defaults) : ZALUserDefaults::machine());
}
std::shared_ptr<ZALUserDefaults> ZALHost::userDefaults() const {
    return services_->get(services_->userDefaults);
}

void ZALHost::setFolderBookmarks(std::shared_ptr<ZALFolderBookmarks> bookmarks) {
    services_->set(services_->folderBookmarks,
                   bookmarks ? std::move(bookmarks) : ZALFolderBookmarks::machine());
}
std::shared_ptr<ZALFolderBookmarks> ZALHost::folderBookmarks() const {
    return services_->get(services_->folderBookmarks);
}

void ZALHost::setClock(std::shared_ptr<ZALClock> clock) {
    services_->set(services_->clock, clock ? std::move(clock) : ZALClock::machine());
}
std::shared_ptr<ZALClock> ZALHost::clock() const {
    return services_->get(services_->clock);
}

void ZALHost::setHTTPClient(std::shared_ptr<ZALHTTPClient> client) {
    services_->set(services_->httpClient, client ? std::move(client) : ZALHTTPClient::machine());
}
std::shared_ptr<ZALHTTPClient> ZALHost::httpClient() const {
    return services_->get(services_->httpClient);
}

void ZALHost::setEnvironment(std::function<ZALNullableString(const std::string& name)> environment) {
    services_->set(services_->environment, std::move(environment));
}
ZALNullableString ZALHost::environmentVariable(const std::string& name) const {
    const auto environment = services_->get(services_->environment);
    return environment ? environment(name) : processVariable(name);
}

void ZALHost::setDocumentsFolders(std::function<std::vector<std::string>()> folders) {
    services_->set(services_->documentsFolders, std::move(folders));
}
std::vector<std::string> ZALHost::documentsFolders() const {
    const auto folders = services_->get(services_->documentsFolders);
    return folders ? folders() : zal::documentsFolders();
}

void ZALHost::setRunningPrograms(std::function<std::vector<std::string>()> programs) {
    services_->set(services_->runningPrograms, std::move(programs));
}
std::vector<std::string> ZALHost::runningPrograms() const {
    const auto programs = services_->get(services_->runningPrograms);
    return programs ? programs() : zal::runningPrograms();
}

void ZALHost::setLocalizer(std::function<std::string(const std::string& text)> localizer) {
    services_->set(services_->localizer, std::move(localizer));
}
std::string ZALHost::localized(const std::string& text) const {
    const auto localizer = services_->get(services_->localizer);
    return localizer ? localizer(text) : text;
}

void ZALHost::setBootVolumeName(std::string name) {
    services_->set(services_->bootVolumeName, std::move(name));
}
std::string ZALHost::bootVolumeName() const {
    return services_->get(services_->bootVolumeName);
}

void ZALHost::setServiceHost(ZALNullableString host) {
    services_->set(services_->serviceHost, std::move(host));
}
ZALNullableString ZALHost::serviceHost() const {
    return services_->get(services_->serviceHost);
}

void ZALHost::setCertificateAuthorityFile(ZALNullableString path) {
    services_->set(services_->certificateAuthorityFile, std::move(path));
}
ZALNullableString ZALHost::certificateAuthorityFile() const {
    return services_->get(services_->certificateAuthorityFile);
}

void ZALHost::setLogsFailures(bool logs) {
    services_->set(services_->logsFailures, logs);
}
bool ZALHost::logsFailures() const {
    return services_->get(services_->logsFailures);
}

void ZALHost::setSaveMode(ZALSaveMode mode) {
    services_->set(services_->saveMode, mode);
}
ZALSaveMode ZALHost::saveMode() const {
    return services_->get(services_->saveMode);
}

void ZALHost::setCollectionSaveMode(ZALCollectionSaveMode mode) {
    services_->set(services_->collectionSaveMode, mode);
}
ZALCollectionSaveMode ZALHost::collectionSaveMode() const {
    return services_->get(services_->collectionSaveMode);
}

void ZALHost::setName(std::string name) {
    services_->set(services_->name, std::move(name));
}
std::string ZALHost::name() const {
    return services_->get(services_->name);
}
void ZALHost::setVersion(std::string version) {
    services_->set(services_->version, std::move(version));
}
std::string ZALHost::version() const {
    return services_->get(services_->version);
}

std::string ZALHost::libraryVersion() {
    return ZALTAG_VERSION;
}
