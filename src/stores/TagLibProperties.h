#pragma once

#include "stores/TagStore.h"
#include "taglib/TagLibText.h"

#include <tpropertymap.h>

namespace zal {

/// TagLib's properties as those of a store.
inline Properties propertiesWithTagLibMap(const TagLib::PropertyMap& map) {
    Properties properties;
    for (const auto& [name, values] : map) {
        properties.values[stringWithTagLibString(name)] = stringsWithTagLibStrings(values);
    }
    properties.unsupported = stringsWithTagLibStrings(map.unsupportedData());
    return properties;
}

}  // namespace zal
