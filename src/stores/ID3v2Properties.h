#pragma once

#include "stores/ID3v2Store.h"

#include <tpropertymap.h>

// The frames of an ID3v2 tag as fields by TagLib's names of them.

namespace zal {

TagLib::PropertyMap propertiesOf(const TagLib::ID3v2::Tag& tag);

/// None takes the field away.
void setProperty(ID3v2Store& store, const TagLib::String& name, const TagLib::StringList& values);

/// What a tag gives back for values that are written to it.
TagLib::StringList heldValues(const TagLib::String& name, const TagLib::StringList& values);

}  // namespace zal
