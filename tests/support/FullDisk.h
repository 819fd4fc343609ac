#pragma once

#include <signal.h>
#include <sys/resource.h>

#include <QtGlobal>

namespace rillbook {

// For its lifetime, no file of this process grows beyond `bytes`: writing fails as on a full disk.
class FullDisk {
public:
    explicit FullDisk(qint64 bytes) {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit{static_cast<rlim_t>(bytes), former_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &former_); }

private:
    rlimit former_{};
};

}  // namespace rillbook
