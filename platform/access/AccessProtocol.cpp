#include "platform/access/AccessProtocol.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace rillbook::access {

namespace {

using Cause = ReadError::Cause;

constexpr qsizetype kHeadSize = 1 + sizeof(std::uint32_t);
constexpr qsizetype kFlushedFrom = 1 << 16;

QString SentenceOf(Cause cause) {
    switch (cause) {
        case Cause::Missing:
            return QStringLiteral("The file isn't there or can't be read.");
        case Cause::Foreign:
            return QStringLiteral("The file is no Access database.");
        case Cause::Later:
            return QStringLiteral(
                "The file is of a later kind of Access (\".accdb\"), which can't be read.");
        case Cause::Protected:
            return QStringLiteral("The file is protected by a password.");
        case Cause::Encrypted:
            return QStringLiteral("The file is encrypted.");
        case Cause::InUse:
            return QStringLiteral("Another program has the file open.");
        case Cause::Damaged:
            return QStringLiteral("The file is damaged.");
        case Cause::TooMuch:
            return QStringLiteral(
                "Reading the file takes more time, memory or room than any station's.");
        case Cause::NoHelper:
            break;
    }
    return QStringLiteral(
        "The program's part that reads Access files, rillbook-access, is missing or doesn't "
        "start.");
}

// Reads a payload from its begin; what runs over its end is damage.
class Payload {
public:
    explicit Payload(QByteArrayView bytes) : bytes_(bytes) {}
    bool AtEnd() const { return bytes_.isEmpty(); }

    QByteArrayView Bytes(qsizetype count) {
        if (count > bytes_.size()) {
            Raise(Cause::Damaged);
        }
        const QByteArrayView taken = bytes_.first(count);
        bytes_ = bytes_.sliced(count);
        return taken;
    }

    template <typename Number>
    Number Take() {
        Number number;
        std::memcpy(&number, Bytes(sizeof number).data(), sizeof number);
        return number;
    }

    QString Text() {
        const QByteArrayView text = Bytes(Take<std::uint32_t>());
        if (!text.isValidUtf8()) {
            Raise(Cause::Damaged);
        }
        return QString::fromUtf8(text);
    }

private:
    QByteArrayView bytes_;
};

bool Fits(Value::Kind kind, Column::Type type) {
    switch (kind) {
        case Value::Kind::Null:
            return true;
        case Value::Kind::Number:
            return type == Column::Type::Number || type == Column::Type::DateTime;
        case Value::Kind::Text:
            return type == Column::Type::Text;
    }
    return false;
}

}  // namespace

void Raise(Cause cause) {
    throw ReadError(cause, SentenceOf(cause));
}

void FrameWriter::Tables(const QStringList& names) {
    Start(Frame::Tables);
    for (const QString& name : names) {
        Append(name);
    }
    Finish();
}

void FrameWriter::Begin(const QString& name, const std::vector<Column>& columns) {
    Start(Frame::Begin);
    Append(name);
    for (const Column& column : columns) {
        Append(&column.type, sizeof column.type);
        Append(column.name);
    }
    Finish();
}

void FrameWriter::Row(const std::vector<Value>& row) {
    Start(Frame::Row);
    for (const Value& value : row) {
        Append(&value.kind, sizeof value.kind);
        if (value.kind == Value::Kind::Number) {
            Append(&value.number, sizeof value.number);
        } else if (value.kind == Value::Kind::Text) {
            Append(value.text);
        }
    }
    Finish();
}

void FrameWriter::End(std::uint32_t rows) {
    Start(Frame::End);
    Append(&rows, sizeof rows);
    Finish();
}

void FrameWriter::Fault(Cause cause) {
    buffer_.truncate(frame_);
    Start(Frame::Fault);
    Append(&cause, sizeof cause);
    Finish();
    Flush();
}

void FrameWriter::Done() {
    Start(Frame::Done);
    Finish();
    Flush();
}

void FrameWriter::Start(Frame kind) {
    frame_ = buffer_.size();
    buffer_.append(static_cast<char>(kind));
    buffer_.append(sizeof(std::uint32_t), '\0');
}

void FrameWriter::Finish() {
    const qsizetype size = buffer_.size() - frame_ - kHeadSize;
    if (size > kLongestFrame) {
        Raise(Cause::TooMuch);
    }
    const auto length = static_cast<std::uint32_t>(size);
    std::memcpy(buffer_.data() + frame_ + 1, &length, sizeof length);
    frame_ = buffer_.size();
    if (buffer_.size() >= kFlushedFrom) {
        Flush();
    }
}

