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
    // A damaged or hostile file may keep the process busy for ever, or make it write more than
    // the disk can hold.
    struct Limits {
        std::chrono::milliseconds waiting;  // for its output, in all
        std::chrono::milliseconds whole;    // from its start on, the caller's own work included
        qint64 bytes;                       // of its output
    };
    // Raises ReadError NoHelper if it doesn't start.
    HelperProcess(const QString& program, const QStringList& arguments, int input,
                  const Limits& limits);
    ~HelperProcess();
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    // Waits for what it writes next; empty at its end. Valid until the next call. Raises TooMuch if
    // a limit is passed.
    QByteArrayView Read();

    enum class Exit : std::uint8_t { Good, NotStarted, OutOfTime, Bad };
    // REQUIRES: Read has returned nothing. Raises as Read does.
    Exit Wait();

private:
    void Kill();
    std::chrono::nanoseconds Left() const;

    pid_t process_ = -1;
    int output_ = -1;
    std::chrono::nanoseconds left_;  // of the waiting
    std::chrono::steady_clock::time_point end_;
    qint64 bytesLeft_;
    std::array<char, 1 << 16> bytes_;
};

// Hands the sink what the process writes, to its end. Raises ReadError, and what the sink throws.
void TakeAll(HelperProcess& helper, const QStringList& wanted, TableSink& sink);

}  // namespace rillbook::access
