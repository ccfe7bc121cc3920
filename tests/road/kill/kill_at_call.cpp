// Preloaded into a program: ends it with SIGKILL instead of its Nth call that changes the file system below
// a folder. TIDWEN_KILL_BELOW names the folder, TIDWEN_KILL_AT is N (0: never). A write that is hit gets half
// of its bytes through, as a disk may leave it. Flushes do nothing: a killed process loses none of what it
// wrote, and hundreds of runs would wait for the disk.

#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

template<class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

struct Settings {
    std::string below = std::getenv("TIDWEN_KILL_BELOW") ? std::getenv("TIDWEN_KILL_BELOW") : "";
    long at = std::getenv("TIDWEN_KILL_AT") ? std::atol(std::getenv("TIDWEN_KILL_AT")) : 0;
    long calls = 0;
};

Settings& settings() {
    static Settings one;
    return one;
}

std::string placeOf(int descriptor) {
    char place[4096];
    const auto link = "/proc/self/fd/" + std::to_string(descriptor);
    const auto length = readlink(link.c_str(), place, sizeof place);
    return length > 0 ? std::string(place, static_cast<std::size_t>(length)) : std::string();
}

std::string placeOf(int folder, const char* path) {
    if (path && path[0] == '/') return path;
    if (folder != AT_FDCWD) return placeOf(folder) + "/" + (path ? path : "");
    char here[4096];
    return std::string(getcwd(here, sizeof here) ? here : "") + "/" + (path ? path : "");
}

/// Counts one call; true when it is the one that must not happen.
bool isTheLast(const std::string& place) {
    auto& now = settings();
    if (now.at <= 0 || now.below.empty() || place.compare(0, now.below.size(), now.below) != 0) return false;
    return ++now.calls == now.at;
}

