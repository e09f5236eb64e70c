// A double of the calls that reach files, loaded before the C library: it counts those on files below one folder, and
// fails one of them, or ends the process there. For tests alone; trial.py is the other side of it.
//
//   FAULT_BELOW  the folder, without links in its path; calls on other files pass uncounted
//   FAULT_TOLD   a file of at least sizeof(Told) bytes, outside that folder: what was counted and what was hit. It is
//                mapped, so that it holds after any end of the process
//   FAULT        empty to count alone, or "KIND NUMBER ERRNO MODE": the NUMBER-th call (from 1) of the kind, where KIND
//                is a word of kKinds or "any". MODE is "once"; "on" (this call and all later ones of the kind);
//                "full" (of write: the first half of the bytes is taken, and later calls fail); "kill" (the process
//                is killed before the call); or "stop" (it is stopped before the call, which is done when it goes on)
//
// Of the tests' program one thread alone, the first, does what a failure can spoil; others read files beside it,
// whenever they come to it, and pass uncounted. The counters are not guarded.
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr std::array kKinds{"open",   "read",  "write", "sync", "truncate", "rename",
                            "unlink", "close", "link",  "map",  "folder",   "mode"};
enum Kind : int {
  kOpen,
  kRead,
  kWrite,
  kSync,
  kTruncate,
  kRename,
  kUnlink,
  kClose,
  kLink,
  kMap,
  kFolder,
  kMode,
  kAny,
};
static_assert(kKinds.size() == kAny);

struct Told {
  std::array<std::uint64_t, 16> calls;  // by kind; the last is kAny's
  std::uint64_t hit;                    // how often a call was failed
  std::array<char, 512> what;           // the first one: call and path
};

struct Plan {
  int kind = -1;
  std::uint64_t number = 0;
  int error = 0;
  bool goes_on = false;
  bool halves = false;
  int signal = 0;
};

constexpr int kMostDescriptors = 1 << 16;
constexpr std::size_t kLongPath = 4096;

Plan plan;
Told nowhere;
Told* told = &nowhere;
std::array<char, kLongPath> below;
std::size_t below_length = 0;
std::array<bool, kMostDescriptors> watched;  // descriptors of files below the folder
bool ready = false;

template <typename Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void ReadPlan() {
  const char* text = std::getenv("FAULT");
  std::array<char, 16> kind{};
  std::array<char, 16> mode{};
  unsigned long number = 0;
  if (text == nullptr || std::sscanf(text, "%15s %lu %d %15s", kind.data(), &number, &plan.error, mode.data()) != 4) {
    return;
  }
  plan.number = number;
  plan.kind = kAny;
  for (std::size_t index = 0; index < kKinds.size(); ++index) {
    if (std::strcmp(kind.data(), kKinds[index]) == 0) plan.kind = static_cast<int>(index);
  }
  plan.signal = std::strcmp(mode.data(), "kill") == 0 ? SIGKILL : std::strcmp(mode.data(), "stop") == 0 ? SIGSTOP : 0;
  plan.halves = std::strcmp(mode.data(), "full") == 0;
  plan.goes_on = plan.halves || std::strcmp(mode.data(), "on") == 0;
}

void MapTold() {
  const char* path = std::getenv("FAULT_TOLD");
  if (path == nullptr) return;
  const auto file = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC));
  if (file < 0) return;
  const auto where = syscall(SYS_mmap, nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  syscall(SYS_close, file);
  if (where != -1) told = reinterpret_cast<Told*>(where);
}

// The first call may come before this library's own constructors.
void GetReady() {
  if (ready) return;
  ready = true;
  const char* folder = std::getenv("FAULT_BELOW");
  if (folder == nullptr || std::strlen(folder) >= below.size()) return;
  below_length = std::strlen(folder);
  std::memcpy(below.data(), folder, below_length);
  ReadPlan();
  MapTold();
}

