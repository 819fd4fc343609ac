// Imports one logger file of three channels into a new station and prints the peak of the memory
// that the process held, in KiB.
#include <sys/resource.h>

#include <QCoreApplication>
#include <cstdio>

#include "bench/LoggerYears.h"
#include "import/Import.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 3) {
        return 2;
    }
    ScriptedDoors doors;
    StationFixture station(3);
    const QString rows = QString::fromLocal8Bit(argv[2]);
    doors.ExpectMessage(QStringLiteral(" %1 Readable Records,  0 Unreadable Records(s), and  0 "
                                       "Dupulicate(s).")
                            .arg(rows));
    ImportFile(QString::fromLocal8Bit(argv[1]));
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%ld\n", usage.ru_maxrss);
    return 0;
}
