#include "tests/support/Hardship.h"

#include <linux/securebits.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QCoreApplication>

namespace rillbook {

namespace {

void SetCapabilities(const OrdinaryUser::Capabilities& capabilities) {
    __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    if (::syscall(SYS_capset, &header, capabilities.data()) != 0) {
        qFatal("The rights of this process cannot be changed");
    }
}

}  // namespace

OrdinaryUser::OrdinaryUser() : formerBits_(::prctl(PR_GET_SECUREBITS)) {
    __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    if (::syscall(SYS_capget, &header, former_.data()) != 0) {
        qFatal("The rights of this process cannot be read");
    }
    // access(2) would still answer for the whole power of root.
    if (::geteuid() == 0 && ::prctl(PR_SET_SECUREBITS, formerBits_ | SECBIT_NO_SETUID_FIXUP) != 0) {
        qFatal("The rights of this process cannot be changed");
    }
    Capabilities ordinary = former_;
    for (const int right : {CAP_CHOWN, CAP_DAC_OVERRIDE, CAP_FOWNER}) {
        ordinary[CAP_TO_INDEX(right)].effective &= ~CAP_TO_MASK(right);
    }
    SetCapabilities(ordinary);
}

OrdinaryUser::~OrdinaryUser() {
    SetCapabilities(former_);
    ::prctl(PR_SET_SECUREBITS, formerBits_);  // an ordinary user cannot, and changed nothing
}

FullDisk::FullDisk(qint64 bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{static_cast<rlim_t>(bytes), former_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

FullDisk::~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &former_);
}

OtherProgram::OtherProgram(const QString& deed, const QStringList& objects) {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QCoreApplication::applicationFilePath(), QStringList(deed) + objects);
}

QByteArray OtherProgram::NextLine() {
    while (!process_.canReadLine() && process_.waitForReadyRead(20'000)) {
    }
    return process_.readLine().trimmed();
}

void OtherProgram::Kill() {
    process_.kill();
    process_.waitForFinished();
}

}  // namespace rillbook
