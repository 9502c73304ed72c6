// The host's view of the device's file system: the executable defines libc's path-taking
// functions itself, so calls from every library in the process arrive here first, and each
// hands the path, moved under the device root, to libc's own function.
#undef _FORTIFY_SOURCE

#include "sim/host/fs_redirect.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <unistd.h>
#include <utime.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "sim/common/device_paths.h"

// Entry points of older binaries and of fortified callers, which glibc's headers no longer or
// only conditionally declare.
extern "C" {
int __xstat(int ver, const char* path, struct stat* buf);
int __xstat64(int ver, const char* path, struct stat64* buf);
int __lxstat(int ver, const char* path, struct stat* buf);
int __lxstat64(int ver, const char* path, struct stat64* buf);
int __fxstatat(int ver, int dirfd, const char* path, struct stat* buf, int flags);
int __fxstatat64(int ver, int dirfd, const char* path, struct stat64* buf, int flags);
int __open_2(const char* path, int flags);
int __open64_2(const char* path, int flags);
int __openat_2(int dirfd, const char* path, int flags);
int __openat64_2(int dirfd, const char* path, int flags);
char* __realpath_chk(const char* path, char* resolved, size_t resolvedLength);
}

namespace kv::sim {

namespace {

// The root, written by setDeviceRoot before other threads exist; zero-initialised storage, so
// calls that arrive during process start-up see the redirect off without any constructor run.
char rootBuffer[PATH_MAX];
std::atomic<size_t> rootLength{0};

// The device root in effect (empty while the redirect is off).
std::string_view currentRoot() {
  return std::string_view(rootBuffer, rootLength.load(std::memory_order_acquire));
}

// A redirected path in three parts: root + folder + rest.
struct Redirected {
  std::string_view root;
  std::string_view folder;
  std::string_view rest;

  size_t size() const { return root.size() + folder.size() + rest.size(); }
};

// Returns true and fills `out` when `path` is a device path to move under the root.
bool redirect(const char* path, Redirected* out) {
  if (path == nullptr || path[0] != '/') return false;
  std::string_view root = currentRoot();
  if (root.empty()) return false;
  // Redundant leading "//" and "/./" name the same place as "/".
  while (path[0] == '/' && (path[1] == '/' || (path[1] == '.' && path[2] == '/'))) {
    path += path[1] == '/' ? 1 : 2;
  }
  std::string_view clean(path);
  if (isUnderFolder(clean, root)) return false;
  for (const DeviceFolder& folder : kDeviceFolders) {
    if (isUnderFolder(clean, folder.device)) {
      *out = Redirected{root, folder.real, clean.substr(folder.device.size())};
      return true;
    }
  }
  return false;
}

// The path to hand to libc for a path a caller gave: the caller's own when it is not a device
// path, else its real path in a buffer of this object (no allocation, so it serves callers
// during process start-up and in signal-sensitive places alike).
class DevicePath {
 public:
  explicit DevicePath(const char* path) : path_(path) {
    Redirected parts;
    if (!redirect(path, &parts)) return;
    if (parts.size() >= sizeof(buffer_)) {
      tooLong_ = true;
      return;
    }
    char* end = buffer_;
    for (std::string_view part : {parts.root, parts.folder, parts.rest}) {
      std::memcpy(end, part.data(), part.size());
      end += part.size();
    }
    *end = '\0';
    path_ = buffer_;
  }
  DevicePath(const DevicePath&) = delete;
  DevicePath& operator=(const DevicePath&) = delete;

  // The path for libc.
  const char* get() const { return path_; }
  // True iff the path was moved under the root (get() is then this object's writable buffer).
  bool redirected() const { return path_ == buffer_; }
  char* buffer() { return buffer_; }
  // True iff the real path would exceed what the kernel accepts.
  bool tooLong() const { return tooLong_; }

