// The functions of the C library that FileCalls watches, in the place of the library's own.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

#include "tests/support/FileCalls.h"

using rillbook::FileCalls;

namespace {

template <typename Function>
Function* Real(Function*, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool StrikesOn(FileCalls::Kind kind, int handle) {
    FileCalls* calls = FileCalls::Active();
    return calls != nullptr && calls->Watches(handle) && calls->Strikes(kind);
}

bool StrikesOn(FileCalls::Kind kind, const char* path) {
    FileCalls* calls = FileCalls::Active();
    return calls != nullptr && calls->Watches(path) && calls->Strikes(kind);
}

template <typename Function>
int OpenWatched(const char* path, int flags, Function open) {
    FileCalls* calls = FileCalls::Active();
    if (calls == nullptr || !calls->Watches(path)) {
        return open();
    }
    const bool isNew = (flags & O_CREAT) != 0 && ::access(path, F_OK) != 0;
    if (calls->Strikes(FileCalls::Open)) {
        return -1;
    }
    const int handle = open();
    if (handle >= 0) {
        calls->Opened(handle, isNew || (flags & O_TMPFILE) == O_TMPFILE);
    }
    return handle;
}

// The tests make thousands of them; none waits for the disk.
int Sync(int handle) {
    if (StrikesOn(FileCalls::Sync, handle)) {
        return -1;
    }
    FileCalls* calls = FileCalls::Active();
    if (calls != nullptr && calls->Watches(handle)) {
        calls->Synced(handle);
    }
    return 0;
}

bool IsLocking(int command, const void* argument) {
    return (command == F_SETLK || command == F_SETLKW || command == F_GETLK) &&
           static_cast<const struct flock*>(argument)->l_type != F_UNLCK;
}

}  // namespace

// The mode follows only if the call may make a file; reading it in any case is harmless here.
#define RILLBOOK_OPEN(name)                                                       \
    int name(const char* path, int flags, ...) {                                  \
        va_list rest;                                                             \
        va_start(rest, flags);                                                    \
        const mode_t mode = va_arg(rest, mode_t);                                 \
        va_end(rest);                                                             \
        static auto* const real = Real(&name, #name);                             \
        return OpenWatched(path, flags, [&] { return real(path, flags, mode); }); \
    }

#define RILLBOOK_FCNTL(name)                                                      \
    int name(int handle, int command, ...) {                                      \
        va_list rest;                                                             \
        va_start(rest, command);                                                  \
        void* const argument = va_arg(rest, void*);                               \
        va_end(rest);                                                             \
        static auto* const real = Real(&name, #name);                             \
        if (IsLocking(command, argument) && StrikesOn(FileCalls::Lock, handle)) { \
            return -1;                                                            \
        }                                                                         \
        return real(handle, command, argument);                                   \
    }

// A function whose watched argument is the first of `watched` or, if it is another one, the last.
#define RILLBOOK_CALL(result, name, kind, watched, parameters, arguments) \
    result name parameters {                                              \
        static auto* const real = Real(&name, #name);                     \
        if (StrikesOn(FileCalls::kind, watched)) {                        \
            return -1;                                                    \
        }                                                                 \
        return real arguments;                                            \
    }

extern "C" {

RILLBOOK_OPEN(open)
RILLBOOK_OPEN(open64)
RILLBOOK_FCNTL(fcntl)
RILLBOOK_FCNTL(fcntl64)

RILLBOOK_CALL(ssize_t, read, Read, f, (int f, void* b, size_t n), (f, b, n))
RILLBOOK_CALL(ssize_t, pread, Read, f, (int f, void* b, size_t n, off_t o), (f, b, n, o))
RILLBOOK_CALL(ssize_t, pread64, Read, f, (int f, void* b, size_t n, off64_t o), (f, b, n, o))
RILLBOOK_CALL(ssize_t, write, Write, f, (int f, const void* b, size_t n), (f, b, n))
RILLBOOK_CALL(ssize_t, pwrite, Write, f, (int f, const void* b, size_t n, off_t o), (f, b, n, o))
RILLBOOK_CALL(ssize_t, pwrite64, Write, f, (int f, const void* b, size_t n, off64_t o),
              (f, b, n, o))
RILLBOOK_CALL(ssize_t, sendfile, Write, to, (int to, int from, off_t* o, size_t n) noexcept,
              (to, from, o, n))
RILLBOOK_CALL(int, ftruncate, Truncate, f, (int f, off_t n) noexcept, (f, n))
RILLBOOK_CALL(int, ftruncate64, Truncate, f, (int f, off64_t n) noexcept, (f, n))
RILLBOOK_CALL(int, unlink, Name, path, (const char* path) noexcept, (path))
RILLBOOK_CALL(int, rename, Name, to, (const char* from, const char* to) noexcept, (from, to))
RILLBOOK_CALL(int, link, Name, to, (const char* from, const char* to) noexcept, (from, to))
RILLBOOK_CALL(int, linkat, Name, to,
              (int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept,
              (fromFolder, from, toFolder, to, flags))
RILLBOOK_CALL(int, renameat2, Name, to,
              (int fromFolder, const char* from, int toFolder, const char* to,
               unsigned flags) noexcept,
              (fromFolder, from, toFolder, to, flags))

int fsync(int handle) {
    return Sync(handle);
}

int fdatasync(int handle) {
    return Sync(handle);
}

int flock(int handle, int operation) noexcept {
    static auto* const real = Real(&flock, "flock");
    if ((operation & LOCK_UN) == 0 && StrikesOn(FileCalls::Lock, handle)) {
        return -1;
    }
    return real(handle, operation);
}

void* mmap64(void* at, size_t length, int protection, int flags, int handle,
             off64_t offset) noexcept {
    static auto* const real = Real(&mmap64, "mmap64");
    return StrikesOn(FileCalls::Map, handle) ? MAP_FAILED
                                             : real(at, length, protection, flags, handle, offset);
}

int close(int handle) {
    static auto* const real = Real(&close, "close");
    if (FileCalls* calls = FileCalls::Active()) {
        calls->Closed(handle);
    }
    return real(handle);
}

}  // extern "C"
