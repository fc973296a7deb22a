#include "Commands.h"
#include "Files.h"
#include "Interrupts.h"
#include "Output.h"
#include "TagMembers.h"

#include <zaltag/tag/ZALTagDataImage.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace fs = std::filesystem;

namespace {

struct Options {
    std::vector<std::string> files;
    std::string image;
    std::string folder = ".";
    bool json = false;
};

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Calls `use` for every file that opens and can hold pictures.
void forEachFile(const std::vector<std::string>& files, Output& output,
                 const std::function<void(const std::string& file, const ZALTag& tag)>& use) {
    for (const std::string& file : files) {
        const OpenedFile opened = openFile(file, true);
        if (opened.tag == nullptr) {
            output.failure(file, opened.failure);
        } else {
            use(file, *opened.tag);
        }
    }
}

int list(const Options& options) {
    Output output(options.json);
    forEachFile(options.files, output, [&](const std::string& file, const ZALTag& tag) {
        const ZALJSONValue pictures = jsonOfPictures(tag);
        if (output.json()) {
            output.object({{"path", file}, {"allImages", pictures}});
            return;
        }
        if (options.files.size() > 1) output.line(printable(file) + ":");
        std::size_t number = 0;
        for (const ZALJSONValue& picture : pictures.arrayValue()) {
            output.line(fmt::format("{}\t{}", ++number, lineOfPicture(picture)));
        }
    });
    return output.finish();
}

// The name of a picture's file: that of the song, the number of the picture in it, its mark, and its format.
std::string exportName(const std::string& file, std::size_t number, const ZALTagStoredImage& stored) {
    const ZALTagDataImage data(stored.data);
    const auto info = ZALImage::infoWithData(stored.data);
    const char* mark = data.isOriginalImage() ? ".original" : data.isCustomImage() ? ".customized" : "";
    const std::string format = info ? info->format : "bin";
    return fmt::format("{}.{}{}.{}", fs::path(file).stem().string(), number, mark,
                       format == "jpeg" ? "jpg" : format);
}

// Writes a file that is not there yet. Empty, or the reason why that failed.
std::string writeNewFile(const std::string& path, const ZALData& data) {
    Stream stream(std::fopen(path.c_str(), "wbx"), &std::fclose);
    if (stream == nullptr) return errno == EEXIST ? "exists already" : std::strerror(errno);
    const bool written = std::fwrite(data.data(), 1, data.size(), stream.get()) == data.size();
    if (std::fclose(stream.release()) == 0 && written) return {};
    std::string reason = std::strerror(errno);
    std::error_code ignored;
    fs::remove(path, ignored);
    return reason;
}

int exportPictures(const Options& options) {
    Output output(false);
    std::error_code error;
    fs::create_directories(options.folder, error);
    if (error) {
        output.failure(options.folder, error.message());
        return output.finish();
    }
    holdInterrupts();
    forEachFile(options.files, output, [&](const std::string& file, const ZALTag& tag) {
        std::size_t number = 0;
        for (const ZALTagStoredImage& stored : tag.allStoredImages()) {
            if (isInterrupted()) return;
            const std::string path = (fs::path(options.folder) / exportName(file, ++number, stored)).string();
            const std::string failure = writeNewFile(path, stored.data);
            if (failure.empty()) {
                output.line(printable(path));
            } else {
                output.failure(path, failure);
            }
        }
    });
    return output.finish();
}

// A change of pictures: whether a file needs it, and what it does.
struct Change {
    bool (*needed)(const ZALTag& tag);
    std::function<void(ZALTag& tag)> apply;
};

// Changes and saves one file; one that does not need it is not written. Empty, or the reason why it failed.
std::string changePictures(const std::string& file, const Change& change) {
    {
        const OpenedFile opened = openFile(file, true);
        if (opened.tag == nullptr) return opened.failure;
        if (!opened.tag->supportsImages())
            return fmt::format("{} holds no pictures", opened.tag->className());
        if (!change.needed(*opened.tag)) return {};
    }
    return changeFile(file, change.apply);
}

int changeAll(const Options& options, const Change& change) {
    Output output(false);
    holdInterrupts();
    for (const std::string& file : options.files) {
        if (isInterrupted()) break;
        const std::string failure = changePictures(file, change);
        if (!failure.empty()) output.failure(file, failure);
    }
    return output.finish();
}

bool holdsCustomized(const ZALTag& tag) {
    const auto stored = tag.allStoredImages();
    return std::any_of(stored.begin(), stored.end(), [](const ZALTagStoredImage& one) {
        return ZALTagDataImage(one.data).isCustomImage();
    });
}

bool always(const ZALTag& /*tag*/) {
    return true;
}

// The bytes of a file, or of standard input for "-". Empty, and `failure` filled, when they cannot be read.
ZALData readFile(const std::string& path, std::string& failure) {
    const bool standardInput = path == "-";
    Stream stream(standardInput ? nullptr : std::fopen(path.c_str(), "rb"),
                  [](std::FILE* file) { return file != nullptr ? std::fclose(file) : 0; });
    std::FILE* source = standardInput ? stdin : stream.get();
    if (source == nullptr) {
        failure = std::strerror(errno);
        return {};
    }
    ZALData data;
    ZALData block(1 << 16);
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), source)) {
        data.insert(data.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
    }
    if (std::ferror(source) != 0) failure = std::strerror(errno);
    return data;
}