 private:
  const char* path_;
  bool tooLong_ = false;
  char buffer_[PATH_MAX];
};

// Returns libc's definition of `name`: the next one after this executable's.
template <typename Fn>
Fn* nextSymbol(const char* name) {
  return reinterpret_cast<Fn*>(dlsym(RTLD_NEXT, name));
}

// Calls `call` with the real path for `path`; fails with ENAMETOOLONG when there is none.
template <typename R, typename F>
R withRealPath(const char* path, R failure, F&& call) {
  DevicePath real(path);
  if (real.tooLong()) {
    errno = ENAMETOOLONG;
    return failure;
  }
  return call(real.get());
}

// Calls `call` with the real paths for `first` and `second`.
template <typename R, typename F>
R withRealPaths(const char* first, const char* second, R failure, F&& call) {
  DevicePath realFirst(first);
  DevicePath realSecond(second);
  if (realFirst.tooLong() || realSecond.tooLong()) {
    errno = ENAMETOOLONG;
    return failure;
  }
  return call(realFirst.get(), realSecond.get());
}

// Calls `call` (a mkstemp-family function) on the real path for the template `tmpl`, whose
// six X's sit `suffixLength` characters before its end, and copies the generated name back
// into the caller's template when the call worked.
template <typename R, typename F>
R withTemplate(char* tmpl, int suffixLength, R failure, F&& call) {
  DevicePath real(tmpl);
  if (real.tooLong()) {
    errno = ENAMETOOLONG;
    return failure;
  }
  if (!real.redirected()) return call(tmpl);
  R result = call(real.buffer());
  size_t callerLength = std::strlen(tmpl);
  size_t realLength = std::strlen(real.buffer());
  size_t generated = 6 + static_cast<size_t>(suffixLength);
  if (result != failure && suffixLength >= 0 && callerLength >= generated) {
    std::memcpy(tmpl + callerLength - generated, real.buffer() + realLength - generated, 6);
  }
  return result;
}

// True iff an open-family call with `flags` carries a mode argument.
bool needsMode(int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

}  // namespace

void setDeviceRoot(const std::string& root) {
  std::string_view trimmed(root);
  while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.remove_suffix(1);
  if (!trimmed.empty() && trimmed[0] != '/') {
    throw std::invalid_argument("device root must be absolute: " + root);
  }
  if (trimmed.size() >= sizeof(rootBuffer)) {
    throw std::invalid_argument("device root too long: " + root);
  }
  if (trimmed == "/") trimmed = {};  // a root of "/" is no redirect at all
  rootLength.store(0, std::memory_order_release);
  std::memcpy(rootBuffer, trimmed.data(), trimmed.size());
  rootLength.store(trimmed.size(), std::memory_order_release);
}

std::string deviceRoot() {
  return std::string(currentRoot());
}

std::string realPathForDevicePath(const std::string& path) {
  Redirected parts;
  if (!redirect(path.c_str(), &parts)) return path;
  std::string out;
  out.reserve(parts.size());
  out.append(parts.root).append(parts.folder).append(parts.rest);
  return out;
}

}  // namespace kv::sim

using kv::sim::needsMode;
using kv::sim::nextSymbol;
using kv::sim::withRealPath;
using kv::sim::withRealPaths;
using kv::sim::withTemplate;

// Looks up libc's `name` once per process and fails the call with ENOSYS should it be missing.
#define KV_NEXT(name, failure)                                   \
  static auto* const next = nextSymbol<decltype(::name)>(#name); \
  if (next == nullptr) {                                         \
    errno = ENOSYS;                                              \
    return failure;                                              \
  }

// Reads the mode argument of an open-family call, present only when `flags` asks for one.
#define KV_OPEN_MODE(flags, mode)                  \
  mode_t mode = 0;                                 \
  if (needsMode(flags)) {                          \
    va_list args;                                  \
    va_start(args, flags);                         \
    mode = static_cast<mode_t>(va_arg(args, int)); \
    va_end(args);                                  \
  }

extern "C" {

// ---- Opening ----

int open(const char* path, int flags, ...) {
  KV_NEXT(open, -1);
  KV_OPEN_MODE(flags, mode);
  return withRealPath(path, -1, [&](const char* p) { return next(p, flags, mode); });
}

int open64(const char* path, int flags, ...) {
  KV_NEXT(open64, -1);
  KV_OPEN_MODE(flags, mode);
  return withRealPath(path, -1, [&](const char* p) { return next(p, flags, mode); });
}

int openat(int dirfd, const char* path, int flags, ...) {
  KV_NEXT(openat, -1);
  KV_OPEN_MODE(flags, mode);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, flags, mode); });
}

