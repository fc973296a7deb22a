#pragma once

#include "collection/XMLEncoding.h"

#include <zaltag/platform/ZALFileSystem.h>

#include <cstdint>
#include <exception>
#include <string>

struct XML_ParserStruct;

namespace zal {

/// What a file of XML says of itself.
struct XMLForm {
    XMLEncoding encoding = XMLEncoding::utf8;
    bool hasMark = false;  ///< it begins with a byte-order mark
    std::uint64_t declarationBegin = 0;
    std::uint64_t declarationEnd = 0;  ///< the same as the begin when there is none
    std::uint64_t markSize() const { return !hasMark ? 0 : encoding == XMLEncoding::utf8 ? 3 : 2; }
};

/// Reads a file as a stream of XML and says where its elements stand.
class XMLStream {
  public:
    /// Is told every tag, in the order of the file. An empty element gives both calls.
    class Reader {
      public:
        virtual ~Reader() = default;
        /// Names and values of the attributes follow one another, up to a null; all texts are UTF-8.
        virtual void startElement(const XMLStream& stream, const char* name,
                                  const char* const* attributes) = 0;
        virtual void endElement(const XMLStream& stream) = 0;
    };

    explicit XMLStream(Reader& reader) : reader_(reader) {}
    XMLStream(const XMLStream&) = delete;
    XMLStream& operator=(const XMLStream&) = delete;

    /// Why the file is not well-formed, or why its content would not survive being read and written: entities
    /// or attributes that a document type declares, parts that lie elsewhere, elements nested deeper than
    /// 1000. Empty when all is well. What the reader throws comes out.
    std::string read(ZALFileHandle& handle);
    /// After a read that succeeded.
    const XMLForm& form() const { return form_; }

    // For the reader: where the tag stands that it is told of, in bytes. The end tag of an empty element is
    // empty and stands behind it.
    std::uint64_t tagBegin() const;
    std::uint64_t tagEnd() const;

  private:
    struct Handlers;

    void refuse(const char* why);
    std::string parse(ZALFileHandle& handle);

    Reader& reader_;
    XMLForm form_;
    XML_ParserStruct* parser_ = nullptr;
    int depth_ = 0;
    const char* refusal_ = nullptr;
    std::exception_ptr failure_;  // of the reader
};

}  // namespace zal
