#pragma once

#include <string>
#include <string_view>

namespace zal {

/// How the text of a file is stored.
enum class XMLEncoding { utf8, utf16LittleEndian, utf16BigEndian, latin1, ascii };

/// The bytes of a text as UTF-8.
std::string decodedXML(std::string_view bytes, XMLEncoding encoding);

/// Markup as the bytes of an encoding; a character that it cannot hold becomes a character reference.
std::string encodedXML(std::string_view markup, XMLEncoding encoding);

/// How many bytes of a text are whole characters: all of them, or some fewer when it ends inside of one.
std::size_t wholeCharacters(std::string_view bytes, XMLEncoding encoding);

}  // namespace zal
