#include "containers/ProcessingRecord.h"

#include "base/Limits.h"
#include "base/Paths.h"
#include "containers/WavVelvetCascadeTagInserter.h"
#include "platform/FileReplacement.h"
#include "platform/Log.h"

#include <zaltag/platform/ZALHost.h>
#include <zaltag/records/ZALTagRecordData.h>

#include <exception>
#include <limits>

namespace zal {

namespace {

// Adds up the chunks that the walker finds in the form.
class WavCoverage final : public WavMetadataParser {
  public:
    bool isWhole() const { return covered_ >= fileSize_; }
    bool isLong() const { return fileSize_ + limits::wavRecord > std::numeric_limits<std::uint32_t>::max(); }

  private:
    bool ReadChunkHeader(std::int64_t& size, std::uint32_t& id) override {
        const bool read = WavMetadataParser::ReadChunkHeader(size, id);
        if (read && depth_ == 1) covered_ += 8 + size + size % 2;
        return read;
    }

    std::int64_t covered_ = 12;
};

// The file itself where the path is a symbolic link, so that the link stays; else the path as it was given.
std::string withoutLink(ZALFileSystem& files, const std::string& path) {
    std::string canonical;
    std::string folder;
    if (files.canonicalPath(path, canonical) || files.canonicalPath(folderOf(path), folder)) return path;
    const bool isLink = canonical != folder + "/" + std::string(lastPathComponent(path));
    return isLink ? canonical : path;
}

ZALError logged(std::string message) {
    logFailure(message);
    ZALError error;
    error.domain = ZALTagErrorDomain;
    error.code = ZALErrorCode::saveFailed;
    error.localizedDescription = std::move(message);
    return error;
}

// The rename takes the old file away: what forbids that is told as a removal that failed.
bool isAboutRemoving(const std::error_code& error) {
    return error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
           error == std::errc::device_or_resource_busy;
}

// One rewrite of one file.
class Rewrite {
  public:
    explicit Rewrite(const std::string& path)
        : files_(ZALHost::shared().fileSystem()),
          path_(withoutLink(*files_, path)),
          temporary_(path_ + "_") {}
    ~Rewrite() {
        // By name: a process forked from this one may keep the file open.
        if (isLocked_) inserter_.input()->unlock();
    }
    Rewrite(const Rewrite&) = delete;
    Rewrite& operator=(const Rewrite&) = delete;

    std::optional<ZALError> run(const ZALTagVelvetCascade& record) {
        const bool begun = begin();
        if (begun && copy(record)) return replace();
        logf("could not write the processing record of '{}': {}", path_, reason_);
        return begun ? removeTemporary() : std::nullopt;
    }

  private:
    // Locks the file against other saves, as every save does.
    bool begin() {
        if (!inserter_.OpenFile(path_)) return fail(inserter_.error());
        if (const auto error = inserter_.input()->lock()) return fail(error);
        isLocked_ = true;
        const auto error = inserter_.input()->attributes(before_);
        return !error || fail(error);
    }

    bool copy(const ZALTagVelvetCascade& record) {
        const auto dictionary = record.JSONDict();
        const ZALNullableData payload = dictionary ? tagData(*dictionary) : std::nullopt;
        if (!inserter_.OpenOutput(temporary_)) return fail(inserter_.error());
        inserter_.SetPayload(payload.value_or(ZALData()));
        try {
            inserter_.ParseFile();
        } catch (const std::exception&) {  // an old record of a size that memory cannot hold
            return fail(std::make_error_code(std::errc::not_enough_memory));
        }
        const bool isComplete = inserter_.done() && !inserter_.failed() && inserter_.SyncOutput();
        return isComplete || fail(inserter_.error());
    }

    std::optional<ZALError> replace() {
        if (!isUnchanged()) return abandon(couldNotRemove("another program changed it"));
        if (!isFileAt(*files_, temporary_, *inserter_.output())) {
            return abandon(couldNotMove("another program took it away"));
        }
        const auto error = files_->rename(temporary_, path_);
        if (error) {
            return abandon(isAboutRemoving(error) ? couldNotRemove(describe(error))
                                                  : couldNotMove(describe(error)));
        }
        syncFolderOf(*files_, path_);
        return std::nullopt;
    }

    bool isUnchanged() const {
        ZALFileAttributes now;
        return !files_->attributes(path_, now) && now.device == before_.device &&
               now.inode == before_.inode && now.size == before_.size && now.modified == before_.modified;
    }

    // Names the new file, not the old one, as the message always has.
    std::string couldNotRemove(const std::string& reason) const {
        return fmt::format("could not remove input file '{}' ({})", temporary_, reason);
    }

    std::string couldNotMove(const std::string& reason) const {
        return fmt::format("could not move file from '{}' to '{}' ({})", temporary_, path_, reason);
    }

    ZALError abandon(std::string message) {
        if (isFileAt(*files_, temporary_, *inserter_.output())) files_->unlink(temporary_);
        return logged(std::move(message));
    }

    std::optional<ZALError> removeTemporary() {
        const auto error = files_->unlink(temporary_);
        if (!error) return std::nullopt;
        return logged(fmt::format("could not remove temporary file '{}' ({})", temporary_, describe(error)));
    }

    bool fail(const std::error_code& error) {
        reason_ = error ? describe(error) : "its chunks cannot be copied";
        return false;
    }

    const std::shared_ptr<ZALFileSystem> files_;
    const std::string path_;
    const std::string temporary_;
    WavVelvetCascadeTagInserter inserter_;
    ZALFileAttributes before_;
    bool isLocked_ = false;
    std::string reason_;
};

}  // namespace

std::optional<ZALTagVelvetCascade> readProcessingRecord(const std::string& path) {
    try {
        WavMetadataParser parser;
        if (!parser.OpenFile(path)) return std::nullopt;
        parser.ParseFile();
        if (parser.VCASPayload().empty()) return std::nullopt;
        return ZALTagVelvetCascade::initWithJSONDict(ZALTagRecordDictionary(parser.VCASPayload()));
    } catch (const std::exception&) {  // no memory for a chunk of that size
        return std::nullopt;
    }
}

std::optional<ZALError> writeProcessingRecord(const ZALTagVelvetCascade& record, const std::string& path) {
    return Rewrite(path).run(record);
}

bool canCarryProcessingRecord(const std::string& path) {
    WavCoverage coverage;
    return coverage.OpenFile(path) && coverage.ParseFile() && coverage.isWhole() && !coverage.isLong();
}

}  // namespace zal
