#include "Examples.h"

#include "Collections.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

namespace {

struct Examples {
    const char* command;  ///< with the command it is below
    const char* lines;
};

constexpr Examples examples[] = {
    {"show", "zaltag show song.mp3\nzaltag show --json ~/Music/*.flac"},
    {"set",
     "zaltag set song.mp3 title='Night Drive' tempo=124 initialKey=8A\n"
     "zaltag set *.wav genre= infoGenre="},
    {"record",
     "zaltag record song.mp3 zalKey='{\"key\":\"8A\",\"source\":\"me\",\"algorithm\":1}'\n"
     "zaltag record song.mp3 zalKey="},
    {"cues",
     "zaltag cues list song.mp3 --from serato\n"
     "zaltag cues set song.mp3 --to serato 0.5=Intro 64=Drop"},
    {"cues list",
     "zaltag cues list song.mp3 --from serato\n"
     "zaltag cues list --json song.mp3 --from traktor --traktor collection.nml"},
    {"cues set",
     "zaltag cues set song.mp3 --to serato 0.5=Intro 64=Drop\n"
     "zaltag cues set song.mp3 --to serato 'A:1:04=Drop#CC0000' 32-40=Break\n"
     "zaltag cues set song.mp3 --to rekordbox --rekordbox rekordbox.xml 64=Drop\n"
     "zaltag cues set song.mp3 --to zal --clear"},
    {"comments", "zaltag comments list song.mp3\nzaltag comments set song.mp3 comment='warm up'"},
    {"comments list", "zaltag comments list song.mp3"},
    {"comments set", "zaltag comments set song.mp3 comment='warm up'"},
    {"comments prune", "zaltag comments prune song.mp3"},
    {"comments strip-v1", "zaltag comments strip-v1 song.mp3"},
    {"artwork",
     "zaltag artwork backup song.mp3 --image mine.png\n"
     "zaltag artwork restore song.mp3"},
    {"artwork list", "zaltag artwork list song.mp3"},
    {"artwork export", "zaltag artwork export *.mp3 --out covers"},
    {"artwork replace", "zaltag artwork replace song.mp3 --image cover.jpg"},
    {"artwork backup", "convert mine.svg png:- | zaltag artwork backup song.mp3 --image -"},
    {"artwork restore", "zaltag artwork restore song.mp3"},
    {"artwork clear", "zaltag artwork clear song.mp3"},
    {"copy", "zaltag copy old.m4a new.mp3"},
    {"dump", "zaltag dump song.mp3"},
    {"scan", "zaltag scan ~/Music\nzaltag scan --json --jobs 2 ~/Music > library.json"},
    {"rekordbox", "zaltag rekordbox tracks --rekordbox ~/Documents/rekordbox.xml"},
    {"rekordbox info", "zaltag rekordbox info"},
    {"rekordbox tracks", "zaltag rekordbox tracks --json --rekordbox rekordbox.xml"},
    {"rekordbox track", "zaltag rekordbox track ~/Music/song.mp3"},
    {"rekordbox playlists", "zaltag rekordbox playlists"},
    {"traktor", "zaltag traktor track ~/Music/song.mp3 --traktor collection.nml"},
    {"traktor info", "zaltag traktor info"},
    {"traktor tracks", "zaltag traktor tracks --json --traktor collection.nml"},
    {"traktor track", "zaltag traktor track ~/Music/song.mp3 --boot-volume 'Macintosh HD'"},
    {"traktor playlists", "zaltag traktor playlists"},
    {"sync",
     "zaltag sync ~/Music --from serato --to rekordbox-hot --to traktor --dry-run\n"
     "zaltag sync ~/Music --from traktor --to serato --map 'C:/Music=/mnt/Music'"},
    {"undo", "zaltag undo"},
    {"report", "zaltag report ~/Music -o music.html"},
    {"versions", "zaltag versions --service https://example.org"},
};

std::string indented(const std::string& lines) {
    std::string out = "\n  ";
    for (const char c : lines) {
        out += c == '\n' ? "\n  " : std::string(1, c);
    }
    return out;
}

// The places behind --from or --to, for a command that has one.
std::string places(const CLI::App& command, const char* option, bool readableOnly) {
    if (command.get_option_no_throw(option) == nullptr) return {};
    return wrapped(fmt::format("Places for {}", option), allPlaceNames(readableOnly)) + "\n";
}

void addExamplesTo(CLI::App& command, const std::string& name) {
    // The name of a positional argument says it all.
    for (CLI::Option* option : command.get_options()) {
        if (!option->nonpositional()) option->type_name("");
    }
    for (const Examples& one : examples) {
        if (one.command != name) continue;
        // What the command said there by itself comes first: the names that it takes.
        const std::string own = command.get_footer();
        command.footer((own.empty() ? "" : own + "\n") + places(command, "--from", true) +
                       places(command, "--to", false) + "Examples:" + indented(one.lines));
    }
    for (CLI::App* below : command.get_subcommands({})) {
        addExamplesTo(*below, name.empty() ? below->get_name() : name + " " + below->get_name());
    }
}

}  // namespace

std::string wrapped(const std::string& title, const std::vector<std::string>& names) {
    std::string out = title + ":";
    std::size_t column = out.size();
    for (const std::string& name : names) {
        const bool fits = column + name.size() + 1 <= 80;
        out += (fits ? " " : "\n  ") + name;
        column = (fits ? column : 1) + name.size() + 1;
    }
    return out + "\n";
}

void addExamples(CLI::App& program) {
    addExamplesTo(program, "");
    program.footer("Examples:" +
                   indented("zaltag show song.mp3\n"
                            "zaltag set song.mp3 title='Night Drive' tempo=124 initialKey=8A\n"
                            "zaltag sync ~/Music --from serato --to rekordbox-hot --dry-run\n"
                            "zaltag COMMAND --help") +
                   "\n\nExit status: 0 all done, 1 something failed, 2 wrong usage.");
}
