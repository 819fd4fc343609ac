#include "import/LineReader.h"

#include <QIODevice>
#include <algorithm>
#include <cstring>

namespace rillbook {

namespace {

constexpr std::size_t chunk = 256 * 1024;

}  // namespace

LineReader::LineReader(QIODevice& device, std::size_t keep)
    : device_(device), keep_(keep), buffer_(chunk) {}

bool LineReader::ReadLine(std::string_view& line) {
    if (!started_) {
        SkipByteOrderMark();
    }
    if (afterCr_ && (begin_ < end_ || Fill())) {
        afterCr_ = false;
        begin_ += buffer_[begin_] == '\n' ? 1U : 0U;
    }
    std::size_t terminator = FindTerminator();
    while (terminator == end_) {
        if (end_ - begin_ > keep_) {
            return ReadOverlongLine(line);
        }
        if (!Fill()) {
            line = {buffer_.data() + begin_, end_ - begin_};
            begin_ = end_;
            return !failed_ && !line.empty();
        }
        terminator = FindTerminator();
    }
    if (terminator - begin_ > keep_) {
        return ReadOverlongLine(line);
    }
    line = {buffer_.data() + begin_, terminator - begin_};
    StepOver(terminator);
    return true;
}

void LineReader::SkipByteOrderMark() {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    started_ = true;
    while (end_ < mark.size() && Fill()) {
    }
    if (std::string_view(buffer_.data(), end_).substr(0, mark.size()) == mark) {
        begin_ = mark.size();
    }
}

// Moves the unfinished line to the front and reads on behind it.
bool LineReader::Fill() {
    FindTerminator();
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    nextLf_ -= begin_;
    nextCr_ -= begin_;
    end_ -= begin_;
    begin_ = 0;
    if (buffer_.size() < end_ + chunk) {
        buffer_.resize(end_ + chunk);
    }
    const qint64 got =
        failed_ ? -1 : device_.read(buffer_.data() + end_, static_cast<qint64>(chunk));
    failed_ = got < 0;
    if (got <= 0) {
        return false;
    }
    const std::size_t added = end_;
    end_ += static_cast<std::size_t>(got);
    nextLf_ = nextLf_ == added ? Find('\n', added) : nextLf_;
    nextCr_ = nextCr_ == added ? Find('\r', added) : nextCr_;
    return true;
}

// Keeps the line's first bytes apart, and reads on to its terminator, however far that is.
bool LineReader::ReadOverlongLine(std::string_view& line) {
    const char* start = buffer_.data() + begin_;
    overlong_.assign(start, start + keep_);
    std::size_t terminator = FindTerminator();
    Tail tail = Inspect(begin_ + keep_, terminator, Tail::Blank);
    while (terminator == end_) {
        begin_ = end_;
        if (!Fill()) {
            break;
        }
        terminator = FindTerminator();
        tail = Inspect(begin_, terminator, tail);
    }
    if (tail != Tail::Blank) {
        overlong_.push_back(tail == Tail::Binary ? '\0' : '?');
    }
    line = {overlong_.data(), overlong_.size()};
    StepOver(terminator);
    return !failed_;
}

LineReader::Tail LineReader::Inspect(std::size_t from, std::size_t to, Tail tail) const {
    const std::string_view bytes(buffer_.data() + from, to - from);
    if (tail == Tail::Binary || bytes.find('\0') != std::string_view::npos) {
        return Tail::Binary;
    }
    return bytes.find_first_not_of(" \t") == std::string_view::npos ? tail : Tail::Text;
}

// Where the byte stands next, or the end of what has been read.
std::size_t LineReader::Find(char byte, std::size_t from) const {
    const void* found = std::memchr(buffer_.data() + from, byte, end_ - from);
    return found == nullptr
               ? end_
               : static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data());
}

// Each byte is looked at once for each of the two signs, even where a file has only one of them.
std::size_t LineReader::FindTerminator() {
    if (nextLf_ < begin_) {
        nextLf_ = Find('\n', begin_);
    }
    if (nextCr_ < begin_) {
        nextCr_ = Find('\r', begin_);
    }
    return std::min(nextLf_, nextCr_);
}

void LineReader::StepOver(std::size_t terminator) {
    afterCr_ = terminator < end_ && buffer_[terminator] == '\r';
    begin_ = terminator < end_ ? terminator + 1 : end_;
}

}  // namespace rillbook
