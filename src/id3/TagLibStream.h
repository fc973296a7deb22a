#pragma once

#include <tfilestream.h>

#include <memory>
#include <string>

namespace zal {

/// The stream that every back-end hands TagLib: the one place where audio files are opened and written.
class TagLibStream final : public TagLib::FileStream {
  public:
    /// Opens a regular file. Null for everything else and for a file that cannot be opened.
    static std::unique_ptr<TagLibStream> open(const std::string& path, bool readOnly);

    /// Brings what TagLib wrote to the disk. Called once after every save.
    bool commit();

  private:
    using TagLib::FileStream::FileStream;
};

}  // namespace zal