int openat64(int dirfd, const char* path, int flags, ...) {
  KV_NEXT(openat64, -1);
  KV_OPEN_MODE(flags, mode);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, flags, mode); });
}

int __open_2(const char* path, int flags) {
  KV_NEXT(__open_2, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, flags); });
}

int __open64_2(const char* path, int flags) {
  KV_NEXT(__open64_2, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, flags); });
}

int __openat_2(int dirfd, const char* path, int flags) {
  KV_NEXT(__openat_2, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, flags); });
}

int __openat64_2(int dirfd, const char* path, int flags) {
  KV_NEXT(__openat64_2, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, flags); });
}

int creat(const char* path, mode_t mode) {
  KV_NEXT(creat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, mode); });
}

int creat64(const char* path, mode_t mode) {
  KV_NEXT(creat64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, mode); });
}

FILE* fopen(const char* path, const char* mode) {
  KV_NEXT(fopen, nullptr);
  return withRealPath(path, static_cast<FILE*>(nullptr),
                      [&](const char* p) { return next(p, mode); });
}

FILE* fopen64(const char* path, const char* mode) {
  KV_NEXT(fopen64, nullptr);
  return withRealPath(path, static_cast<FILE*>(nullptr),
                      [&](const char* p) { return next(p, mode); });
}

FILE* freopen(const char* path, const char* mode, FILE* stream) {
  KV_NEXT(freopen, nullptr);
  return withRealPath(path, static_cast<FILE*>(nullptr),
                      [&](const char* p) { return next(p, mode, stream); });
}

FILE* freopen64(const char* path, const char* mode, FILE* stream) {
  KV_NEXT(freopen64, nullptr);
  return withRealPath(path, static_cast<FILE*>(nullptr),
                      [&](const char* p) { return next(p, mode, stream); });
}

DIR* opendir(const char* path) {
  KV_NEXT(opendir, nullptr);
  return withRealPath(path, static_cast<DIR*>(nullptr), [&](const char* p) { return next(p); });
}

int scandir(const char* path, struct dirent*** names, int (*filter)(const struct dirent*),
            int (*compare)(const struct dirent**, const struct dirent**)) {
  KV_NEXT(scandir, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, names, filter, compare); });
}

int scandir64(const char* path, struct dirent64*** names, int (*filter)(const struct dirent64*),
              int (*compare)(const struct dirent64**, const struct dirent64**)) {
  KV_NEXT(scandir64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, names, filter, compare); });
}

// ---- Status ----

int stat(const char* path, struct stat* buf) noexcept {
  KV_NEXT(stat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int stat64(const char* path, struct stat64* buf) noexcept {
  KV_NEXT(stat64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int lstat(const char* path, struct stat* buf) noexcept {
  KV_NEXT(lstat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int lstat64(const char* path, struct stat64* buf) noexcept {
  KV_NEXT(lstat64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int fstatat(int dirfd, const char* path, struct stat* buf, int flags) noexcept {
  KV_NEXT(fstatat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, buf, flags); });
}

int fstatat64(int dirfd, const char* path, struct stat64* buf, int flags) noexcept {
  KV_NEXT(fstatat64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, buf, flags); });
}

int __xstat(int ver, const char* path, struct stat* buf) {
  KV_NEXT(__xstat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(ver, p, buf); });
}

int __xstat64(int ver, const char* path, struct stat64* buf) {
  KV_NEXT(__xstat64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(ver, p, buf); });
}

int __lxstat(int ver, const char* path, struct stat* buf) {
  KV_NEXT(__lxstat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(ver, p, buf); });
}

int __lxstat64(int ver, const char* path, struct stat64* buf) {
  KV_NEXT(__lxstat64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(ver, p, buf); });
}

int __fxstatat(int ver, int dirfd, const char* path, struct stat* buf, int flags) {
  KV_NEXT(__fxstatat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(ver, dirfd, p, buf, flags); });
}

