#include "support/CollectionFixtures.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

QuietHost::QuietHost() {
    host->setUserDefaults(ZALUserDefaults::inMemory());
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

std::string traktorFolder(const std::string& path) {
    std::string folder;
    for (const char c : path + "/") {
        folder += c == '/' ? "/:" : std::string(1, c);
    }
    return folder;
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
    EXPECT_TRUE(ZALMainQueue::shared().runUntil([&] { return times > 0; }, std::chrono::minutes(10)));
    ZALMainQueue::shared().runPending();
    EXPECT_EQ(times, 1);
    return result;
}
