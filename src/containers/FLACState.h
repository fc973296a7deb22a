#pragma once

#include <zaltag/containers/ZALTagFLAC.h>

#include <flacfile.h>
#include <xiphcomment.h>

#include <memory>
#include <utility>

/// The TagLib file of a FLAC object, over the inherited stream; the comment belongs to it and is never null.
struct ZALTagFLAC::FLACFile {
    explicit FLACFile(std::unique_ptr<TagLib::FLAC::File> opened)
        : file(std::move(opened)), comment(file->xiphComment(true)) {}

    const std::unique_ptr<TagLib::FLAC::File> file;
    TagLib::Ogg::XiphComment* const comment;
};

namespace zal {

/// The values of a field as one text; null when there is no such field. The name can be in any case.
ZALNullableString fieldText(const TagLib::Ogg::XiphComment& comment, const std::string& name);

/// Replaces all values of a field by one; the empty text removes the field.
void setFieldText(TagLib::Ogg::XiphComment& comment, const std::string& name, const TagLib::String& text);

}  // namespace zal
