#include "platform/WellFormedness.h"

#include "base/Limits.h"
#include "platform/FileReplacement.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace zal {

namespace {

// A token that does not end within a block, such as a long attribute, is read anew with each block that
// follows: blocks double for as long as it goes on, so that what is read stays in proportion to the file.
constexpr int shortestBlock = 1 << 20;
constexpr int longestBlock = 1 << 28;

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
    int blockSize = shortestBlock;
    XML_Index token = -1;  // where the one begins that is read
    for (bool last = false; !last;) {
        void* buffer = XML_GetBuffer(parser.get(), blockSize);
        if (buffer == nullptr) return "there is not enough memory";
        std::size_t count = 0;
        const std::span<std::uint8_t> block(static_cast<std::uint8_t*>(buffer),
                                            static_cast<std::size_t>(blockSize));
        if (const auto error = handle.readAt(position, block, count)) return describe(error);
        position += count;
        last = count < block.size();
        if (XML_ParseBuffer(parser.get(), static_cast<int>(count), last) == XML_STATUS_OK) {
            const XML_Index before = std::exchange(token, XML_GetCurrentByteIndex(parser.get()));
            blockSize = token == before ? std::min(2 * blockSize, longestBlock) : shortestBlock;
            continue;
        }
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
