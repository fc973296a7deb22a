// collection load|update rekordbox|traktor FILE: the least a program does for a collection with the
// same libraries, one step after the other: read, Expat's pass, pugixml's tree, XPath, decode, NFD, map; and
// besides set the cues of every hundredth track, serialise, write, rename.
// collection verify rekordbox|traktor FILE: counts what stands in a file that was written.

#include "Measure.h"

#include <expat.h>
#include <utf8proc.h>
#include <pugixml.hpp>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include <fcntl.h>
#include <unistd.h>

namespace {

struct Program {
    const char* tracks;
    const char* cue;
    const char* indent;
    unsigned format;
    std::string (*path)(pugi::xml_node track);
    void (*setCue)(pugi::xml_node cue, int slot);
};

void finish(bool done) {
    if (!done) std::abort();
}

void checkWellFormed(const std::string& file) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    const int descriptor = ::open(file.c_str(), O_RDONLY);
    for (ssize_t count = 1; count > 0;) {
        constexpr int block = 1 << 20;
        count = ::read(descriptor, XML_GetBuffer(parser, block), block);
        finish(count >= 0 && XML_ParseBuffer(parser, static_cast<int>(count), count == 0) == XML_STATUS_OK);
    }
    ::close(descriptor);
    XML_ParserFree(parser);
}

std::string percentDecoded(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '%' && i + 2 < text.size();
        out += isEscape ? static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16))
                        : text[i];
        if (isEscape) i += 2;
    }
    return out;
}

std::string rekordboxPath(pugi::xml_node track) {
    return percentDecoded(track.attribute("Location").value() + std::strlen("file://localhost"));
}

std::string traktorPath(pugi::xml_node track) {
    const pugi::xml_node location = track.child("LOCATION");
    std::string path = location.attribute("DIR").value();
    for (auto at = path.find("/:"); at != std::string::npos; at = path.find("/:", at + 1)) {
        path.erase(at + 1, 1);
    }
    return path + location.attribute("FILE").value();
}

std::string decomposed(const std::string& path) {
    utf8proc_uint8_t* text = nullptr;
    const auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE);
    const auto length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(path.data()),
                                     static_cast<utf8proc_ssize_t>(path.size()), &text, options);
    finish(length >= 0);
    std::string out(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
    std::free(text);
    return out;
}

void setRekordboxCue(pugi::xml_node cue, int slot) {
    cue.append_attribute("Name") = "Bench";
    cue.append_attribute("Start") = std::to_string(10 + 15 * slot).c_str();
    cue.append_attribute("Type") = "0";
    cue.append_attribute("Num") = slot;
}

void setTraktorCue(pugi::xml_node cue, int slot) {
    cue.append_attribute("NAME") = "Bench";
    cue.append_attribute("DISPL_ORDER") = "0";
    cue.append_attribute("TYPE") = "0";
    cue.append_attribute("START") = std::to_string(1000.0 * (10 + 15 * slot)).c_str();
    cue.append_attribute("LEN") = "0.000000";
    cue.append_attribute("REPEATS") = "-1";
    cue.append_attribute("HOTCUE") = slot;
}

constexpr Program rekordbox = {"/DJ_PLAYLISTS/COLLECTION/TRACK",
                               "POSITION_MARK",
                               "  ",
                               pugi::format_indent,
                               rekordboxPath,
                               setRekordboxCue};
constexpr Program traktor = {"/NML/COLLECTION/ENTRY",
                             "CUE_V2",
                             "",
                             pugi::format_indent | pugi::format_no_empty_element_tags,
                             traktorPath,
                             setTraktorCue};

// The cues that a save replaces: the hot cues, without the grid.
bool isReplaced(pugi::xml_node cue) {
    const bool isMemoryCue = std::strcmp(cue.attribute("Num").value(), "-1") == 0;
    return !isMemoryCue && std::strcmp(cue.attribute("HOTCUE").value(), "-1") != 0;
}

void setCues(const Program& program, pugi::xml_node track) {
    for (pugi::xml_node cue = track.child(program.cue); cue;) {
        const pugi::xml_node next = cue.next_sibling(program.cue);
        if (isReplaced(cue)) track.remove_child(cue);
        cue = next;
    }
    for (int slot = 0; slot < 8; ++slot) {
        program.setCue(track.append_child(program.cue), slot);
    }
}

class Text final : public pugi::xml_writer {
  public:
    void write(const void* data, std::size_t size) override {
        bytes.append(static_cast<const char*>(data), size);
    }
    std::string bytes;
};

void save(const Program& program, const pugi::xml_document& document, const std::string& file) {
    Text text;
    document.save(text, program.indent, program.format, pugi::encoding_utf8);
    const std::string beside = file + ".tmp";
    const int descriptor = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    for (std::size_t done = 0; done < text.bytes.size();) {
        const ssize_t count = ::write(descriptor, text.bytes.data() + done, text.bytes.size() - done);
        finish(count > 0);
        done += static_cast<std::size_t>(count);
    }
    ::close(descriptor);
    finish(std::rename(beside.c_str(), file.c_str()) == 0);
}

void parse(pugi::xml_document& document, const std::string& file) {
    finish(document.load_file(file.c_str(), pugi::parse_full | pugi::parse_ws_pcdata_single));
}

int verify(const Program& program, const std::string& file) {
    pugi::xml_document document;
    checkWellFormed(file);
    parse(document, file);
    std::uint64_t cues = 0;
    std::uint64_t changed = 0;
    const auto tracks = document.select_nodes(program.tracks);
    for (const auto& track : tracks) {
        for (const pugi::xml_node cue : track.node().children(program.cue)) {
            ++cues;
            changed += std::strcmp(cue.attribute("Name").value(), "Bench") == 0 ||
                       std::strcmp(cue.attribute("NAME").value(), "Bench") == 0;
        }
    }
    Measure measure;
    measure.found("tracks", tracks.size());
    measure.found("cues", cues);
    measure.found("changed cues", changed);
    measure.print();
    return 0;
}

void run(const Program& program, const std::string& mode, const std::string& file) {
    Measure measure;
    pugi::xml_document document;
    std::unordered_map<std::string, pugi::xml_node> byPath;
    measure.start();
    checkWellFormed(file);
    parse(document, file);
    for (const auto& track : document.select_nodes(program.tracks)) {
        byPath[decomposed(program.path(track.node()))] = track.node();
    }
    if (mode == "update") {
        std::size_t number = 0;
        forEachLine(file + ".paths", [&](const std::string& path) {
            if (number++ % 100 == 0) setCues(program, byPath.at(decomposed(path)));
        });
        save(program, document, file);
    }
    measure.stop();
    std::uint64_t held = 0;
    forEachLine(file + ".paths", [&](const std::string& path) { held += byPath.contains(decomposed(path)); });
    measure.found("tracks", byPath.size());
    measure.found("found by path", held);
    measure.print();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) return 2;
    const std::string mode = arguments[1];
    const Program& program = std::strcmp(arguments[2], "rekordbox") == 0 ? rekordbox : traktor;
    if (mode == "verify") return verify(program, arguments[3]);
    run(program, mode, arguments[3]);
    std::fflush(stdout);
    std::quick_exit(0);
}
