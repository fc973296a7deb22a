#include "support/FaultyFileSystem.h"

#include <utility>

class FaultyFileSystem::Handle final : public ZALFileHandle {
  public:
    Handle(std::shared_ptr<FaultyFileSystem> owner, std::unique_ptr<ZALFileHandle> inner)
        : owner_(std::move(owner)), inner_(std::move(inner)) {}

    std::error_code readAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                           std::size_t& count) override {
        count = 0;
        return owner_->tried(Operation::read, [&] { return inner_->readAt(position, buffer, count); });
    }
    std::error_code writeAt(std::uint64_t position, ZALDataView bytes) override {
        const auto error = owner_->step(Operation::write);
        if (!error) return inner_->writeAt(position, bytes);
        inner_->writeAt(position, bytes.first(bytes.size() / 2));
        return error;
    }
    std::error_code copyFrom(ZALFileHandle& source, std::uint64_t sourcePosition, std::uint64_t length,
                             std::uint64_t position) override {
        const auto error = owner_->step(Operation::copy);
        if (!error) return inner_->copyFrom(source, sourcePosition, length, position);
        inner_->copyFrom(source, sourcePosition, length / 2, position);
        return error;
    }
    std::error_code truncate(std::uint64_t length) override {
        return owner_->tried(Operation::truncate, [&] { return inner_->truncate(length); });
    }
    std::error_code sync() override {
        return owner_->tried(Operation::sync, [&] { return inner_->sync(); });
    }
    std::error_code attributes(ZALFileAttributes& attributes) override {
        return owner_->tried(Operation::look, [&] { return inner_->attributes(attributes); });
    }
    std::error_code copyAttributesFrom(ZALFileHandle& source) override {
        return owner_->tried(Operation::keepAttributes, [&] {
            return inner_->copyAttributesFrom(*static_cast<Handle&>(source).inner_);
        });
    }
    std::error_code lock() override {
        return owner_->tried(Operation::lock, [&] { return inner_->lock(); });
    }
    std::error_code unlock() override { return inner_->unlock(); }
    int descriptor() const override { return owner_->kernelCopies_ ? inner_->descriptor() : -1; }

  private:
    const std::shared_ptr<FaultyFileSystem> owner_;
    const std::unique_ptr<ZALFileHandle> inner_;
};

std::shared_ptr<FaultyFileSystem> FaultyFileSystem::install() {
    auto files = std::make_shared<FaultyFileSystem>();
    ZALHost::shared().setFileSystem(files);
    return files;
}

void FaultyFileSystem::failAt(int n) {
    failAt_ = n;
    steps_ = 0;
}

int FaultyFileSystem::count(Operation operation) const {
    const auto found = counts_.find(operation);
    return found == counts_.end() ? 0 : found->second;
}

std::error_code FaultyFileSystem::step(Operation operation) {
    std::unique_lock guard(mutex_);
    if (++counts_[operation] == hook_.count && operation == hook_.operation) {
        guard.unlock();
        hook_.function();
        guard.lock();
    }
    const bool fills =
        operation == Operation::create || operation == Operation::write || operation == Operation::copy;
    const auto error = std::make_error_code(fills ? std::errc::no_space_on_device : std::errc::io_error);
    if (failing_[operation]) return error;
    if (operation == Operation::read || failAt_ == 0) return {};
    return ++steps_ == failAt_ ? error : std::error_code();
}

std::unique_ptr<ZALFileHandle> FaultyFileSystem::wrapped(std::unique_ptr<ZALFileHandle> handle) {
    return handle ? std::make_unique<Handle>(shared_from_this(), std::move(handle)) : nullptr;
}

ZALFileKind FaultyFileSystem::kindOfFile(const std::string& path) const {
    return machine_->kindOfFile(path);
}

std::error_code FaultyFileSystem::attributes(const std::string& path, ZALFileAttributes& attributes) {
    return tried(Operation::look, [&] { return machine_->attributes(path, attributes); });
}

std::error_code FaultyFileSystem::canonicalPath(const std::string& path, std::string& canonical) {
    return tried(Operation::resolve, [&] { return machine_->canonicalPath(path, canonical); });
}

std::unique_ptr<ZALFileHandle> FaultyFileSystem::open(const std::string& path, bool forWriting,
                                                      std::error_code& error) {
    error = step(Operation::open);
    return error ? nullptr : wrapped(machine_->open(path, forWriting, error));
}

std::unique_ptr<ZALFileHandle> FaultyFileSystem::create(const std::string& path, std::uint32_t mode,
                                                        std::error_code& error) {
    error = step(Operation::create);
    return error ? nullptr : wrapped(machine_->create(path, mode, error));
}

std::error_code FaultyFileSystem::rename(const std::string& from, const std::string& to) {
    return tried(Operation::rename, [&] { return machine_->rename(from, to); });
}

std::error_code FaultyFileSystem::unlink(const std::string& path) {
    return tried(Operation::unlink, [&] { return machine_->unlink(path); });
}

std::error_code FaultyFileSystem::enumerate(const std::string& folder,
                                            const std::function<ZALFolderWalk(const std::string&)>& visit) {
    return tried(Operation::look, [&] { return machine_->enumerate(folder, visit); });
}

std::error_code FaultyFileSystem::createFolders(const std::string& path, std::uint32_t mode) {
    return tried(Operation::create, [&] { return machine_->createFolders(path, mode); });
}

std::error_code FaultyFileSystem::syncFolder(const std::string& path) {
    return tried(Operation::sync, [&] { return machine_->syncFolder(path); });
}
