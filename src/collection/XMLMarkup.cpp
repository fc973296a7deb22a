#include "collection/XMLMarkup.h"

#include "collection/XML.h"

namespace zal {

namespace {

constexpr std::string_view blanks = " \t\r\n";

}  // namespace

std::size_t XMLTags::endOf(std::string_view what, std::size_t from) const {
    const std::size_t at = text_.find(what, from);
    return at == text_.npos ? text_.size() : at + what.size();
}

// A quoted value may hold the ">".
std::size_t XMLTags::endOfTag(std::size_t from) const {
    std::size_t at = from;
    for (;;) {
        at = text_.find_first_of(">\"'", at);
        if (at == text_.npos) return text_.size();
        if (text_[at] == '>') return at + 1;
        at = text_.find(text_[at], at + 1);
        if (at == text_.npos) return text_.size();
        ++at;
    }
}

bool XMLTags::next() {
    for (;;) {
        const std::size_t begin = text_.find('<', at_);
        if (begin == text_.npos) return false;
        const std::string_view rest = text_.substr(begin);
        if (rest.starts_with("<!--")) {
            at_ = endOf("-->", begin + 4);
        } else if (rest.starts_with("<![CDATA[")) {
            at_ = endOf("]]>", begin);
        } else if (rest.starts_with("<?")) {
            at_ = endOf("?>", begin);
        } else {
            at_ = endOfTag(begin);
            if (rest.starts_with("<!")) continue;
            tag_ = {begin, at_};
            const bool isEnd = rest.starts_with("</");
            const std::string_view tag = text_.substr(begin, at_ - begin);
            kind_ = isEnd ? Kind::end : tag.ends_with("/>") ? Kind::empty : Kind::start;
            name_ = tag.substr(isEnd ? 2 : 1);
            name_ = name_.substr(0, name_.find_first_of(" \t\r\n/>"));
            return true;
        }
    }
}

XMLParts partsOf(std::string_view element) {
    XMLParts parts;
    XMLTags tags(element);
    for (int depth = 0; tags.next();) {
        const XMLRange tag = tags.tag();
        if (depth == 0 && tags.kind() != XMLTags::Kind::end) {
            parts.startTag = tag;
            parts.isEmpty = tags.kind() == XMLTags::Kind::empty;
            parts.endTag = tag.end;
        } else if (depth == 1 && tags.kind() != XMLTags::Kind::end) {
            parts.children.push_back({tag, tags.name()});
        } else if (depth == 2 && tags.kind() == XMLTags::Kind::end) {
            parts.children.back().range.end = tag.end;
        } else if (depth == 1) {
            parts.endTag = tag.begin;
        }
        depth += tags.kind() == XMLTags::Kind::start ? 1 : tags.kind() == XMLTags::Kind::end ? -1 : 0;
        if (depth <= 0) break;
    }
    return parts;
}

std::string withAttributes(std::string_view tag, const std::vector<XMLAttributeEdit>& edits) {
    struct Place {
        std::size_t begin, end;
        const XMLAttributeEdit* edit;
    };
    std::vector<Place> places;
    std::vector<bool> isThere(edits.size());
    std::size_t at = tag.find_first_of(blanks);
    std::size_t behindLast = tag.ends_with("/>") ? tag.size() - 2 : tag.size() - 1;
    if (at != tag.npos) behindLast = at;
    while (at != tag.npos) {
        at = tag.find_first_not_of(blanks, at);
        const std::size_t equals = at == tag.npos ? at : tag.find('=', at);
        if (equals == tag.npos) break;
        const std::string_view name = tag.substr(at, tag.find_first_of(" \t\r\n=", at) - at);
        const std::size_t quote = tag.find_first_of("\"'", equals);
        const std::size_t end = quote == tag.npos ? quote : tag.find(tag[quote], quote + 1);
        if (end == tag.npos) break;
        for (std::size_t i = 0; i < edits.size(); ++i) {
            if (name != edits[i].name) continue;
            isThere[i] = true;
            places.push_back({quote + 1, end, &edits[i]});
        }
        at = behindLast = end + 1;
    }
    std::string out;
    std::size_t copied = 0;
    for (const auto& [begin, end, edit] : places) {
        out.append(tag.substr(copied, begin - copied)).append(attributeValue(edit->value));
        copied = end;
    }
    out += tag.substr(copied, behindLast - copied);
    for (std::size_t i = 0; i < edits.size(); ++i) {
        if (isThere[i] || !edits[i].isAdded) continue;
        out.append(" ").append(edits[i].name).append("=\"").append(attributeValue(edits[i].value)) += '"';
    }
    return out.append(tag.substr(behindLast));
}

std::string attributeValue(std::string_view text) {
    std::string out;
    for (const char c : textForXML(text)) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            case '\t':
                out += "&#9;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\r':
                out += "&#13;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string_view blankBefore(std::string_view text, std::size_t at) {
    const std::size_t last = at == 0 ? text.npos : text.find_last_not_of(blanks, at - 1);
    const std::size_t begin = last == text.npos ? 0 : last + 1;
    return text.substr(begin, at - begin);
}

std::string startTagOf(std::string_view emptyTag) {
    std::string_view tag = emptyTag.substr(0, emptyTag.size() - 2);
    const std::size_t last = tag.find_last_not_of(blanks);
    return std::string(tag.substr(0, last + 1)) + ">";
}

}  // namespace zal