bool IsBelow(const char* path) {
  return below_length > 0 && std::strncmp(path, below.data(), below_length) == 0 &&
         (path[below_length] == '/' || path[below_length] == '\0');
}

bool FolderIsBelow(int folder) {
  std::array<char, kLongPath> path{};
  if (folder == AT_FDCWD) return getcwd(path.data(), path.size()) != nullptr && IsBelow(path.data());
  std::array<char, 64> link{};
  std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", folder);
  return readlink(link.data(), path.data(), path.size() - 1) > 0 && IsBelow(path.data());
}

bool IsOfMainThread() {
  return syscall(SYS_gettid) == getpid();
}

bool Counts(const char* path, int folder = AT_FDCWD) {
  GetReady();
  if (!IsOfMainThread()) return false;
  if (path == nullptr || below_length == 0) return false;
  return path[0] == '/' ? IsBelow(path) : FolderIsBelow(folder);
}

bool Counts(int descriptor) {
  GetReady();
  return IsOfMainThread() && descriptor >= 0 && descriptor < kMostDescriptors &&
         watched[static_cast<std::size_t>(descriptor)];
}

void Watch(int descriptor, bool on) {
  if (descriptor >= 0 && descriptor < kMostDescriptors) watched[static_cast<std::size_t>(descriptor)] = on;
}

void Tell(const char* call, const char* path, int descriptor) {
  if (told->hit++ > 0) return;
  std::array<char, kLongPath> found{};
  if (path == nullptr) {
    std::array<char, 64> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    if (readlink(link.data(), found.data(), found.size() - 1) > 0) path = found.data();
  }
  std::snprintf(told->what.data(), told->what.size(), "%s %.400s", call, path == nullptr ? "?" : path);
}

// Counts a call and gives true where it is to fail; errno is set then.
bool Fails(Kind kind, const char* call, const char* path, int descriptor = -1) {
  const std::uint64_t of_kind = ++told->calls[static_cast<std::size_t>(kind)];
  const std::uint64_t of_any = ++told->calls[kAny];
  if (plan.kind != kAny && plan.kind != kind) return false;
  const std::uint64_t number = plan.kind == kAny ? of_any : of_kind;
  if (plan.number == 0 || (plan.goes_on ? number < plan.number : number != plan.number)) return false;
  Tell(call, path, descriptor);
  if (plan.signal != 0) kill(getpid(), plan.signal);
  errno = plan.error;
  return plan.signal == 0;
}

// The half of a write that a disk takes which fills up within it; 0 where nothing is to be taken.
std::size_t HalfTaken(std::size_t size) {
  return plan.halves && told->hit == 1 ? size / 2 : 0;
}

template <typename Call>
int Opened(const char* name, const char* path, int folder, Call call) {
  const bool counts = Counts(path, folder);
  if (counts && Fails(kOpen, name, path)) return -1;
  const int descriptor = call();
  if (descriptor >= 0) Watch(descriptor, counts);
  return descriptor;
}

mode_t ModeOf(int flags, va_list& rest) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

// --- Buffered files
// ------------------------------------------------------------------------------------------------------ The C library
// writes these without a call that could be doubled, so they get a descriptor of our own behind them. Not those of the
// C++ library, which asks for the descriptor and writes to it by itself.

ssize_t CookieRead(void* cookie, char* into, std::size_t size) {
  return read(static_cast<int>(reinterpret_cast<std::intptr_t>(cookie)), into, size);
}

ssize_t CookieWrite(void* cookie, const char* from, std::size_t size) {
  const ssize_t done = write(static_cast<int>(reinterpret_cast<std::intptr_t>(cookie)), from, size);
  return done < 0 ? 0 : done;
}

int CookieSeek(void* cookie, off64_t* offset, int whence) {
  const off_t at = lseek(static_cast<int>(reinterpret_cast<std::intptr_t>(cookie)), *offset, whence);
  if (at < 0) return -1;
  *offset = at;
  return 0;
}

int CookieClose(void* cookie) {
  return close(static_cast<int>(reinterpret_cast<std::intptr_t>(cookie)));
}

