#pragma once

#include <zaltag/base/ZALData.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A file for targets that read and write one, in a folder of its own; in memory where the machine has
/// /dev/shm.
class ScratchFile {
  public:
    explicit ScratchFile(const std::string& name) {
        const bool inMemory = std::filesystem::is_directory("/dev/shm");
        const auto parent =
            inMemory ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path();
        std::string folder = (parent / "zaltag-fuzz-XXXXXX").string();
        if (::mkdtemp(folder.data()) == nullptr) std::abort();
        path_ = folder + "/" + name;
    }
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove_all(std::filesystem::path(path_).parent_path(), ignored);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& path() const { return path_; }
    void write(ZALDataView bytes) const {
        std::ofstream out(path_, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    static ZALData contentsOf(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

  private:
    std::string path_;
};
