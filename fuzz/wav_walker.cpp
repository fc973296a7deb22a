// The walker takes any bytes. A file that the inserter calls complete is as long as its form says, ends with
// the new record and has no other; inserting the same record once more changes nothing.

#include "containers/WavVelvetCascadeTagInserter.h"

#include "ScratchFile.h"

#include <algorithm>
#include <optional>

namespace {

const ZALData record{'r', 'e', 'c', 'o', 'r', 'd'};

std::optional<ZALData> rewritten(const ScratchFile& file, ZALDataView content) {
    file.write(content);
    zal::WavVelvetCascadeTagInserter inserter;
    if (!inserter.OpenFile(file.path()) || !inserter.OpenOutput(file.path() + "_")) std::abort();
    inserter.SetPayload(record);
    inserter.ParseFile();
    if (!inserter.done() || inserter.failed()) return std::nullopt;
    return ScratchFile::contentsOf(file.path() + "_");
}

class RecordCount final : public zal::WavMetadataParser {
  public:
    int count = 0;

  private:
    void OnVCAS() override { ++count; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("a.wav");
    const auto once = rewritten(file, {data, size});
    if (!once) return 0;
    const auto twice = rewritten(file, *once);
    if (twice != once || once->size() < 26) std::abort();
    RecordCount records;
    if (!records.OpenFile(file.path()) || !records.ParseFile()) std::abort();
    if (records.count != 1 || records.VCASPayload() != record) std::abort();
    if (!std::equal(record.begin(), record.end(), once->end() - 6)) std::abort();
    return 0;
}