int __fxstatat64(int ver, int dirfd, const char* path, struct stat64* buf, int flags) {
  KV_NEXT(__fxstatat64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(ver, dirfd, p, buf, flags); });
}

int statx(int dirfd, const char* path, int flags, unsigned int mask, struct statx* buf) noexcept {
  KV_NEXT(statx, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, flags, mask, buf); });
}

int statfs(const char* path, struct statfs* buf) noexcept {
  KV_NEXT(statfs, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int statfs64(const char* path, struct statfs64* buf) noexcept {
  KV_NEXT(statfs64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int statvfs(const char* path, struct statvfs* buf) noexcept {
  KV_NEXT(statvfs, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int statvfs64(const char* path, struct statvfs64* buf) noexcept {
  KV_NEXT(statvfs64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, buf); });
}

int access(const char* path, int type) noexcept {
  KV_NEXT(access, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, type); });
}

int faccessat(int dirfd, const char* path, int type, int flags) noexcept {
  KV_NEXT(faccessat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, type, flags); });
}

int euidaccess(const char* path, int type) noexcept {
  KV_NEXT(euidaccess, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, type); });
}

int eaccess(const char* path, int type) noexcept {
  KV_NEXT(eaccess, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, type); });
}

ssize_t readlink(const char* path, char* buf, size_t size) noexcept {
  KV_NEXT(readlink, -1);
  return withRealPath(path, ssize_t{-1}, [&](const char* p) { return next(p, buf, size); });
}

ssize_t readlinkat(int dirfd, const char* path, char* buf, size_t size) noexcept {
  KV_NEXT(readlinkat, -1);
  return withRealPath(path, ssize_t{-1}, [&](const char* p) { return next(dirfd, p, buf, size); });
}

char* realpath(const char* path, char* resolved) noexcept {
  KV_NEXT(realpath, nullptr);
  return withRealPath(path, static_cast<char*>(nullptr),
                      [&](const char* p) { return next(p, resolved); });
}

char* __realpath_chk(const char* path, char* resolved, size_t resolvedLength) {
  KV_NEXT(__realpath_chk, nullptr);
  return withRealPath(path, static_cast<char*>(nullptr),
                      [&](const char* p) { return next(p, resolved, resolvedLength); });
}

// ---- Changing the tree ----

int unlink(const char* path) noexcept {
  KV_NEXT(unlink, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p); });
}

int unlinkat(int dirfd, const char* path, int flags) noexcept {
  KV_NEXT(unlinkat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, flags); });
}

int remove(const char* path) noexcept {
  KV_NEXT(remove, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p); });
}

int rmdir(const char* path) noexcept {
  KV_NEXT(rmdir, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p); });
}

int mkdir(const char* path, mode_t mode) noexcept {
  KV_NEXT(mkdir, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, mode); });
}

int mkdirat(int dirfd, const char* path, mode_t mode) noexcept {
  KV_NEXT(mkdirat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, mode); });
}

int rename(const char* from, const char* to) noexcept {
  KV_NEXT(rename, -1);
  return withRealPaths(from, to, -1, [&](const char* f, const char* t) { return next(f, t); });
}

int renameat(int fromfd, const char* from, int tofd, const char* to) noexcept {
  KV_NEXT(renameat, -1);
  return withRealPaths(from, to, -1,
                       [&](const char* f, const char* t) { return next(fromfd, f, tofd, t); });
}

int renameat2(int fromfd, const char* from, int tofd, const char* to, unsigned int flags) noexcept {
  KV_NEXT(renameat2, -1);
  return withRealPaths(
      from, to, -1, [&](const char* f, const char* t) { return next(fromfd, f, tofd, t, flags); });
}

int link(const char* from, const char* to) noexcept {
  KV_NEXT(link, -1);
  return withRealPaths(from, to, -1, [&](const char* f, const char* t) { return next(f, t); });
}

int linkat(int fromfd, const char* from, int tofd, const char* to, int flags) noexcept {
  KV_NEXT(linkat, -1);
  return withRealPaths(
      from, to, -1, [&](const char* f, const char* t) { return next(fromfd, f, tofd, t, flags); });
}

