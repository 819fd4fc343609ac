#include "tests/support/Hardship.h"

#include <signal.h>
#include <unistd.h>

#include <QCoreApplication>

namespace rillbook {

OrdinaryUser::OrdinaryUser() : isRoot_(::geteuid() == 0) {
    if (isRoot_ && ::setresuid(65534, 65534, 0) != 0) {
        qFatal("Can't become an ordinary user");
    }
}

OrdinaryUser::~OrdinaryUser() {
    if (isRoot_ && ::setresuid(0, 0, 0) != 0) {
        qFatal("Can't be root again");
    }
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

void OtherProgram::Kill() {
    process_.kill();
    process_.waitForFinished();
}

}  // namespace rillbook
