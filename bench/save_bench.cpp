// What a save costs, from opening the file to closing it: beside TagLib alone, which a full disk or a kill
// damages, and beside copying the file, editing the copy with TagLib and renaming it. Each way with what
// reaches the disk when it returns, and without. Run it in the folder whose disk is to be measured.

#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/platform/ZALHost.h>

#include <benchmark/benchmark.h>
#include <id3v2tag.h>
#include <mpegfile.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool syncs = true;

}  // namespace

// Stands before the C library's, for the library under test, too.
extern "C" __attribute__((visibility("default"))) int fsync(int file) {
    return syncs ? static_cast<int>(::syscall(SYS_fsync, file)) : 0;
}

namespace {

const std::string song = "zaltag-bench.mp3";
const std::string copy = "zaltag-bench-copy.mp3";

void syncPath(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY);
    ::fsync(file);
    ::close(file);
}

std::string frames(std::size_t length) {
    std::string out;
    for (std::size_t i = 0; out.size() < length; ++i) {
        std::string frame(417, static_cast<char>(i % 251));
        frame.replace(0, 4, "\xFF\xFB\x90\x64", 4);
        out += frame;
    }
    return out;
}

void setTitle(const std::string& path, const std::string& title) {
    TagLib::MPEG::File file(path.c_str(), false);
    file.ID3v2Tag(true)->setTitle(title);
    file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripNone);
}

void saveByTagLib(const std::string& title) {
    setTitle(song, title);
    syncPath(song);
}

void saveByCopy(const std::string& title) {
    std::filesystem::copy_file(song, copy, std::filesystem::copy_options::overwrite_existing);
    setTitle(copy, title);
    syncPath(copy);
    std::filesystem::rename(copy, song);
    syncPath(".");
}

void saveByUs(const std::string& title) {
    const auto tag = ZALTagID3::tagAtPath(song, false);
    tag->setTitle(title);
    if (!tag->save()) std::abort();
}

struct Job {
    const char* name;
    std::size_t before;  // length of the title in the file
    std::size_t after;   // and of the one saved
};

void measure(benchmark::State& state, const std::function<void(const std::string&)>& save, const Job& job,
             std::size_t audio, ZALSaveMode mode, bool withSync) {
    {
        std::ofstream(song, std::ios::binary) << frames(audio);
        setTitle(song, std::string(job.before, 'a'));
    }
    std::filesystem::copy_file(song, "zaltag-bench-before.mp3",
                               std::filesystem::copy_options::overwrite_existing);
    ZALHost::shared().setSaveMode(mode);
    for ([[maybe_unused]] auto round : state) {
        syncs = true;
        std::filesystem::copy_file("zaltag-bench-before.mp3", song,
                                   std::filesystem::copy_options::overwrite_existing);
        syncPath(song);
        syncs = withSync;
        const auto start = std::chrono::steady_clock::now();
        save(std::string(job.after, 'b'));
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(took.count());
    }
    for (const char* name : {"zaltag-bench-before.mp3", song.c_str(), copy.c_str()}) {
        std::remove(name);
    }
}

void addAll() {
    const Job jobs[] = {{"one page", 20, 20},
                        {"same length", 20000, 20000},
                        {"growing", 20, 20000},
                        {"shrinking", 200000, 20}};
    const struct {
        const char* name;
        void (*save)(const std::string& title);
        ZALSaveMode mode;
    } ways[] = {
        {"TagLib", saveByTagLib, ZALSaveMode::safe},
        {"copy, edit, rename", saveByCopy, ZALSaveMode::safe},
        {"zaltag safe", saveByUs, ZALSaveMode::safe},
        {"zaltag inPlace", saveByUs, ZALSaveMode::inPlace},
    };
    const std::pair<const char*, std::size_t> lengths[] = {{"300 KB", 300'000}, {"9 MB", 9'000'000}};
    for (const auto& [lengthName, length] : lengths) {
        for (const Job& job : jobs) {
            for (const bool withSync : {false, true}) {
                for (const auto& way : ways) {
                    const std::string name = std::string(lengthName) + "/" + job.name +
                                             (withSync ? "/sync/" : "/no sync/") + way.name;
                    benchmark::RegisterBenchmark(name.c_str(),
                                                 [=, bytes = length](benchmark::State& state) {
                                                     measure(state, way.save, job, bytes, way.mode, withSync);
                                                 })
                        ->UseManualTime()
                        ->Iterations(40)
                        ->Unit(benchmark::kMicrosecond);
                }
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    addAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