bool IsOfCppLibrary(const void* caller) {
  Dl_info info{};
  return dladdr(caller, &info) != 0 && std::strstr(info.dli_fname, "libstdc++") != nullptr;
}

int FlagsOf(const char* mode) {
  const bool both = std::strchr(mode, '+') != nullptr;
  if (mode[0] == 'r') return both ? O_RDWR : O_RDONLY;
  return (both ? O_RDWR : O_WRONLY) | O_CREAT | (mode[0] == 'a' ? O_APPEND : O_TRUNC);
}

FILE* OpenBuffered(const char* path, const char* mode, const void* caller) {
  const bool plain = IsOfCppLibrary(caller);
  const int descriptor = Opened("fopen", path, AT_FDCWD, [&] {
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, FlagsOf(mode) | O_CLOEXEC, 0666));
  });
  if (descriptor < 0) return nullptr;
  if (plain || !Counts(descriptor)) return fdopen(descriptor, mode);
  return fopencookie(reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor)), mode,
                     {CookieRead, CookieWrite, CookieSeek, CookieClose});
}

}  // namespace

extern "C" {

// --- Opening
// -------------------------------------------------------------------------------------------------------------

#define DOUBLE_OPEN(name)                                                                              \
  int name(const char* path, int flags, ...) {                                                         \
    va_list rest;                                                                                      \
    va_start(rest, flags);                                                                             \
    const mode_t mode = ModeOf(flags, rest);                                                           \
    va_end(rest);                                                                                      \
    return Opened("open", path, AT_FDCWD,                                                              \
                  [&] { return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode)); }); \
  }
#define DOUBLE_OPENAT(name)                                                                          \
  int name(int folder, const char* path, int flags, ...) {                                           \
    va_list rest;                                                                                    \
    va_start(rest, flags);                                                                           \
    const mode_t mode = ModeOf(flags, rest);                                                         \
    va_end(rest);                                                                                    \
    return Opened("openat", path, folder,                                                            \
                  [&] { return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode)); }); \
  }
DOUBLE_OPEN(open)
DOUBLE_OPEN(open64)
DOUBLE_OPENAT(openat)
DOUBLE_OPENAT(openat64)

// What programs that are compiled with checks call where no mode is given.
int __open_2(const char* path, int flags) {
  return open(path, flags);
}
int __open64_2(const char* path, int flags) {
  return open(path, flags);
}
int __openat_2(int folder, const char* path, int flags) {
  return openat(folder, path, flags);
}
int __openat64_2(int folder, const char* path, int flags) {
  return openat(folder, path, flags);
}

int creat(const char* path, mode_t mode) {
  return open(path, O_WRONLY | O_CREAT | O_TRUNC, mode);
}

