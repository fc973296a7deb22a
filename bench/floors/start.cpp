// start: what a program costs that links TagLib and Expat.

#include <expat.h>
#include <id3v2tag.h>

int main() {
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_ParserFree(parser);
    return TagLib::ID3v2::Tag().isEmpty() ? 0 : 1;
}
