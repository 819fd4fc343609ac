#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringList>
#include <cstdint>
#include <vector>

#include "platform/access/AccessFile.h"

// What passes from rillbook-access to the program, in the byte order of the machine that both run
// on: frames of a kind (1 byte), a length (4) and as many bytes. Texts are UTF-8 behind a length
// (4). Tables, then for each table that was asked for and is there Begin, Rows and End, then Done;
// or anywhere between Fault, the last. A stream that ends otherwise is one that was cut off.
namespace rillbook::access {

enum class Frame : char {
    Tables = 'N',  // texts
    Begin = 'T',   // the table's name, then for each column its type (1 byte) and name
    Row = 'R',     // for each column the kind of its value (1 byte) and the value
    End = 'E',     // the count of rows (4)
    Fault = 'F',   // a ReadError::Cause (1)
    Done = 'Z'
};

// Longer ones are neither made nor taken.
constexpr std::uint32_t kLongestFrame = 16U << 20U;

// The one sentence for each cause.
[[noreturn]] void Raise(ReadError::Cause cause);

class FrameWriter {
public:
    explicit FrameWriter(int descriptor) : descriptor_(descriptor) {}
    void Tables(const QStringList& names);
    void Begin(const QString& name, const std::vector<Column>& columns);
    void Row(const std::vector<Value>& row);
    void End(std::uint32_t rows);
    void Fault(ReadError::Cause cause);
    void Done();  // what was written has left the process when this and Fault return

private:
    void Start(Frame kind);
    void Finish();
    void Append(const void* bytes, std::size_t count);
    void Append(const QString& text);
    void Flush();

    int descriptor_;
    QByteArray buffer_;
    qsizetype frame_ = 0;  // where the frame that is being written begins
};

// Takes the stream apart as it comes and hands it to the sink. Trusts nothing of it: raises Damaged
// at a frame that is too long, out of its order, or not what the frames before it promised.
class FrameReader {
public:
    // The sink is to outlive the reader.
    FrameReader(const QStringList& wanted, TableSink& sink) : wanted_(wanted), sink_(sink) {}
    void Take(QByteArrayView bytes);
    bool IsDone() const { return state_ == State::Done; }

private:
    enum class State : std::uint8_t { Start, BetweenTables, InTable, Done };
    void TakeFrame(Frame kind, QByteArrayView payload);
    void TakeTables(QByteArrayView payload);
    void TakeBegin(QByteArrayView payload);
    void TakeRow(QByteArrayView payload);

    QStringList wanted_;  // without those that have begun
    TableSink& sink_;
    State state_ = State::Start;
    QByteArray buffer_;
    std::vector<Column> columns_;
    std::vector<Value> row_;
    std::uint32_t rows_ = 0;
};

}  // namespace rillbook::access