#define DOUBLE_MKSTEMP(name, parameters, arguments, pattern)                                        \
  int name parameters {                                                                             \
    return Opened(#name, pattern, AT_FDCWD, [&] { return Real<int parameters>(#name) arguments; }); \
  }
DOUBLE_MKSTEMP(mkstemp, (char* pattern), (pattern), pattern)
DOUBLE_MKSTEMP(mkstemp64, (char* pattern), (pattern), pattern)
DOUBLE_MKSTEMP(mkostemp, (char* pattern, int flags), (pattern, flags), pattern)
DOUBLE_MKSTEMP(mkostemp64, (char* pattern, int flags), (pattern, flags), pattern)
DOUBLE_MKSTEMP(mkstemps, (char* pattern, int length), (pattern, length), pattern)
DOUBLE_MKSTEMP(mkostemps, (char* pattern, int length, int flags), (pattern, length, flags), pattern)

FILE* fopen(const char* path, const char* mode) {
  return OpenBuffered(path, mode, __builtin_return_address(0));
}
FILE* fopen64(const char* path, const char* mode) {
  return OpenBuffered(path, mode, __builtin_return_address(0));
}

int close(int descriptor) {
  const bool fails = Counts(descriptor) && Fails(kClose, "close", nullptr, descriptor);
  Watch(descriptor, false);
  const auto result = static_cast<int>(syscall(SYS_close, descriptor));
  if (!fails) return result;
  errno = plan.error;  // the descriptor is gone even then
  return -1;
}

// --- Reading and writing
// -------------------------------------------------------------------------------------------------

ssize_t read(int file, void* into, std::size_t size) {
  if (Counts(file) && Fails(kRead, "read", nullptr, file)) return -1;
  return syscall(SYS_read, file, into, size);
}

ssize_t pread(int file, void* into, std::size_t size, off_t offset) {
  if (Counts(file) && Fails(kRead, "pread", nullptr, file)) return -1;
  return syscall(SYS_pread64, file, into, size, offset);
}
ssize_t pread64(int file, void* into, std::size_t size, off64_t offset) {
  return pread(file, into, size, offset);
}

ssize_t write(int file, const void* from, std::size_t size) {
  if (Counts(file) && Fails(kWrite, "write", nullptr, file)) {
    const std::size_t half = HalfTaken(size);
    if (half == 0) return -1;
    return syscall(SYS_write, file, from, half);
  }
  return syscall(SYS_write, file, from, size);
}

ssize_t pwrite(int file, const void* from, std::size_t size, off_t offset) {
  if (Counts(file) && Fails(kWrite, "pwrite", nullptr, file)) {
    const std::size_t half = HalfTaken(size);
    if (half == 0) return -1;
    return syscall(SYS_pwrite64, file, from, half, offset);
  }
  return syscall(SYS_pwrite64, file, from, size, offset);
}
ssize_t pwrite64(int file, const void* from, std::size_t size, off64_t offset) {
  return pwrite(file, from, size, offset);
}

ssize_t writev(int file, const iovec* parts, int count) {
  if (Counts(file) && Fails(kWrite, "writev", nullptr, file)) return -1;
  return syscall(SYS_writev, file, parts, count);
}

ssize_t copy_file_range(int from, off64_t* from_offset, int to, off64_t* to_offset, std::size_t size,
                        unsigned int flags) {
  if (Counts(to) && Fails(kWrite, "copy_file_range", nullptr, to)) return -1;
  return syscall(SYS_copy_file_range, from, from_offset, to, to_offset, size, flags);
}

ssize_t sendfile(int to, int from, off_t* offset, std::size_t size) noexcept {
  if (Counts(to) && Fails(kWrite, "sendfile", nullptr, to)) return -1;
  return syscall(SYS_sendfile, to, from, offset, size);
}
ssize_t sendfile64(int to, int from, off64_t* offset, std::size_t size) noexcept {
  return sendfile(to, from, offset, size);
}

int fsync(int file) {
  if (Counts(file) && Fails(kSync, "fsync", nullptr, file)) return -1;
  return static_cast<int>(syscall(SYS_fsync, file));
}
int fdatasync(int file) {
  if (Counts(file) && Fails(kSync, "fdatasync", nullptr, file)) return -1;
  return static_cast<int>(syscall(SYS_fdatasync, file));
}

int ftruncate(int file, off_t size) noexcept {
  if (Counts(file) && Fails(kTruncate, "ftruncate", nullptr, file)) return -1;
  return static_cast<int>(syscall(SYS_ftruncate, file, size));
}
int ftruncate64(int file, off64_t size) noexcept {
  return ftruncate(file, size);
}

int posix_fallocate(int file, off_t offset, off_t size) {
  if (Counts(file) && Fails(kTruncate, "posix_fallocate", nullptr, file)) return plan.error;
  return syscall(SYS_fallocate, file, 0, offset, size) == 0 ? 0 : errno;
}
int posix_fallocate64(int file, off64_t offset, off64_t size) {
  return posix_fallocate(file, offset, size);
}

void* mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset) noexcept {
  if (file >= 0 && Counts(file) && Fails(kMap, "mmap", nullptr, file)) return MAP_FAILED;
  return reinterpret_cast<void*>(syscall(SYS_mmap, address, size, protection, flags, file, offset));
}
void* mmap64(void* address, std::size_t size, int protection, int flags, int file, off64_t offset) noexcept {
  return mmap(address, size, protection, flags, file, offset);
}

