#pragma once

#include "containers/MP4File.h"
#include "id3/TagLibStream.h"

#include <zaltag/containers/ZALTagMP4.h>

#include <mp4tag.h>

#include <memory>
#include <string>

/// What an MP4 object holds open. The members are destroyed from the last to the first: the file before the
/// stream below it. The tag belongs to the file; once the object is open, it is never null.
struct ZALTagMP4::State {
    std::unique_ptr<zal::TagLibStream> stream;
    std::unique_ptr<zal::MP4File> file;
    TagLib::MP4::Tag* tag = nullptr;
};

namespace zal {

/// The text of an item; null when there is no such item. The name is in Latin-1, as are those of the items.
ZALNullableString itemText(const TagLib::MP4::Tag& tag, const std::string& name);

/// Replaces an item, or adds it.
void setItemText(TagLib::MP4::Tag& tag, const std::string& name, const TagLib::String& text);

void removeItem(TagLib::MP4::Tag& tag, const std::string& name);

}  // namespace zal
