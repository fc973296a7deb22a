// Runs a fuzz target over the files and folders named on the command line, in builds without a fuzzing
// engine.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::size_t replayFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t inputs = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i])) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
                inputs += replayFile(entry.path());
            }
        } else {
            inputs += replayFile(argv[i]);
        }
    }
    std::cout << inputs << " inputs replayed\n";
    return inputs == 0 ? 1 : 0;  // an empty corpus would be a check that cannot fail
}
