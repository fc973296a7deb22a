#pragma once

#include "containers/FLACFile.h"

#include <zaltag/base/ZALText.h>

#include <string>

namespace zal {

/// The values of a field as one text; null when there is no such field. The name can be in any case.
ZALNullableString fieldText(const TagLib::Ogg::XiphComment& comment, const std::string& name);

/// The same in the first comment of a file that has the field.
ZALNullableString fieldText(const FLACFile& file, const std::string& name);

/// Replaces all values of a field by one; the empty text removes the field.
void setFieldText(TagLib::Ogg::XiphComment& comment, const std::string& name, const TagLib::String& text);

}  // namespace zal
