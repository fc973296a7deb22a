// Preloaded under a program, makes its n-th system call that changes something fail, or kills the program
// there. ZALTAG_FAULT_POINT is n, from 1; ZALTAG_FAULT_ROOT the folder whose files count; ZALTAG_FAULT_KILLS
// is 1 for a kill. A byte on descriptor 100 says that the point was reached. Programs of one thread.
//
// A failing write has written half of its bytes before. A kill cuts a write where the kernel can cut one,
// between two pages of the page cache, so a write inside one page is never torn.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

constexpr int descriptorMax = 1024;
constexpr off_t pageSize = 4096;

bool ours[descriptorMax];     // opened under the root
bool written[descriptorMax];  // and written since
int calls = 0;

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

const char* setting(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isUnderRoot(const char* path) {
    const char* const root = setting("ZALTAG_FAULT_ROOT");
    return *root != '\0' && std::strncmp(path, root, std::strlen(root)) == 0;
}

bool isOurs(int file) {
    return file >= 0 && file < descriptorMax && ours[file];
}

bool kills() {
    return *setting("ZALTAG_FAULT_KILLS") == '1';
}

// True when the fault strikes this call; `partly` does what the call does before it is cut.
template <typename Partly>
bool strikes(Partly partly) {
    if (++calls != std::atoi(setting("ZALTAG_FAULT_POINT"))) return false;
    (void)!next<ssize_t(int, const void*, size_t)>("write")(100, "!", 1);
    partly();
    if (kills()) ::raise(SIGKILL);
    return true;
}

bool strikes() {
    return strikes([] {});
}

int failed(int number) {
    errno = number;
    return -1;
}

void noteWrite(int file) {
    if (isOurs(file)) written[file] = true;
}

// How much of a write of these bytes is done before the fault.
size_t cut(off_t position, size_t length) {
    if (!kills()) return length / 2;
    const auto toPage = static_cast<size_t>(pageSize - position % pageSize);
    return toPage < length ? toPage : 0;
}

int opened(int file, const char* path) {
    if (file >= 0 && file < descriptorMax) {
        ours[file] = isUnderRoot(path);
        written[file] = false;
    }
    return file;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if ((flags & O_CREAT) != 0 && isUnderRoot(path) && strikes()) return failed(ENOSPC);
    return opened(next<int(const char*, int, ...)>("open")(path, flags, mode), path);
}

ssize_t pwrite(int file, const void* bytes, size_t length, off_t position) {
    const auto real = next<ssize_t(int, const void*, size_t, off_t)>("pwrite");
    noteWrite(file);
    if (isOurs(file) && strikes([&] {
            if (const size_t n = cut(position, length)) (void)!real(file, bytes, n, position);
        })) {
        return failed(ENOSPC);
    }
    return real(file, bytes, length, position);
}

ssize_t copy_file_range(int in, off64_t* from, int out, off64_t* to, size_t length, unsigned flags) {
    const auto real = next<ssize_t(int, off64_t*, int, off64_t*, size_t, unsigned)>("copy_file_range");
    noteWrite(out);
    if (isOurs(out) && strikes([&] {
            off64_t source = *from;
            off64_t target = *to;
            if (const size_t n = cut(*to, length)) (void)!real(in, &source, out, &target, n, flags);
        })) {
        return failed(ENOSPC);
    }
    return real(in, from, out, to, length, flags);
}

int ftruncate(int file, off_t length) {
    noteWrite(file);
    if (isOurs(file) && strikes()) return failed(EIO);
    return next<int(int, off_t)>("ftruncate")(file, length);
}

int fsync(int file) {
    if (isOurs(file) && strikes()) return failed(EIO);
    return next<int(int)>("fsync")(file);
}

int fchmod(int file, mode_t mode) {
    if (isOurs(file) && strikes()) return failed(EPERM);
    return next<int(int, mode_t)>("fchmod")(file, mode);
}

int fchown(int file, uid_t owner, gid_t group) {
    if (isOurs(file) && strikes()) return failed(EPERM);
    return next<int(int, uid_t, gid_t)>("fchown")(file, owner, group);
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) {
    if (isOurs(file) && strikes()) return failed(ENOSPC);
    return next<int(int, const char*, const void*, size_t, int)>("fsetxattr")(file, name, value, size, flags);
}

int rename(const char* from, const char* to) {
    if (isUnderRoot(from) && strikes()) return failed(EIO);
    return next<int(const char*, const char*)>("rename")(from, to);
}

int unlink(const char* path) {
    if (isUnderRoot(path) && strikes()) return failed(EIO);
    return next<int(const char*)>("unlink")(path);
}

int close(int file) {
    const auto real = next<int(int)>("close");
    const bool counts = isOurs(file) && written[file];
    if (file >= 0 && file < descriptorMax) ours[file] = false;
    if (counts && strikes()) {
        real(file);  // the descriptor is gone whatever close says
        return failed(EIO);
    }
    return real(file);
}

}  // extern "C"
