#pragma once

#include "files/MP4File.h"
#include "taglib/TagLibStream.h"

#include <zaltag/containers/ZALTagMP4.h>

#include <memory>

/// What an MP4 object holds open. The members are destroyed from the last to the first: the file before the
/// stream below it.
struct ZALTagMP4::State {
    std::unique_ptr<zal::TagLibStream> stream;
    std::unique_ptr<zal::MP4File> file;
};
