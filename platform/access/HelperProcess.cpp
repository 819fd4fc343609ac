#include "platform/access/HelperProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QByteArrayList>
#include <QFile>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <utility>
#include <vector>

#include "platform/access/AccessProtocol.h"

namespace rillbook::access {

namespace {

using Clock = std::chrono::steady_clock;
using Cause = ReadError::Cause;

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const { return number_; }
    int Release() { return std::exchange(number_, -1); }

private:
    int number_;
};

// Above the three that the helper gets, whatever of those this process was started without.
int BehindStandard(int descriptor) {
    return fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
}

class SpawnPlan {
public:
    SpawnPlan(int input, int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions_, 3);
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnPlan() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;

    pid_t Spawn(const std::vector<char*>& arguments) const {
        char* environment[] = {nullptr};
        pid_t process = -1;
        const int result = posix_spawn(&process, arguments.front(), &actions_, &attributes_,
                                       arguments.data(), environment);
        return result == 0 ? process : -1;
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

}  // namespace

HelperProcess::HelperProcess(const QString& program, const QStringList& arguments, int input,
                             const Limits& limits)
    : left_(limits.waiting), end_(Clock::now() + limits.whole), bytesLeft_(limits.bytes) {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        Raise(Cause::NoHelper);
    }
    Descriptor readEnd(ends[0]);
    const Descriptor writeEnd(ends[1]);
    const Descriptor farInput(BehindStandard(input));
    const Descriptor farOutput(BehindStandard(writeEnd.Number()));
    QByteArrayList texts{QFile::encodeName(program)};
    for (const QString& argument : arguments) {
        texts.append(argument.toUtf8());
    }
    std::vector<char*> pointers;
    pointers.reserve(static_cast<std::size_t>(texts.size()) + 1);
    for (QByteArray& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    process_ = SpawnPlan(farInput.Number(), farOutput.Number()).Spawn(pointers);
    if (process_ < 0) {
        Raise(Cause::NoHelper);
    }
    output_ = readEnd.Release();
}

HelperProcess::~HelperProcess() {
    Kill();
    ::close(output_);
}

void HelperProcess::Kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
    }
}

std::chrono::nanoseconds HelperProcess::Left() const {
    return std::min(left_, std::chrono::nanoseconds(end_ - Clock::now()));
}

QByteArrayView HelperProcess::Read() {
    for (;;) {
        const Clock::time_point begin = Clock::now();
        const std::chrono::nanoseconds longest = Left();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
        const timespec wait{.tv_sec = seconds.count(), .tv_nsec = (longest - seconds).count()};
        pollfd waited{.fd = output_, .events = POLLIN, .revents = 0};
        const int ready = longest.count() > 0 ? ::ppoll(&waited, 1, &wait, nullptr) : 0;
        left_ -= Clock::now() - begin;
        if (ready == 0) {
            Raise(Cause::TooMuch);
        }
        if (ready > 0) {
            const ssize_t count = ::read(output_, bytes_.data(), bytes_.size());
            bytesLeft_ -= std::max<ssize_t>(count, 0);
            if (bytesLeft_ < 0) {
                Raise(Cause::TooMuch);
            }
            if (count >= 0) {
                return {bytes_.data(), static_cast<qsizetype>(count)};
            }
        }
        if (errno != EINTR) {
            Raise(Cause::Damaged);
        }
    }
}

HelperProcess::Exit HelperProcess::Wait() {
    constexpr std::chrono::milliseconds kStep{1};
    constexpr timespec kStepTime{.tv_sec = 0, .tv_nsec = std::chrono::nanoseconds(kStep).count()};
    int status = 0;
    pid_t ended = 0;
    while ((ended = ::waitpid(process_, &status, WNOHANG)) == 0) {
        if (Left().count() <= 0) {
            Raise(Cause::TooMuch);
        }
        ::nanosleep(&kStepTime, nullptr);
        left_ -= kStep;
    }
    process_ = -1;
    if (ended < 0) {
        return Exit::Good;  // how it ended isn't kept for a process that ignores its children
    }
    if (WIFEXITED(status)) {
        // By convention of the shell and of the loader that finds no library.
        constexpr int kNotStarted = 127;
        const int code = WEXITSTATUS(status);
        return code == 0 ? Exit::Good : code == kNotStarted ? Exit::NotStarted : Exit::Bad;
    }
    return WTERMSIG(status) == SIGXCPU ? Exit::OutOfTime : Exit::Bad;
}

void TakeAll(HelperProcess& helper, const QStringList& wanted, TableSink& sink) {
    FrameReader reader(wanted, sink);
    for (QByteArrayView bytes = helper.Read(); !bytes.isEmpty(); bytes = helper.Read()) {
        reader.Take(bytes);
    }
    switch (helper.Wait()) {
        case HelperProcess::Exit::Good:
            break;
        case HelperProcess::Exit::NotStarted:
            Raise(Cause::NoHelper);
        case HelperProcess::Exit::OutOfTime:
            Raise(Cause::TooMuch);
        case HelperProcess::Exit::Bad:
            Raise(Cause::Damaged);
    }
    if (!reader.IsDone()) {
        Raise(Cause::Damaged);
    }
}

}  // namespace rillbook::access
