// rillbook-access: reads the Access file that is its standard input, and writes the tables named by
// its arguments to its standard output (AccessProtocol.h). A process of its own, as neither such a
// file nor the library that reads it is to be trusted with the user's work.

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QFile>
#include <csignal>
#include <cstdlib>
#include <new>

#include "platform/access/JetReader.h"

using namespace rillbook::access;

namespace {

// Far more than a station of decades takes: 350,000 records are read in a second, and a row at a
// time is held.
constexpr rlim_t kCpuSeconds = 30;
constexpr rlim_t kMemory = rlim_t{512} << 20U;
constexpr rlim_t kFiles = 16;  // the library opens its own beside the three

void Limit(int resource, rlim_t most) {
    const rlimit limit{.rlim_cur = most, .rlim_max = most};
    if (setrlimit(static_cast<__rlimit_resource_t>(resource), &limit) != 0) {
        _exit(EXIT_FAILURE);
    }
}

void GiveUpPowers() {
    Limit(RLIMIT_CORE, 0);
    Limit(RLIMIT_FSIZE, 0);
    Limit(RLIMIT_NOFILE, kFiles);
    Limit(RLIMIT_CPU, kCpuSeconds);
#ifndef __SANITIZE_ADDRESS__  // which reserves terabytes
    Limit(RLIMIT_AS, kMemory);
#endif
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    clearenv();  // some of its variables change what the library does
}

}  // namespace

int main(int argc, char* argv[]) {
    GiveUpPowers();
    FrameWriter writer(STDOUT_FILENO);
    try {
        QStringList wanted;
        for (int i = 1; i < argc; ++i) {
            wanted.append(QString::fromUtf8(argv[i]));
        }
        JetReader(STDIN_FILENO).WriteTables(wanted, writer);
    } catch (const ReadError& error) {
        writer.Fault(error.Why());
    } catch (const std::bad_alloc&) {
        writer.Fault(ReadError::Cause::TooMuch);
    }
    // What the library tidies up at an end of the ordinary kind may be damaged as well.
    _exit(EXIT_SUCCESS);
}
