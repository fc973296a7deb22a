#include "Output.h"

#include <zaltag/base/ZALJSON.h>
#include <zaltag/base/ZALText.h>

#include <fmt/format.h>

#include <cstdio>

namespace {

ZALJSONValue printableValue(const ZALJSONValue& value) {
    return value.isString() ? ZALJSONValue(ZALValidUTF8(*value.stringValue())) : value;
}

void write(std::FILE* file, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), file);
}

}  // namespace

std::string jsonObject(const Members& members) {
    std::string out;
    for (const auto& [name, value] : members) {
        out += out.empty() ? "{" : ", ";
        out += fmt::format("\"{}\": {}", name, ZALJSON::serialize(printableValue(value)).value_or("null"));
    }
    return out + "}";
}

std::string printable(std::string_view text) {
    std::string out;
    for (const char c : ZALValidUTF8(text)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            out += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            out += fmt::format("\\x{:02x}", byte);
        } else {
            out += c;
        }
    }
    return out;
}

void Output::object(const Members& members) {
    write(stdout, started_ ? ",\n" : "[\n");
    started_ = true;
    write(stdout, jsonObject(members));
}

void Output::line(std::string_view text) {
    write(stdout, fmt::format("{}\n", text));
}

void Output::message(std::string_view text) {
    write(stderr, fmt::format("zaltag: {}\n", text));
}

void Output::failure(const std::string& path, const std::string& reason) {
    failed_ = true;
    if (json_) object({{"path", path}, {"error", reason}});
    message(fmt::format("{}: {}", printable(path), reason));
}

void Output::problem(std::string_view text) {
    failed_ = true;
    message(text);
}

int Output::finish() {
    if (json_) write(stdout, started_ ? "\n]\n" : "[]\n");
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        message("standard output: cannot be written");
        failed_ = true;
    }
    return failed_ ? 1 : 0;
}
