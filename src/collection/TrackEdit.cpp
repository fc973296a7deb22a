#include "collection/TrackEdit.h"

namespace zal {

namespace {

void appendAll(std::string& out, std::string_view blank, std::span<const std::string> elements) {
    std::size_t size = out.size();
    for (const std::string& element : elements) {
        size += blank.size() + element.size();
    }
    out.reserve(size);
    for (const std::string& element : elements) {
        out.append(blank).append(element);
    }
}

// For an element without any: as those beside it would be laid out.
std::string withFirstChildren(std::string_view element, const XMLParts& parts, std::string_view blank,
                              const char* indent, std::span<const std::string> children) {
    const std::string_view tag = element.substr(0, parts.startTag.end);
    std::string out = parts.isEmpty ? startTagOf(tag) : std::string(tag);
    const bool isLaidOut = blank.find('\n') != blank.npos;
    appendAll(out, isLaidOut ? std::string(blank) + indent : std::string(), children);
    if (parts.isEmpty) {
        if (isLaidOut) out += blank;
        const std::string_view name = tag.substr(1, tag.find_first_of(" \t\r\n/") - 1);
        return out.append("</").append(name) += '>';
    }
    return out.append(element.substr(parts.startTag.end));
}

std::string_view markupIn(std::string_view text, const XMLRange& range) {
    return text.substr(range.begin, range.end - range.begin);
}

// An element whose own tag is edited.
std::string withAttributesOf(std::string_view element, const std::vector<XMLAttributeEdit>& edits) {
    const std::size_t tagEnd = partsOf(element).startTag.end;
    return withAttributes(element.substr(0, tagEnd), edits).append(element.substr(tagEnd));
}

}  // namespace

std::string withChildren(std::string_view element, std::string_view blank, const char* indent,
                         std::span<const std::string> children) {
    const XMLParts parts = partsOf(element);
    if (parts.children.empty()) return withFirstChildren(element, parts, blank, indent, children);
    const XMLRange last = parts.children.back().range;
    std::string out(element.substr(0, last.end));
    appendAll(out, blankBefore(element, last.begin), children);
    return out.append(element.substr(last.end));
}

std::string splicedTrack(std::string_view element, std::string_view blank, const char* markName,
                         const TrackEdit& edit) {
    const std::string text = withAttributesOf(element, edit.attributes);
    const XMLParts parts = partsOf(text);
    std::vector<XMLRange> marks;
    for (const auto& child : parts.children) {
        if (child.name == markName) marks.push_back(child.range);
    }
    if (marks.empty()) {
        return edit.added.empty() ? text : withChildren(text, blank, edit.style.indent, edit.added);
    }
    std::string out;
    std::size_t copied = 0;
    for (std::size_t i = 0; i < marks.size(); ++i) {
        const std::string_view before = blankBefore(text, marks[i].begin);
        if (i < edit.isRemoved.size() && edit.isRemoved[i]) {
            out.append(std::string_view(text).substr(copied, marks[i].begin - before.size() - copied));
            copied = marks[i].end;
        } else if (const auto attributes = edit.markAttributes.find(i);
                   attributes != edit.markAttributes.end()) {
            out.append(std::string_view(text).substr(copied, marks[i].begin - copied));
            out.append(withAttributesOf(markupIn(text, marks[i]), attributes->second));
            copied = marks[i].end;
        }
        if (i + 1 < marks.size()) continue;
        out.append(std::string_view(text).substr(copied, marks[i].end - copied));
        copied = marks[i].end;
        appendAll(out, before, edit.added);
    }
    return out.append(std::string_view(text).substr(copied));
}

}  // namespace zal
