#include "support/CollectionFixtures.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

ZALNullableString MemoryDefaults::stringForKey(const std::string& key) {
    const std::lock_guard guard(mutex_);
    const auto found = texts_.find(key);
    return found == texts_.end() ? ZALNullableString() : found->second;
}

ZALNullableData MemoryDefaults::dataForKey(const std::string& key) {
    const std::lock_guard guard(mutex_);
    const auto found = data_.find(key);
    return found == data_.end() ? ZALNullableData() : found->second;
}

bool MemoryDefaults::hasValueForKey(const std::string& key) {
    const std::lock_guard guard(mutex_);
    return texts_.contains(key) || data_.contains(key);
}

void MemoryDefaults::setString(const std::string& key, const std::string& value) {
    const std::lock_guard guard(mutex_);
    texts_[key] = value;
}

void MemoryDefaults::setData(const std::string& key, const ZALNullableData& value) {
    const std::lock_guard guard(mutex_);
    data_[key] = value;
}

void MemoryDefaults::removeKey(const std::string& key) {
    const std::lock_guard guard(mutex_);
    texts_.erase(key);
    data_.erase(key);
}

QuietHost::QuietHost() {
    host->setUserDefaults(std::make_shared<MemoryDefaults>());
    host->setClock(clock);
    host->setEnvironment([](const std::string&) { return ZALNullableString(); });
    host->setRunningPrograms([] { return std::vector<std::string>(); });
    host->setName("Host");
    host->setVersion("1.2");
}

CollectionHost::CollectionHost() {
    host->setDocumentsFolders([path = root()] { return std::vector<std::string>{path}; });
}

std::string CollectionHost::file(const std::string& name, const std::string& content) const {
    const std::string path = root() + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

Completed completed(const std::function<void(ZALCompletion)>& operation) {
    Completed result;
    int times = 0;
    operation([&](bool success, const ZALError* error) {
        ++times;
        result = {success, error == nullptr ? std::nullopt : std::optional(*error)};
    });
    EXPECT_TRUE(ZALMainQueue::shared().runUntil([&] { return times > 0; }, std::chrono::seconds(30)));
    ZALMainQueue::shared().runPending();
    EXPECT_EQ(times, 1);
    return result;
}