// The target is link text, resolved when the link is followed; only the link moves.
int symlink(const char* target, const char* path) noexcept {
  KV_NEXT(symlink, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(target, p); });
}

int symlinkat(const char* target, int dirfd, const char* path) noexcept {
  KV_NEXT(symlinkat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(target, dirfd, p); });
}

int chdir(const char* path) noexcept {
  KV_NEXT(chdir, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p); });
}

int chmod(const char* path, mode_t mode) noexcept {
  KV_NEXT(chmod, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, mode); });
}

int fchmodat(int dirfd, const char* path, mode_t mode, int flags) noexcept {
  KV_NEXT(fchmodat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, mode, flags); });
}

int chown(const char* path, uid_t owner, gid_t group) noexcept {
  KV_NEXT(chown, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, owner, group); });
}

int lchown(const char* path, uid_t owner, gid_t group) noexcept {
  KV_NEXT(lchown, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, owner, group); });
}

int fchownat(int dirfd, const char* path, uid_t owner, gid_t group, int flags) noexcept {
  KV_NEXT(fchownat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, owner, group, flags); });
}

int truncate(const char* path, off_t length) noexcept {
  KV_NEXT(truncate, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, length); });
}

int truncate64(const char* path, off64_t length) noexcept {
  KV_NEXT(truncate64, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, length); });
}

int utime(const char* path, const struct utimbuf* times) noexcept {
  KV_NEXT(utime, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, times); });
}

int utimes(const char* path, const struct timeval times[2]) noexcept {
  KV_NEXT(utimes, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, times); });
}

int lutimes(const char* path, const struct timeval times[2]) noexcept {
  KV_NEXT(lutimes, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(p, times); });
}

int utimensat(int dirfd, const char* path, const struct timespec times[2], int flags) noexcept {
  KV_NEXT(utimensat, -1);
  return withRealPath(path, -1, [&](const char* p) { return next(dirfd, p, times, flags); });
}

// ---- Temporary files: the caller's template receives the generated name ----

int mkstemp(char* tmpl) {
  KV_NEXT(mkstemp, -1);
  return withTemplate(tmpl, 0, -1, [&](char* t) { return next(t); });
}

int mkstemp64(char* tmpl) {
  KV_NEXT(mkstemp64, -1);
  return withTemplate(tmpl, 0, -1, [&](char* t) { return next(t); });
}

int mkostemp(char* tmpl, int flags) {
  KV_NEXT(mkostemp, -1);
  return withTemplate(tmpl, 0, -1, [&](char* t) { return next(t, flags); });
}

int mkostemp64(char* tmpl, int flags) {
  KV_NEXT(mkostemp64, -1);
  return withTemplate(tmpl, 0, -1, [&](char* t) { return next(t, flags); });
}

int mkstemps(char* tmpl, int suffixLength) {
  KV_NEXT(mkstemps, -1);
  return withTemplate(tmpl, suffixLength, -1, [&](char* t) { return next(t, suffixLength); });
}

int mkstemps64(char* tmpl, int suffixLength) {
  KV_NEXT(mkstemps64, -1);
  return withTemplate(tmpl, suffixLength, -1, [&](char* t) { return next(t, suffixLength); });
}

int mkostemps(char* tmpl, int suffixLength, int flags) {
  KV_NEXT(mkostemps, -1);
  return withTemplate(tmpl, suffixLength, -1,
                      [&](char* t) { return next(t, suffixLength, flags); });
}

int mkostemps64(char* tmpl, int suffixLength, int flags) {
  KV_NEXT(mkostemps64, -1);
  return withTemplate(tmpl, suffixLength, -1,
                      [&](char* t) { return next(t, suffixLength, flags); });
}

char* mkdtemp(char* tmpl) noexcept {
  KV_NEXT(mkdtemp, nullptr);
  char* made = withTemplate(tmpl, 0, static_cast<char*>(nullptr), [&](char* t) { return next(t); });
  return made == nullptr ? nullptr : tmpl;
}

}  // extern "C"
