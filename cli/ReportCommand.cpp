#include "Assignments.h"
#include "CollectionMembers.h"
#include "Collections.h"
#include "Commands.h"
#include "Files.h"
#include "InOrder.h"
#include "Interrupts.h"
#include "Matching.h"
#include "Output.h"
#include "PageFile.h"
#include "Progress.h"
#include "ReportPage.h"
#include "TagMembers.h"
#include "Thumbnail.h"

#include <zaltag/base/ZALJSON.h>
#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cmath>
#include <map>
#include <thread>

namespace {

using Array = ZALJSONValue::Array;

struct Options {
    std::vector<std::string> paths;
    std::string out;
    CollectionOptions collections;
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
};

// JSON as it may stand inside a script element: nothing in it can end that.
std::string embedded(std::string_view json) {
    std::string out;
    out.reserve(json.size());
    for (const char c : json) {
        c == '<' ? out += "\\u003c" : out += c;
    }
    return out;
}

// Beats as lines of [start, step, count]: a grid of even beats is one of them, whatever its length.
ZALJSONValue beatRuns(const std::optional<ZALArray<double>>& beats) {
    constexpr double even = 0.0005;  // seconds off the line
    if (!beats) return nullptr;
    Array runs;
    for (std::size_t i = 0; i < beats->size();) {
        const double start = (*beats)[i];
        const double step = i + 1 < beats->size() ? (*beats)[i + 1] - start : 0;
        std::size_t count = 1;
        while (i + count < beats->size() &&
               std::abs((*beats)[i + count] - start - step * static_cast<double>(count)) < even) {
            ++count;
        }
        runs.push_back(Array{start, step, static_cast<std::int64_t>(count)});
        i += count;
    }
    return runs;
}

// A collection's view of a file: what `rekordbox tracks --json` gives, and its beats.
template <typename Database>
std::string laneOf(const Database& database, const std::string& key) {
    const auto track = database.trackForSongFileAtURL(key);
    if (!track) return "null";
    Members members = membersOf(*track, {});
    members.emplace_back("beatRuns", beatRuns(track->beatTimes()));
    return jsonObject(members);
}

// What one file brings to the page.
struct Row {
    std::string file;
    std::string rekordbox = "null";
    std::string traktor = "null";
    std::string cover;  // a data URI, or empty
    std::string failure;
};

class Report {
  public:
    explicit Report(const Options& options)
        : options_(options), output_(false), page_(absolutePath(options.out)) {}
    int run();

  private:
    bool mayUse(const std::optional<std::string>& option, const char* place);
    Row work(const std::string& path, std::size_t number) const;
    void take(Row&& row);
    std::string coverIndex(const std::string& uri);
    void writeTracks(const FoundFiles& found);
    void writeCovers();
    void writeAbout();

