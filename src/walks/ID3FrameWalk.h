#pragma once

#include <zaltag/base/ZALData.h>

#include <memory>

namespace zal {

/// Follows what TagLib is going to do with the frames of a tag, without making any, and adds it up.
class FrameGuard {
  public:
    FrameGuard();
    ~FrameGuard();

    /// Takes one frame in the form of a version, header and all. False when TagLib must not make frames of
    /// all that was taken so far: that would overflow the stack or take more memory than their length
    /// justifies.
    bool takes(ZALDataView frame, unsigned version);

  private:
    class Walk;

    std::unique_ptr<Walk> walk_;
};

}  // namespace zal
