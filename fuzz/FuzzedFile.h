#pragma once

#include <zaltag/base/ZALData.h>

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A file of these bytes in a folder of its own, in memory where the machine has such a one; gone with its
/// object.
class FuzzedFile {
  public:
    FuzzedFile(const std::uint8_t* data, std::size_t size, const std::string& extension) {
        const std::filesystem::path memory = "/dev/shm";
        const auto folder =
            std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
        folder_ = folder / ("zaltag-fuzz-" + std::to_string(::getpid()) + "." + extension);
        std::filesystem::remove_all(folder_);  // left by a killed process of the same number
        std::filesystem::create_directory(folder_);
        path_ = (folder_ / ("file." + extension)).string();
        std::ofstream out(path_, std::ios::binary);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        if (!out.flush()) std::abort();
    }
    ~FuzzedFile() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    FuzzedFile(const FuzzedFile&) = delete;
    FuzzedFile& operator=(const FuzzedFile&) = delete;

    const std::string& path() const { return path_; }
    /// Whether the folder holds this file and nothing else.
    bool isAlone() const {
        return std::distance(std::filesystem::directory_iterator(folder_), {}) == 1 &&
               std::filesystem::exists(path_);
    }

  private:
    std::filesystem::path folder_;
    std::string path_;
};

/// The bytes of a file.
inline ZALData contentsOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
