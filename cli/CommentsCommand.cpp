#include "Assignments.h"
#include "Commands.h"
#include "Files.h"
#include "Output.h"
#include "TagMembers.h"

#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/tag/ZALTagComment.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <filesystem>

namespace {

struct Options {
    std::vector<std::string> words;
    bool json = false;
};

int list(const Options& options) {
    Output output(options.json);
    for (const std::string& file : options.words) {
        const OpenedFile opened = openFile(file, true);
        if (opened.tag == nullptr) {
            output.failure(file, opened.failure);
        } else if (options.json) {
            output.object({{"path", file}, {"allComments", jsonOfComments(*opened.tag)}});
        } else {
            if (options.words.size() > 1) output.line(printable(file) + ":");
            for (const ZALTagComment& comment : opened.tag->allComments()) {
                const char* mark = comment.isPrimary()         ? "primary"
                                   : comment.tagVersion() == 0 ? "ID3v1"
                                                               : "other";
                output.line(fmt::format("{}\t{}\t{}", mark, printable(comment.lang().value_or("-")),
                                        printable(comment.comment().value_or(""))));
            }
        }
    }
    return output.finish();
}

// The files and the text: "comment=TEXT", or the last word when no file of that name exists.
std::pair<std::vector<std::string>, std::string> readWords(const Options& options) {
    std::vector<std::string> files = options.words;
    std::string text = files.back();
    std::error_code ignored;
    if (files.size() < 2 || std::filesystem::exists(text, ignored)) {
        throw UsageError("no comment is given: comments set FILE... comment=TEXT");
    }
    files.pop_back();
    if (text.starts_with("comment=")) text.erase(0, std::string("comment=").size());
    if (ZALValidUTF8(text) != text) throw UsageError("the comment is not UTF-8");
    return {files, text};
}

int set(const Options& options) {
    const auto [files, text] = readWords(options);
    return changeFiles(files, [&text = text](ZALTag& tag) { tag.setComment(text); });
}

ZALTag& withSeveralComments(ZALTag& tag) {
    if (!tag.supportsSeveralComments()) throw ChangeRefused("only files with ID3 tags have such comments");
    return tag;
}

}  // namespace

void addCommentsCommand(CLI::App& program, Command& chosen) {
    CLI::App* command = program.add_subcommand("comments", "List, set and clean up comments");
    command->require_subcommand(1);
    const auto add = [&](const char* name, const char* text, const char* words,
                         const std::function<int(const Options&)>& run) {
        const auto options = std::make_shared<Options>();
        CLI::App* sub = command->add_subcommand(name, text);
        sub->add_option(words, options->words, "Audio files")->required();
        sub->callback([options, run, &chosen] { chosen = [options, run] { return run(*options); }; });
        return std::pair(sub, options);
    };
    const auto [lister, options] = add("list", "Print all comments: kind, language, text", "FILE", list);
    lister->add_flag("--json", options->json, "Print one JSON array, an object per file");
    add("set", "Set the primary comment", "FILE... comment=TEXT", set);
    add("prune", "Remove all but the primary and foreign ones", "FILE", [](const Options& o) {
        return changeFiles(o.words, [](ZALTag& tag) { withSeveralComments(tag).deleteExtraneousComments(); });
    });
    add("strip-v1", "Empty the comment of the ID3v1 tag", "FILE", [](const Options& o) {
        return changeFiles(o.words, [](ZALTag& tag) { withSeveralComments(tag).deleteID3v1Comment(); });
    });
}
