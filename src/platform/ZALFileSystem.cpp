#include <zaltag/platform/ZALFileSystem.h>

#include <sys/stat.h>

ZALFileSystem::~ZALFileSystem() = default;

namespace {

class MachineFileSystem final : public ZALFileSystem {
  public:
    ZALFileKind kindOfFile(const std::string& path) const override {
        struct stat status {};
        if (::stat(path.c_str(), &status) != 0) return ZALFileKind::missing;
        if (S_ISREG(status.st_mode)) return ZALFileKind::regular;
        return S_ISDIR(status.st_mode) ? ZALFileKind::folder : ZALFileKind::other;
    }
};

}  // namespace

std::shared_ptr<ZALFileSystem> ZALFileSystem::machine() {
    static const auto machine = std::make_shared<MachineFileSystem>();
    return machine;
}