    const Options& options_;
    Output output_;
    PageFile page_;
    bool usesRekordbox_ = false;
    bool usesTraktor_ = false;
    std::vector<std::string> absolute_;  // the files' paths
    std::optional<Matching> inRekordbox_;
    std::optional<Matching> inTraktor_;
    std::map<std::string, std::size_t> covers_;  // most tracks of an album share one
    std::size_t tracks_ = 0;
    std::size_t failures_ = 0;
};

bool Report::mayUse(const std::optional<std::string>& option, const char* place) {
    if (!option) return false;
    const std::string reason = whyNotUsable(*collectionPlace(place)->collection);
    if (!reason.empty()) output_.problem(reason);
    return reason.empty();
}

Row Report::work(const std::string& path, std::size_t number) const {
    Row row;
    const OpenedFile opened = openFile(path, false);
    if (opened.tag == nullptr) {
        row.failure = opened.failure;
        row.file = jsonObject({{"path", path}, {"error", opened.failure}});
        return row;
    }
    row.file = jsonObject(membersOfTag(path, *opened.tag));
    if (opened.tag->supportsImages()) row.cover = thumbnailURI(opened.tag->primaryImage());
    if (inRekordbox_) row.rekordbox = laneOf(*rekordboxDatabase(), inRekordbox_->of(number).key);
    if (inTraktor_) row.traktor = laneOf(*traktorDatabase(), inTraktor_->of(number).key);
    return row;
}

std::string Report::coverIndex(const std::string& uri) {
    if (uri.empty()) return "null";
    return std::to_string(covers_.emplace(uri, covers_.size()).first->second);
}

// One line a track, which the page reads a few at a time.
void Report::take(Row&& row) {
    page_.write(tracks_++ > 0 ? ",\n" : "\n");
    page_.write(embedded(fmt::format(R"({{"file": {}, "cover": {}, "rekordbox": {}, "traktor": {}}})",
                                     row.file, coverIndex(row.cover), row.rekordbox, row.traktor)));
}

void Report::writeTracks(const FoundFiles& found) {
    page_.write(R"(<script type="application/json" id="tracks">[)");
    for (const auto& [path, reason] : found.failures) {
        ++failures_;
        output_.failure(path, reason);
    }
    for (const std::string& path : found.paths) {
        absolute_.push_back(collectionPath(path));
    }
    const auto match = [this](std::optional<Matching>& matching, const char* place) {
        matching.emplace(*collectionPlace(place)->collection, absolute_, Matching::Of::files);
    };
    if (usesRekordbox_) match(inRekordbox_, "rekordbox");
    if (usesTraktor_) match(inTraktor_, "traktor");
    Progress progress(found.paths.size());
    runInOrder<Row>(
        found.paths.size(), options_.jobs, [&](std::size_t i) { return work(found.paths[i], i); },
        [&](std::size_t i, Row&& row) {
            if (!row.failure.empty()) {
                progress.hide();
                ++failures_;
                output_.failure(found.paths[i], row.failure);
            }
            take(std::move(row));
            progress.show(i + 1);
        });
    page_.write("\n]</script>\n");
}

void Report::writeCovers() {
    std::vector<const std::string*> uris(covers_.size());
    for (const auto& [uri, index] : covers_) {
        uris[index] = &uri;
    }
    page_.write(R"(<script type="application/json" id="covers">[)");
    for (std::size_t i = 0; i < uris.size(); ++i) {
        page_.write((i > 0 ? ",\n\"" : "\n\"") + *uris[i] + "\"");
    }
    page_.write("]</script>\n");
}

void Report::writeAbout() {
    const auto collection = [](bool isUsed, const std::optional<std::string>& file) {
        return isUsed ? ZALJSONValue(collectionPath(*file)) : ZALJSONValue();
    };
    page_.write(R"(<script type="application/json" id="about">)");
    page_.write(
        embedded(jsonObject({{"version", ZALHost::libraryVersion()},
                             {"rekordbox", collection(usesRekordbox_, options_.collections.rekordbox)},
                             {"traktor", collection(usesTraktor_, options_.collections.traktor)}})));
    page_.write("</script>\n");
}

int Report::run() {
    if (!page_.failure().empty()) {
        output_.failure(options_.out, page_.failure());
        return output_.finish();
    }
    useCollections(options_.collections);
    usesRekordbox_ = mayUse(options_.collections.rekordbox, "rekordbox");
    usesTraktor_ = mayUse(options_.collections.traktor, "traktor");
    std::string_view frame = reportPage::html;
    const auto writeUpTo = [&](std::string_view mark) {
        const std::size_t at = frame.find(mark);
        page_.write(frame.substr(0, at));
        frame.remove_prefix(at + mark.size());
    };
    writeUpTo("{{style}}");
    page_.write(reportPage::style);
    writeUpTo("{{data}}");
    writeTracks(findFiles(options_.paths));
    if (isInterrupted()) return output_.finish();  // the page before stays
    writeCovers();
    writeAbout();
    writeUpTo("{{script}}");
    page_.write(reportPage::script);
    page_.write(frame);
    const std::string reason = page_.finish();
    if (!reason.empty()) {
        output_.failure(options_.out, reason);
    } else {
        output_.line(fmt::format("{} files, {} failures: {}", tracks_, failures_, printable(options_.out)));
    }
    return output_.finish();
}

// A page in the place of something that is no page would be a loss, or a surprise.
void checkOut(const std::string& out) {
    const ZALFileKind kind = ZALHost::shared().fileSystem()->kindOfFile(out);
    if (kind == ZALFileKind::folder)
        throw UsageError(printable(out) + " is a folder; name a file for the page");
    if (kind == ZALFileKind::other) throw UsageError(printable(out) + " is not a regular file");
    if (ZALTag::canInitWithPath(out)) throw UsageError(printable(out) + " has the name of an audio file");
}

}  // namespace

void addReportCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("report", "Write one page that shows a music folder");
    command->add_option("PATH", options->paths, "Folders and audio files")->required();
    command->add_option("-o,--output", options->out, "The page to write, an HTML file")
        ->type_name("FILE")
        ->required();
    addCollectionOptions(*command, options->collections);
    command->add_option("-j,--jobs", options->jobs, "Threads to use")
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""));
    command->callback([options, &chosen] {
        chosen = [options] {
            checkOut(options->out);
            holdInterrupts();
            return Report(*options).run();
        };
    });
}
