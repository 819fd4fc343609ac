#pragma once

#include <sys/types.h>

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <array>
#include <chrono>
#include <cstdint>

#include "platform/access/AccessFile.h"

namespace rillbook::access {

// A program of ours that reads a file on its standard input and writes to its standard output; its
// messages go nowhere, and of the environment it gets nothing. Ends with this object, whatever it
// is at.
class HelperProcess {
public:
    // `patience` is how long it is waited for in all, the time between two calls left out. Raises
    // ReadError NoHelper where it doesn't start.
    HelperProcess(const QString& program, const QStringList& arguments, int input,
                  std::chrono::milliseconds patience);
    ~HelperProcess();
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    // What it has written since, waited for where there is nothing yet; empty at its end. Stands
    // until the next call. Raises TooMuch once the patience is used up.
    QByteArrayView Read();

    enum class Exit : std::uint8_t { Good, NotStarted, OutOfTime, Bad };
    // REQUIRES: Read has returned nothing. Raises as Read does.
    Exit Wait();

private:
    void Kill();

    pid_t process_ = -1;
    int output_ = -1;
    std::chrono::nanoseconds left_;
    std::array<char, 1 << 16> bytes_;
};

// Hands the sink what the process writes, to its end. Raises ReadError, and what the sink throws.
void TakeAll(HelperProcess& helper, const QStringList& wanted, TableSink& sink);

}  // namespace rillbook::access