// Runs a change with the picture that --image names; a picture that cannot be read is one line, and no file
// is touched.
int changeWithImage(const Options& options, void (*apply)(ZALTag& tag, const ZALImagePtr& image)) {
    std::string failure;
    const ZALData data = readFile(options.image, failure);
    const ZALImagePtr image = failure.empty() ? ZALImage::imageWithData(data) : nullptr;
    if (image != nullptr && image->PNGData()) {
        return changeAll(options, {always, [&](ZALTag& tag) { apply(tag, image); }});
    }
    if (failure.empty())
        failure = image != nullptr ? "is too wide or high for a PNG" : "is not a picture that can be read";
    Output output(false);
    output.failure(options.image, failure);
    return output.finish();
}

int replace(const Options& options) {
    return changeWithImage(options, [](ZALTag& tag, const ZALImagePtr& image) {
        if (!tag.replaceOriginalImage(image))
            throw ChangeRefused("holds a customised picture; restore the original one first");
    });
}

int backup(const Options& options) {
    return changeWithImage(options, [](ZALTag& tag, const ZALImagePtr& image) {
        tag.backupOriginalImageAndSetCustomImage(image);
        if (!holdsCustomized(tag)) throw ChangeRefused("the picture could not be put in");
    });
}

int restore(const Options& options) {
    return changeAll(options, {holdsCustomized, [](ZALTag& tag) { tag.restoreOriginalImage(); }});
}

int clear(const Options& options) {
    return changeAll(options, {[](const ZALTag& tag) { return tag.hasImages(); },
                               [](ZALTag& tag) { tag.replacePrimaryImage(nullptr, false); }});
}

}  // namespace

void addArtworkCommand(CLI::App& program, Command& chosen) {
    CLI::App* command = program.add_subcommand("artwork", "List, export and change pictures");
    command->require_subcommand(1);
    const auto add = [&](const char* name, const char* text, int (*run)(const Options&)) {
        const auto options = std::make_shared<Options>();
        CLI::App* sub = command->add_subcommand(name, text);
        sub->add_option("FILE", options->files, "Audio files")->required();
        sub->callback([options, run, &chosen] { chosen = [options, run] { return run(*options); }; });
        return std::pair(sub, options);
    };
    const auto addImage = [](const auto& added) {
        added.first
            ->add_option("--image", added.second->image, "PNG, JPEG, WebP, TIFF, GIF, BMP; - for stdin")
            ->type_name("FILE")
            ->required();
    };
    const auto [lister, listed] = add("list", "Print number, type, format, size, bytes and mark", list);
    lister->add_flag("--json", listed->json, "Print one JSON array, an object per file");
    const auto [exporter, exported] =
        add("export", "Write all pictures to files, as they are stored", exportPictures);
    exporter->add_option("--out", exported->folder, "Where to, created when missing; else here")
        ->type_name("FOLDER");
    addImage(add("replace", "Replace the first picture (see backup)", replace));
    addImage(add("backup", "Put in a picture of yours, keep the original one", backup));
    add("restore", "Take yours out and put the original one back", restore);
    add("clear", "Remove all pictures", clear);
}
