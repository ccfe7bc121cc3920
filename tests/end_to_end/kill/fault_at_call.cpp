// Preloaded into a program: makes one of its calls that change the file system below a folder fail.
// clang-format off
//   TIDWEN_FAULT_BELOW          the folder
//   TIDWEN_FAULT_AT             the number of the call, from 1; 0: none
//   TIDWEN_FAULT                "kill": the program is killed there; "interrupt": it gets Ctrl-C there;
//                               otherwise the number of the error that the call fails with
//   TIDWEN_FAULT_LASTS          if set, every later call fails too
//   TIDWEN_FAULT_NOTE           file for the name and the path of the faulty call
//   TIDWEN_NO_EXCLUSIVE_RENAME  the number of the error that every exclusive rename fails with
// clang-format on
// A write at which the program is killed writes half of its bytes, as may happen on a disk. Flushes are
// omitted: a killed process loses nothing it wrote, and hundreds of runs would wait for them.

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
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

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

struct Settings {
    std::string below = variable("TIDWEN_FAULT_BELOW");
    std::string note = variable("TIDWEN_FAULT_NOTE");
    long at = std::atol(variable("TIDWEN_FAULT_AT").c_str());
    bool kills = variable("TIDWEN_FAULT") == "kill";
    bool interrupts = variable("TIDWEN_FAULT") == "interrupt";
    int error = std::atoi(variable("TIDWEN_FAULT").c_str());
    bool lasts = std::getenv("TIDWEN_FAULT_LASTS");
    int renameError = std::atoi(variable("TIDWEN_NO_EXCLUSIVE_RENAME").c_str());
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

void writeNote(const char* call, const std::string& place) {
    const int file = next<int(int, const char*, int, ...)>("openat")(AT_FDCWD, settings().note.c_str(),
                                                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const auto text = std::string(call) + " " + place;
    next<ssize_t(int, const void*, std::size_t)>("write")(file, text.data(), text.size());
    close(file);
}

/// Counts a call; true if it must fail.
bool isHit(const char* call, const std::string& place) {
    auto& now = settings();
    if (now.at <= 0 || now.below.empty() || place.compare(0, now.below.size(), now.below) != 0) return false;
    ++now.calls;
    if (now.calls == now.at && !now.note.empty()) writeNote(call, place);
    return now.calls == now.at || (now.lasts && now.calls > now.at);
}

[[noreturn]] void end() {
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

/// True if the call must fail, with `errno` set; does not return from a kill.
bool fails(const char* call, const std::string& place) {
    if (!isHit(call, place)) return false;
    if (settings().kills) end();
    if (settings().interrupts) {
        kill(getpid(), SIGINT);
        return false;
    }
    errno = settings().error;
    return true;
}

/// A flush changes nothing that a kill could interrupt, but it can fail.
int flush(const char* call, int descriptor) {
    return !settings().kills && fails(call, placeOf(descriptor)) ? -1 : 0;
}

int openCounted(const char* name, int folder, const char* path, int flags, mode_t mode) {
    if (flags & (O_CREAT | O_TRUNC) && fails(name, placeOf(folder, path))) return -1;
    return next<int(int, const char*, int, ...)>(name)(folder, path, flags, mode);
}

/// The file system does not support exclusive renames.
bool isRefused(unsigned renameFlags) {
    if (settings().renameError == 0 || !(renameFlags & RENAME_NOREPLACE)) return false;
    errno = settings().renameError;
    return true;
}

mode_t modeOf(int flags, va_list arguments) {
    return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// NOLINTBEGIN: names and signatures of the C library.
#define TIDWEN_BY_PATH(name, parameters, arguments, folder, path)                                            \
    extern "C" int name parameters {                                                                         \
        if (fails(#name, placeOf(folder, path))) return -1;                                                  \
        return next<int parameters>(#name) arguments;                                                        \
    }
#define TIDWEN_BY_FILE(type, name, parameters, arguments, file)                                              \
    extern "C" type name parameters {                                                                        \
        if (fails(#name, placeOf(file))) return -1;                                                          \
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
TIDWEN_BY_FILE(int, fsetxattr, (int d, const char* n, const void* v, size_t s, int f), (d, n, v, s, f), d)
TIDWEN_BY_FILE(int, fremovexattr, (int d, const char* n), (d, n), d)
TIDWEN_BY_FILE(ssize_t, pwrite, (int d, const void* b, size_t n, off_t o), (d, b, n, o), d)
TIDWEN_BY_FILE(ssize_t, pwrite64, (int d, const void* b, size_t n, off64_t o), (d, b, n, o), d)
TIDWEN_BY_FILE(ssize_t, writev, (int d, const iovec* v, int n), (d, v, n), d)
TIDWEN_BY_FILE(ssize_t, sendfile, (int d, int s, off_t* o, size_t n), (d, s, o, n), d)
TIDWEN_BY_FILE(ssize_t, copy_file_range, (int s, off64_t* o, int d, off64_t* q, size_t n, unsigned f),
               (s, o, d, q, n, f), d)

extern "C" int renameat2(int d, const char* a, int e, const char* b, unsigned flags) {
    if (isRefused(flags) || fails("renameat2", placeOf(d, a))) return -1;
    return next<int(int, const char*, int, const char*, unsigned)>("renameat2")(d, a, e, b, flags);
}

/// Returns its error instead of setting `errno`.
extern "C" int posix_fallocate(int descriptor, off_t from, off_t length) {
    if (fails("posix_fallocate", placeOf(descriptor))) return errno;
    return next<int(int, off_t, off_t)>("posix_fallocate")(descriptor, from, length);
}

extern "C" ssize_t write(int descriptor, const void* bytes, size_t count) {
    const auto real = next<ssize_t(int, const void*, size_t)>("write");
    if (!isHit("write", placeOf(descriptor))) return real(descriptor, bytes, count);
    if (settings().kills) {
        real(descriptor, bytes, count / 2);
        end();
    }
    errno = settings().error;
    return -1;
}

extern "C" int fsync(int descriptor) {
    return flush("fsync", descriptor);
}
extern "C" int fdatasync(int descriptor) {
    return flush("fdatasync", descriptor);
}
extern "C" int syncfs(int descriptor) {
    return flush("syncfs", descriptor);
}

/// System calls without a C library function, or made directly.
extern "C" long syscall(long number, ...) {
    va_list list;
    va_start(list, number);
    long a[6];
    for (auto& each : a)
        each = va_arg(list, long);
    va_end(list);
    const auto place = [&] { return placeOf(static_cast<int>(a[0]), reinterpret_cast<const char*>(a[1])); };
    if (number == SYS_renameat2 && (isRefused(static_cast<unsigned>(a[4])) || fails("renameat2", place())))
        return -1;
    if (number == SYS_openat2) {
        std::uint64_t flags = 0; // the first field of its description
        std::memcpy(&flags, reinterpret_cast<const void*>(a[2]), sizeof flags);
        if (flags & (O_CREAT | O_TRUNC) && fails("openat2", place())) return -1;
    }
    return next<long(long, ...)>("syscall")(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}
// NOLINTEND
