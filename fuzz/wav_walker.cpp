// The walker takes any bytes. A file that the inserter calls complete is as long as its form says, ends with
// the new record and has no other; inserting the same record once more changes nothing.

#include "containers/WavVelvetCascadeTagInserter.h"

#include "AudioFile.h"
#include "FuzzSupport.h"

#include <algorithm>
#include <optional>

namespace {

const ZALData record{'r', 'e', 'c', 'o', 'r', 'd'};

std::optional<ZALData> rewritten(ZALDataView content) {
    const FuzzedFile file(content.data(), content.size(), "wav");
    const FuzzedFile out(nullptr, 0, "out");
    zal::WavVelvetCascadeTagInserter inserter;
    require(inserter.OpenFile(file.path()) && inserter.OpenOutput(out.path()));
    inserter.SetPayload(record);
    inserter.ParseFile();
    if (!inserter.done() || inserter.failed()) return std::nullopt;
    return contentsOf(out.path());
}

class RecordCount final : public zal::WavMetadataParser {
  public:
    int count = 0;

  private:
    void OnVCAS() override { ++count; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto once = rewritten({data, size});
    if (!once) return 0;
    require(rewritten(*once) == once && once->size() >= 26);
    const FuzzedFile file(once->data(), once->size(), "wav");
    RecordCount records;
    require(records.OpenFile(file.path()) && records.ParseFile());
    require(records.count == 1 && records.VCASPayload() == record);
    require(std::equal(record.begin(), record.end(), once->end() - 6));
    return 0;
}
