#pragma once

#include <QString>
#include <cstddef>
#include <string_view>
#include <vector>

class QIODevice;

namespace rillbook {

// The lines of a logger file, one at a time, as bytes. LF, CR and CRLF each end a line; the
// terminator of the last line yields no further line. A UTF-8 byte order mark at the start is not
// part of the first line.
//
// Memory is bounded whatever the file holds: of a line longer than `keep` bytes only those are
// kept. A tail of blanks is dropped. Any other tail is stood for by one byte behind the kept ones:
// NUL where the tail holds a NUL, else a question mark, which makes neither a date nor a number, so
// that no part of a value is ever taken for the whole.
class LineReader {
public:
    // The device is open for reading, best unbuffered, and outlives the reader.
    explicit LineReader(QIODevice& device, std::size_t keep = 1024 * 1024);

    // The next line without its terminator, good until the next call; false at the end of the file
    // and where it can't be read on. A line that a failure cuts off isn't given.
    bool ReadLine(std::string_view& line);

    // The device failed before the end of the file.
    bool Failed() const { return failed_; }

private:
    enum class Tail { Blank, Text, Binary };

    void SkipByteOrderMark();
    bool Fill();
    bool ReadOverlongLine(std::string_view& line);
    Tail Inspect(std::size_t from, std::size_t to, Tail tail) const;
    std::size_t Find(char byte, std::size_t from) const;
    std::size_t FindTerminator();
    void StepOver(std::size_t terminator);

    QIODevice& device_;
    const std::size_t keep_;
    std::vector<char> buffer_;
    std::vector<char> overlong_;
    std::size_t begin_ = 0;   // of the line being read
    std::size_t end_ = 0;     // of the bytes read so far
    std::size_t nextLf_ = 0;  // the first at or behind begin_, or end_; stale while below begin_
    std::size_t nextCr_ = 0;
    bool started_ = false;
    bool afterCr_ = false;  // an LF at begin_ belongs to the terminator before it
    bool failed_ = false;
};

}  // namespace rillbook
