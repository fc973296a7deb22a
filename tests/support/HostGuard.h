#pragma once

#include <zaltag/platform/ZALHost.h>
#include <zaltag/platform/ZALMainQueue.h>

/// A test's hold on the host: what is replaced through it, or beside it, is restored when it goes. The log
/// (see LogCapture) and the file system are left alone.
class HostGuard {
  public:
    HostGuard() = default;
    HostGuard(const HostGuard&) = delete;
    HostGuard& operator=(const HostGuard&) = delete;
    ~HostGuard() {
        ZALHost& host = ZALHost::shared();
        host.setUserDefaults(nullptr);
        host.setFolderBookmarks(nullptr);
        host.setClock(nullptr);
        host.setHTTPClient(nullptr);
        host.setCloudStorage(nullptr);
        host.setEnvironment({});
        host.setDocumentsFolders({});
        host.setRunningPrograms({});
        host.setLocalizer({});
        host.setBootVolumeName(bootVolumeName_);
        host.setServiceHost(std::nullopt);
        host.setCertificateAuthorityFile(std::nullopt);
        host.setName(name_);
        host.setVersion(version_);
        host.setCollectionSaveMode(ZALCollectionSaveMode::everyTrackWithCues);
        ZALMainQueue::shared().setExecutor({});
    }

    ZALHost* operator->() const { return &ZALHost::shared(); }

  private:
    const std::string bootVolumeName_ = ZALHost::shared().bootVolumeName();
    const std::string name_ = ZALHost::shared().name();
    const std::string version_ = ZALHost::shared().version();
};
