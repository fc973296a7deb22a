#include "collection/XMLStream.h"

#include "base/Limits.h"
#include "base/Unicode.h"
#include "platform/FileReplacement.h"

#include <expat.h>
#include <fmt/format.h>

#include <cstring>
#include <exception>
#include <memory>
#include <string_view>

namespace zal {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 20;
constexpr std::size_t largestBlock = std::size_t{1} << 30;

XMLForm formOf(std::string_view head) {
    const auto form = [](XMLEncoding encoding, bool hasMark) {
        XMLForm made;
        made.encoding = encoding;
        made.hasMark = hasMark;
        return made;
    };
    if (head.starts_with("\xEF\xBB\xBF")) return form(XMLEncoding::utf8, true);
    if (head.starts_with("\xFF\xFE")) return form(XMLEncoding::utf16LittleEndian, true);
    if (head.starts_with("\xFE\xFF")) return form(XMLEncoding::utf16BigEndian, true);
    if (head.starts_with(std::string_view("<\0", 2))) return form(XMLEncoding::utf16LittleEndian, false);
    if (head.starts_with(std::string_view("\0<", 2))) return form(XMLEncoding::utf16BigEndian, false);
    return {};
}

}  // namespace

// Expat is written in C: nothing may be thrown through it.
struct XMLStream::Handlers {
    static XMLStream& of(void* user) { return *static_cast<XMLStream*>(user); }

    template <typename Function>
    static void guarded(XMLStream& stream, const Function& function) {
        try {
            if (!stream.failure_) function();
        } catch (...) {
            stream.failure_ = std::current_exception();
            XML_StopParser(stream.parser_, XML_FALSE);
        }
    }

    static void startElement(void* user, const XML_Char* name, const XML_Char** attributes) {
        XMLStream& stream = of(user);
        if (++stream.depth_ > limits::xmlNesting) stream.refuse("elements are nested too deeply");
        guarded(stream, [&] { stream.reader_.startElement(stream, name, attributes); });
    }
    static void endElement(void* user, const XML_Char*) {
        XMLStream& stream = of(user);
        --stream.depth_;
        guarded(stream, [&] { stream.reader_.endElement(stream); });
    }
    static void declaration(void* user, const XML_Char*, const XML_Char* encoding, int) {
        XMLStream& stream = of(user);
        XMLForm& form = stream.form_;
        form.declarationBegin = stream.tagBegin();
        form.declarationEnd = stream.tagEnd();
        const std::string name = asciiLowercase(encoding == nullptr ? "" : encoding);
        const bool isSingle = name == "iso-8859-1" || name == "us-ascii";
        if (!isSingle) return;
        if (form.hasMark) return stream.refuse("its byte-order mark and its declaration disagree");
        form.encoding = name == "us-ascii" ? XMLEncoding::ascii : XMLEncoding::latin1;
    }
    static void entity(void* user, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                       const XML_Char*, const XML_Char*, const XML_Char*) {
        of(user).refuse("it declares entities");
    }
    // Values that a document type gives, or has trimmed, would be read by the stream parser and not by the
    // tree of an element.
    static void attribute(void* user, const XML_Char*, const XML_Char*, const XML_Char* type,
                          const XML_Char* value, int) {
        if (value != nullptr || std::strcmp(type, "CDATA") != 0) of(user).refuse("it declares attributes");
    }
    // What a document type has elsewhere could declare entities: using them is no error to the parser then.
    static int notStandalone(void* user) {
        of(user).refusal_ = "parts of its document type lie elsewhere";
        return XML_STATUS_ERROR;
    }
};

void XMLStream::refuse(const char* why) {
    if (refusal_ == nullptr) refusal_ = why;
    XML_StopParser(parser_, XML_FALSE);
}

std::uint64_t XMLStream::tagBegin() const {
    return static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser_));
}

std::uint64_t XMLStream::tagEnd() const {
    return tagBegin() + static_cast<std::uint64_t>(XML_GetCurrentByteCount(parser_));
}

std::string XMLStream::read(ZALFileHandle& handle) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    if (!parser) return "there is not enough memory";
    parser_ = parser.get();
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, Handlers::startElement, Handlers::endElement);
    XML_SetXmlDeclHandler(parser_, Handlers::declaration);
    XML_SetEntityDeclHandler(parser_, Handlers::entity);
    XML_SetAttlistDeclHandler(parser_, Handlers::attribute);
    XML_SetNotStandaloneHandler(parser_, Handlers::notStandalone);
    std::string reason = parse(handle);
    parser_ = nullptr;
    if (failure_) std::rethrow_exception(failure_);
    return reason;
}

std::string XMLStream::parse(ZALFileHandle& handle) {
    std::uint64_t position = 0;
    XML_Index token = 0;
    std::size_t size = blockSize;
    for (bool last = false; !last;) {
        void* buffer = XML_GetBuffer(parser_, static_cast<int>(size));
        if (buffer == nullptr) return "there is not enough memory";
        std::size_t count = 0;
        const std::span<std::uint8_t> block(static_cast<std::uint8_t*>(buffer), size);
        if (const auto error = handle.readAt(position, block, count)) return describe(error);
        if (position == 0) form_ = formOf({static_cast<const char*>(buffer), count});
        position += count;
        last = count < size;
        if (XML_ParseBuffer(parser_, static_cast<int>(count), last) != XML_STATUS_OK) {
            const char* reason = refusal_ != nullptr ? refusal_ : XML_ErrorString(XML_GetErrorCode(parser_));
            return fmt::format("{} (line {}, column {})", reason, XML_GetCurrentLineNumber(parser_),
                               XML_GetCurrentColumnNumber(parser_));
        }
        // An unfinished token is looked at anew with every block: one that spans many must not cost the
        // square of its length.
        const XML_Index reached = XML_GetCurrentByteIndex(parser_);
        size = reached == token && size < largestBlock ? 2 * size : blockSize;
        token = reached;
    }
    return {};
}

}  // namespace zal
