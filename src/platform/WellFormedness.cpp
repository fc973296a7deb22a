#include "platform/WellFormedness.h"

#include "base/Limits.h"
#include "platform/FileReplacement.h"

#include <expat.h>
#include <fmt/format.h>

#include <memory>
#include <string_view>

namespace zal {

namespace {

constexpr int blockSize = 1 << 20;

struct Check {
    XML_Parser parser;
    int depth = 0;
    std::string_view refusal;

    void refuse(std::string_view why) {
        if (refusal.empty()) refusal = why;
        XML_StopParser(parser, XML_FALSE);
    }
};

void startElement(void* user, const XML_Char*, const XML_Char**) {
    auto& check = *static_cast<Check*>(user);
    if (++check.depth > limits::xmlNesting) check.refuse("elements are nested too deeply");
}

void endElement(void* user, const XML_Char*) {
    --static_cast<Check*>(user)->depth;
}

void entityDeclaration(void* user, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                       const XML_Char*, const XML_Char*, const XML_Char*) {
    static_cast<Check*>(user)->refuse("it declares entities");
}

// Every element of that name would be given it: by the stream parser, at that cost, but not by the tree.
void attributeDeclaration(void* user, const XML_Char*, const XML_Char*, const XML_Char*,
                          const XML_Char* value, int) {
    if (value != nullptr) static_cast<Check*>(user)->refuse("it declares attributes");
}

// What a document type has elsewhere could declare entities: using them is no error to the parser then.
int documentIsNotStandalone(void* user) {
    static_cast<Check*>(user)->refusal = "parts of its document type lie elsewhere";
    return XML_STATUS_ERROR;
}

std::string check(ZALFileHandle& handle) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    if (!parser) return "there is not enough memory";
    Check state{parser.get(), 0, {}};
    XML_SetUserData(parser.get(), &state);
    XML_SetElementHandler(parser.get(), startElement, endElement);
    XML_SetEntityDeclHandler(parser.get(), entityDeclaration);
    XML_SetAttlistDeclHandler(parser.get(), attributeDeclaration);
    XML_SetNotStandaloneHandler(parser.get(), documentIsNotStandalone);

    std::uint64_t position = 0;
    for (bool last = false; !last;) {
        void* buffer = XML_GetBuffer(parser.get(), blockSize);
        if (buffer == nullptr) return "there is not enough memory";
        std::size_t count = 0;
        const std::span<std::uint8_t> block(static_cast<std::uint8_t*>(buffer), blockSize);
        if (const auto error = handle.readAt(position, block, count)) return describe(error);
        position += count;
        last = count < block.size();
        if (XML_ParseBuffer(parser.get(), static_cast<int>(count), last) == XML_STATUS_OK) continue;
        const std::string_view reason =
            state.refusal.empty() ? XML_ErrorString(XML_GetErrorCode(parser.get())) : state.refusal;
        return fmt::format("{} (line {}, column {})", reason, XML_GetCurrentLineNumber(parser.get()),
                           XML_GetCurrentColumnNumber(parser.get()));
    }
    return {};
}

}  // namespace

std::string whyNotWellFormed(ZALFileHandle& handle, std::atomic<bool>& isRefused) {
    std::string reason;
    try {
        reason = check(handle);
    } catch (const std::exception& exception) {
        reason = exception.what();
    }
    isRefused = !reason.empty();
    return reason;
}

}  // namespace zal
