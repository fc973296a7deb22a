#include "Backup.h"
#include "Collections.h"
#include "Commands.h"
#include "Files.h"
#include "Interrupts.h"
#include "Journal.h"
#include "Output.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace {

struct Options {
    bool list = false;
};

// What became of one file. What failed may be tried again.
enum class Outcome { nothing, done, leftAlone, failed };

Outcome failed(Output& output, const std::string& path, const std::string& reason) {
    output.failure(path, reason);
    return Outcome::failed;
}

Outcome leftAlone(Output& output, const WrittenFile& file) {
    const std::string copy =
        file.copy.empty() ? "" : fmt::format("; as it was before: {}", printable(file.copy));
    const char* why = file.after.empty() ? "the run was ended before it noted what it wrote: left alone"
                                         : "was changed since: left alone";
    output.failure(file.path, why + copy);
    return Outcome::leftAlone;
}

Outcome takeAway(Output& output, const WrittenFile& file) {
    if (const auto error = ZALHost::shared().fileSystem()->unlink(file.path))
        return failed(output, file.path, error.message());
    output.line(fmt::format("{}: taken away", printable(file.path)));
    return Outcome::done;
}

Outcome takeBack(Output& output, const WrittenFile& file) {
    const std::string now = digestOf(file.path);
    // The run was ended before it wrote this, or it wrote what was there before.
    if (now == file.before) return file.after.empty() ? Outcome::nothing : Outcome::done;
    if (file.after.empty() || now != file.after) return leftAlone(output, file);
    const Collection* collection = collectionOf(file.program);
    const std::string notNow = collection != nullptr ? collection->whyNotWritable() : std::string();
    if (!notNow.empty()) return failed(output, file.path, notNow);
    if (file.copy.empty()) return takeAway(output, file);
    const std::string reason = copyFile(file.copy, file.path);
    if (!reason.empty()) return failed(output, file.path, reason);
    output.line(fmt::format("{}: as it was before", printable(file.path)));
    return Outcome::done;
}

Outcome takeBack(Output& output, const WrittenTag& written) {
    const OpenedFile opened = openFile(written.path, false);
    if (!opened.tag) return failed(output, written.path, opened.failure);
    const auto now = opened.tag->cuePayloads();
    if (now == written.before) return Outcome::nothing;
    if (now != written.after) {
        output.failure(written.path, "its cue points were changed since: left alone");
        return Outcome::leftAlone;
    }
    if (opened.tag->readOnly()) return failed(output, written.path, readOnlyReason);
    opened.tag->setCuePayloads(written.before);
    const std::string reason = saveFile(*opened.tag);
    if (!reason.empty()) return failed(output, written.path, reason);
    output.line(fmt::format("{}: its cue points are as they were before", printable(written.path)));
    return Outcome::done;
}

// Takes back what was written, the last first, and leaves those that may be tried again. True when there was
// anything to be done.
template <typename Written>
bool takeBackAll(Output& output, std::vector<Written>& all) {
    std::vector<Written> left;
    bool isAny = false;
    for (auto one = all.rbegin(); one != all.rend(); ++one) {
        const Outcome outcome = isInterrupted() ? Outcome::failed : takeBack(output, *one);
        if (outcome == Outcome::failed) left.push_back(*one);
        isAny = isAny || outcome != Outcome::nothing;
    }
    all.assign(left.rbegin(), left.rend());
    return isAny;
}

bool takeBackRun(Output& output, const std::string& path) {
    Journaled journal = readJournal(path);
    const bool wroteFiles = takeBackAll(output, journal.files);
    const bool wroteTags = takeBackAll(output, journal.tags);
    const std::string reason = rewriteJournal(path, journal);
    if (!reason.empty()) output.problem(reason);
    return wroteFiles || wroteTags;
}

void list(Output& output, const std::vector<std::string>& all) {
    for (const std::string& path : all) {
        const Journaled journal = readJournal(path);
        output.line(printable(path));
        for (const WrittenFile& file : journal.files) {
            output.line("  " + printable(file.path));
        }
        for (const WrittenTag& tag : journal.tags) {
            output.line("  " + printable(tag.path));
        }
    }
}

int undo(const Options& options) {
    Output output(false);
    const std::vector<std::string> all = journals();
    if (options.list) {
        list(output, all);
        return output.finish();
    }
    holdInterrupts();
    // A run that was ended before it wrote anything is not the last one.
    const bool isAny = std::any_of(all.rbegin(), all.rend(),
                                   [&](const std::string& path) { return takeBackRun(output, path); });
    if (!isAny) output.problem("there is no run that could be taken back");
    return output.finish();
}

}  // namespace

void addUndoCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("undo", "Take back what the last sync wrote");
    command->add_flag("--list", options->list, "Only name the runs that can be taken back");
    command->callback([options, &chosen] { chosen = [options] { return undo(*options); }; });
}