[[noreturn]] void end() {
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

void countPath(int folder, const char* path) {
    if (isTheLast(placeOf(folder, path))) end();
}

void countFile(int descriptor) {
    if (isTheLast(placeOf(descriptor))) end();
}

int openCounted(const char* name, int folder, const char* path, int flags, mode_t mode) {
    if (flags & (O_CREAT | O_TRUNC)) countPath(folder, path);
    return next<int(int, const char*, int, ...)>(name)(folder, path, flags, mode);
}

mode_t modeOf(int flags, va_list arguments) {
    return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// NOLINTBEGIN: these are the C library's own names and shapes.
#define TIDWEN_BY_PATH(name, parameters, arguments, folder, path)                                            \
    extern "C" int name parameters {                                                                         \
        countPath(folder, path);                                                                             \
        return next<int parameters>(#name) arguments;                                                        \
    }
#define TIDWEN_BY_FILE(type, name, parameters, arguments, file)                                              \
    extern "C" type name parameters {                                                                        \
        countFile(file);                                                                                     \
        return next<type parameters>(#name) arguments;                                                       \
    }
#define TIDWEN_OPEN(name, fixed, folder, path, via)                                                          \
    extern "C" int name(fixed, int flags, ...) {                                                             \
        va_list rest;                                                                                        \
        va_start(rest, flags);                                                                               \
        const mode_t mode = modeOf(flags, rest);                                                             \
        va_end(rest);                                                                                        \
        return openCounted(via, folder, path, flags, mode);                                                  \
    }
#define TIDWEN_TWO(a, b) a, b

TIDWEN_OPEN(open, const char* p, AT_FDCWD, p, "openat")
TIDWEN_OPEN(open64, const char* p, AT_FDCWD, p, "openat64")
TIDWEN_OPEN(openat, TIDWEN_TWO(int d, const char* p), d, p, "openat")
TIDWEN_OPEN(openat64, TIDWEN_TWO(int d, const char* p), d, p, "openat64")

TIDWEN_BY_PATH(rename, (const char* a, const char* b), (a, b), AT_FDCWD, a)
TIDWEN_BY_PATH(renameat, (int d, const char* a, int e, const char* b), (d, a, e, b), d, a)
TIDWEN_BY_PATH(renameat2, (int d, const char* a, int e, const char* b, unsigned f), (d, a, e, b, f), d, a)
TIDWEN_BY_PATH(mkdir, (const char* p, mode_t m), (p, m), AT_FDCWD, p)
TIDWEN_BY_PATH(mkdirat, (int d, const char* p, mode_t m), (d, p, m), d, p)
TIDWEN_BY_PATH(mkfifoat, (int d, const char* p, mode_t m), (d, p, m), d, p)
TIDWEN_BY_PATH(mknodat, (int d, const char* p, mode_t m, dev_t v), (d, p, m, v), d, p)
TIDWEN_BY_PATH(unlink, (const char* p), (p), AT_FDCWD, p)
TIDWEN_BY_PATH(unlinkat, (int d, const char* p, int f), (d, p, f), d, p)
TIDWEN_BY_PATH(rmdir, (const char* p), (p), AT_FDCWD, p)
TIDWEN_BY_PATH(remove, (const char* p), (p), AT_FDCWD, p)
TIDWEN_BY_PATH(link, (const char* a, const char* b), (a, b), AT_FDCWD, b)
TIDWEN_BY_PATH(linkat, (int d, const char* a, int e, const char* b, int f), (d, a, e, b, f), e, b)
TIDWEN_BY_PATH(symlink, (const char* a, const char* b), (a, b), AT_FDCWD, b)
TIDWEN_BY_PATH(symlinkat, (const char* a, int d, const char* b), (a, d, b), d, b)
TIDWEN_BY_PATH(chmod, (const char* p, mode_t m), (p, m), AT_FDCWD, p)
TIDWEN_BY_PATH(fchmodat, (int d, const char* p, mode_t m, int f), (d, p, m, f), d, p)
TIDWEN_BY_PATH(fchownat, (int d, const char* p, uid_t u, gid_t g, int f), (d, p, u, g, f), d, p)
TIDWEN_BY_PATH(utimensat, (int d, const char* p, const timespec* t, int f), (d, p, t, f), d, p)
TIDWEN_BY_FILE(int, futimens, (int d, const timespec* t), (d, t), d)
TIDWEN_BY_FILE(int, fchmod, (int d, mode_t m), (d, m), d)
TIDWEN_BY_FILE(int, fchown, (int d, uid_t u, gid_t g), (d, u, g), d)
TIDWEN_BY_FILE(int, ftruncate, (int d, off_t n), (d, n), d)
TIDWEN_BY_FILE(int, ftruncate64, (int d, off64_t n), (d, n), d)
TIDWEN_BY_FILE(int, posix_fallocate, (int d, off_t o, off_t n), (d, o, n), d)
TIDWEN_BY_FILE(int, fsetxattr, (int d, const char* n, const void* v, size_t s, int f), (d, n, v, s, f), d)
TIDWEN_BY_FILE(int, fremovexattr, (int d, const char* n), (d, n), d)
TIDWEN_BY_FILE(ssize_t, pwrite, (int d, const void* b, size_t n, off_t o), (d, b, n, o), d)
TIDWEN_BY_FILE(ssize_t, pwrite64, (int d, const void* b, size_t n, off64_t o), (d, b, n, o), d)
TIDWEN_BY_FILE(ssize_t, writev, (int d, const iovec* v, int n), (d, v, n), d)
TIDWEN_BY_FILE(ssize_t, sendfile, (int d, int s, off_t* o, size_t n), (d, s, o, n), d)
TIDWEN_BY_FILE(ssize_t, copy_file_range, (int s, off64_t* o, int d, off64_t* q, size_t n, unsigned f),
               (s, o, d, q, n, f), d)

extern "C" ssize_t write(int descriptor, const void* bytes, size_t count) {
    const auto real = next<ssize_t(int, const void*, size_t)>("write");
    if (!isTheLast(placeOf(descriptor))) return real(descriptor, bytes, count);
    real(descriptor, bytes, count / 2);
    end();
}

extern "C" int fsync(int) {
    return 0;
}
extern "C" int fdatasync(int) {
    return 0;
}
extern "C" int syncfs(int) {
    return 0;
}

/// What the C library has no function for, or what a program does without it.
extern "C" long syscall(long number, ...) {
    va_list list;
    va_start(list, number);
    long a[6];
    for (auto& each : a)
        each = va_arg(list, long);
    va_end(list);
    if (number == SYS_renameat2) countPath(static_cast<int>(a[0]), reinterpret_cast<const char*>(a[1]));
    if (number == SYS_openat2) {
        std::uint64_t flags = 0; // the first field of its description
        std::memcpy(&flags, reinterpret_cast<const void*>(a[2]), sizeof flags);
        if (flags & (O_CREAT | O_TRUNC))
            countPath(static_cast<int>(a[0]), reinterpret_cast<const char*>(a[1]));
    }
    return next<long(long, ...)>("syscall")(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}
// NOLINTEND