// --- Names
// ---------------------------------------------------------------------------------------------------------------

int rename(const char* from, const char* to) noexcept {
  if ((Counts(from) || Counts(to)) && Fails(kRename, "rename", to)) return -1;
  return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
int renameat(int from_folder, const char* from, int to_folder, const char* to) noexcept {
  return renameat2(from_folder, from, to_folder, to, 0);
}
int renameat2(int from_folder, const char* from, int to_folder, const char* to, unsigned int flags) noexcept {
  if ((Counts(from, from_folder) || Counts(to, to_folder)) && Fails(kRename, "renameat2", to)) return -1;
  return static_cast<int>(syscall(SYS_renameat2, from_folder, from, to_folder, to, flags));
}

int unlink(const char* path) noexcept {
  if (Counts(path) && Fails(kUnlink, "unlink", path)) return -1;
  return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}
int unlinkat(int folder, const char* path, int flags) noexcept {
  if (Counts(path, folder) && Fails(kUnlink, "unlinkat", path)) return -1;
  return static_cast<int>(syscall(SYS_unlinkat, folder, path, flags));
}
int rmdir(const char* path) noexcept {
  if (Counts(path) && Fails(kUnlink, "rmdir", path)) return -1;
  return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR));
}
int remove(const char* path) noexcept {
  if (Counts(path) && Fails(kUnlink, "remove", path)) return -1;
  if (syscall(SYS_unlinkat, AT_FDCWD, path, 0) == 0) return 0;
  return errno == EISDIR ? static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR)) : -1;
}

int link(const char* from, const char* to) noexcept {
  if (Counts(to) && Fails(kLink, "link", to)) return -1;
  return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}
int linkat(int from_folder, const char* from, int to_folder, const char* to, int flags) noexcept {
  if (Counts(to, to_folder) && Fails(kLink, "linkat", to)) return -1;
  return static_cast<int>(syscall(SYS_linkat, from_folder, from, to_folder, to, flags));
}
int symlink(const char* from, const char* to) noexcept {
  if (Counts(to) && Fails(kLink, "symlink", to)) return -1;
  return static_cast<int>(syscall(SYS_symlinkat, from, AT_FDCWD, to));
}

// --- Folders and modes
// ---------------------------------------------------------------------------------------------------

int mkdir(const char* path, mode_t mode) noexcept {
  if (Counts(path) && Fails(kFolder, "mkdir", path)) return -1;
  return static_cast<int>(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}
char* mkdtemp(char* pattern) noexcept {
  if (Counts(pattern) && Fails(kFolder, "mkdtemp", pattern)) return nullptr;
  return Real<char*(char*)>("mkdtemp")(pattern);
}
DIR* opendir(const char* path) {
  if (Counts(path) && Fails(kFolder, "opendir", path)) return nullptr;
  return Real<DIR*(const char*)>("opendir")(path);
}

int chmod(const char* path, mode_t mode) noexcept {
  if (Counts(path) && Fails(kMode, "chmod", path)) return -1;
  return static_cast<int>(syscall(SYS_fchmodat, AT_FDCWD, path, mode));
}
int fchmod(int file, mode_t mode) noexcept {
  if (Counts(file) && Fails(kMode, "fchmod", nullptr, file)) return -1;
  return static_cast<int>(syscall(SYS_fchmod, file, mode));
}
int fchown(int file, uid_t user, gid_t group) noexcept {
  if (Counts(file) && Fails(kMode, "fchown", nullptr, file)) return -1;
  return static_cast<int>(syscall(SYS_fchown, file, user, group));
}

}  // extern "C"
