#include "bench/LoggerYears.h"

// Writes the logger file of a number of readings: FILE ROWS.
int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    rillbook::WriteLoggerYears(QString::fromLocal8Bit(argv[1]), QByteArray(argv[2]).toInt());
    return 0;
}