void FrameWriter::Append(const void* bytes, std::size_t count) {
    buffer_.append(static_cast<const char*>(bytes), static_cast<qsizetype>(count));
}

void FrameWriter::Append(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    const auto length = static_cast<std::uint32_t>(bytes.size());
    Append(&length, sizeof length);
    buffer_.append(bytes);
}

void FrameWriter::Flush() {
    const char* begin = buffer_.constData();
    auto left = static_cast<std::size_t>(buffer_.size());
    while (left > 0) {
        const ssize_t written = ::write(descriptor_, begin, left);
        if (written < 0 && errno != EINTR) {
            _exit(1);  // nobody listens
        }
        if (written > 0) {
            begin += written;
            left -= static_cast<std::size_t>(written);
        }
    }
    buffer_.truncate(0);
    frame_ = 0;
}

void FrameReader::Take(QByteArrayView bytes) {
    buffer_.append(bytes);
    QByteArrayView left = buffer_;
    while (left.size() >= kHeadSize) {
        Payload head(left.first(kHeadSize));
        const auto kind = Frame{head.Take<char>()};
        const auto length = head.Take<std::uint32_t>();
        if (length > kLongestFrame || IsDone()) {
            Raise(Cause::Damaged);
        }
        if (left.size() < kHeadSize + qsizetype{length}) {
            break;
        }
        TakeFrame(kind, left.sliced(kHeadSize, length));
        left = left.sliced(kHeadSize + qsizetype{length});
    }
    buffer_.remove(0, buffer_.size() - left.size());
}

void FrameReader::TakeFrame(Frame kind, QByteArrayView payload) {
    if (kind == Frame::Fault) {
        const auto cause = Payload(payload).Take<std::uint8_t>();
        const bool isKnown = cause <= static_cast<std::uint8_t>(Cause::NoHelper);
        Raise(isKnown ? Cause{cause} : Cause::Damaged);
    }
    if (kind == Frame::Tables && state_ == State::Start) {
        TakeTables(payload);
    } else if (kind == Frame::Begin && state_ == State::BetweenTables) {
        TakeBegin(payload);
    } else if (kind == Frame::Row && state_ == State::InTable) {
        TakeRow(payload);
    } else if (kind == Frame::End && state_ == State::InTable &&
               Payload(payload).Take<std::uint32_t>() == rows_) {
        state_ = State::BetweenTables;
        sink_.EndTable();
    } else if (kind == Frame::Done && state_ == State::BetweenTables) {
        state_ = State::Done;
    } else {
        Raise(Cause::Damaged);
    }
}

void FrameReader::TakeTables(QByteArrayView payload) {
    QStringList names;
    for (Payload rest(payload); !rest.AtEnd();) {
        names.append(rest.Text());
    }
    state_ = State::BetweenTables;
    sink_.TakeTableNames(names);
}

void FrameReader::TakeBegin(QByteArrayView payload) {
    Payload rest(payload);
    const QString name = rest.Text();
    const auto found = std::find_if(wanted_.begin(), wanted_.end(), [&name](const QString& text) {
        return text.compare(name, Qt::CaseInsensitive) == 0;
    });
    if (found == wanted_.end()) {
        Raise(Cause::Damaged);
    }
    wanted_.erase(found);
    columns_.clear();
    while (!rest.AtEnd()) {
        const auto type = rest.Take<std::uint8_t>();
        if (type > static_cast<std::uint8_t>(Column::Type::Other)) {
            Raise(Cause::Damaged);
        }
        columns_.push_back({.name = rest.Text(), .type = Column::Type{type}});
    }
    state_ = State::InTable;
    rows_ = 0;
    sink_.BeginTable(name, columns_);
}

void FrameReader::TakeRow(QByteArrayView payload) {
    Payload rest(payload);
    row_.clear();
    for (const Column& column : columns_) {
        const Value::Kind kind{rest.Take<std::uint8_t>()};
        if (!Fits(kind, column.type)) {
            Raise(Cause::Damaged);
        }
        Value& value = row_.emplace_back();
        value.kind = kind;
        if (kind == Value::Kind::Number) {
            value.number = rest.Take<double>();
        } else if (kind == Value::Kind::Text) {
            value.text = rest.Text();
        }
    }
    if (!rest.AtEnd()) {
        Raise(Cause::Damaged);
    }
    ++rows_;
    sink_.TakeRow(row_);
}

}  // namespace rillbook::access
