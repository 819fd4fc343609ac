// Imports one logger file of three channels into a new station and prints the peak of the memory
// that the process held, in KiB.
#include <QCoreApplication>
#include <QFile>
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
    // Not getrusage: its peak takes in what the parent held when it started this process.
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return 1;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            std::printf("%d\n", line.mid(6).chopped(3).trimmed().toInt());
            return 0;
        }
    }
    return 1;
}
