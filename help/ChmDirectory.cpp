#include "help/ChmDirectory.h"

#include <QFile>
#include <QtEndian>
#include <bit>

namespace rillbook {

namespace {

constexpr quint64 kFileHeaderLength = 0x60;
constexpr quint64 kDirectoryHeaderLength = 0x54;
constexpr quint64 kLongestDirectory = 64 * 1024 * 1024;
constexpr quint64 kLongestPath = 512;  // that the library takes
constexpr quint64 kBlockLength = 0x8000;
constexpr quint64 kLongestWindow = 0x200000;

void Require(bool holds, const char* what) {
    if (!holds) {
        throw HelpFileError(what);
    }
}

// The little-endian numbers of a part of the file.
class Part {
public:
    Part(QFile& file, quint64 start, quint64 length) {
        const auto size = static_cast<quint64>(file.size());
        Require(start <= size && length <= size - start, "beyond the end of the file");
        Require(file.seek(static_cast<qint64>(start)), "no such place");
        bytes_ = file.read(static_cast<qint64>(length));
        Require(static_cast<quint64>(bytes_.size()) == length, "can't be read");
    }

    bool Begins(const char* mark) const { return bytes_.startsWith(mark); }
    quint32 Number(qsizetype at) const { return Little<quint32>(at); }
    quint64 LongNumber(qsizetype at) const { return Little<quint64>(at); }
    const QByteArray& Bytes() const { return bytes_; }

private:
    template <typename T>
    T Little(qsizetype at) const {
        Require(at + qsizetype{sizeof(T)} <= bytes_.size(), "a part is too short");
        return qFromLittleEndian<T>(bytes_.constData() + at);
    }

    QByteArray bytes_;
};

// What stands between the header of a directory page and its free space.
class Entries {
public:
    Entries(const Part& page, qsizetype headerLength) : bytes_(page.Bytes()), at_(headerLength) {
        const quint32 unused = page.Number(4);
        Require(unused <= bytes_.size() - headerLength, "a page with too much free space");
        end_ = bytes_.size() - static_cast<qsizetype>(unused);
    }

    bool AtEnd() const { return at_ == end_; }

    // Seven bits a byte, the highest first, the eighth bit set on all but the last.
    quint64 TakeNumber() {
        quint64 number = 0;
        for (int count = 0; count < 9; ++count) {
            Require(at_ < end_, "an entry beyond its page");
            const auto byte = static_cast<unsigned char>(bytes_.at(at_++));
            number = number << 7U | (byte & 0x7FU);
            if (byte < 0x80U) {
                return number;
            }
        }
        throw HelpFileError("a number without end");
    }

    QString TakePath() {
        const quint64 length = TakeNumber();
        Require(length <= kLongestPath && static_cast<qsizetype>(length) <= end_ - at_,
                "a path that is too long");
        const QByteArray path = bytes_.mid(at_, static_cast<qsizetype>(length));
        at_ += path.size();
        return QString::fromUtf8(path);
    }

private:
    const QByteArray& bytes_;
    qsizetype at_;
    qsizetype end_ = 0;
};

void AppendObjects(const Part& page, std::vector<ChmObject>& objects) {
    Entries entries(page, 0x14);
    while (!entries.AtEnd()) {
        ChmObject object{.path = entries.TakePath()};
        const quint64 section = entries.TakeNumber();
        Require(section <= 1, "a section that isn't known");
        object.isCompressed = section == 1;
        object.start = entries.TakeNumber();
        object.length = entries.TakeNumber();
        objects.push_back(std::move(object));
    }
}

std::vector<quint64> PagesBelow(const Part& page) {
    std::vector<quint64> pages;
    Entries entries(page, 8);
    while (!entries.AtEnd()) {
        entries.TakePath();
        pages.push_back(entries.TakeNumber());
    }
    return pages;
}

// Each page of the index leads to others; no page may be reached twice.
void CheckIndex(const std::vector<std::vector<quint64>>& below, quint64 root) {
    std::vector<bool> seen(below.size(), false);
    std::vector<quint64> open{root};
    while (!open.empty()) {
        const quint64 page = open.back();
        open.pop_back();
        Require(page < below.size() && !seen[page], "an index that isn't a tree");
        seen[page] = true;
        open.insert(open.end(), below[page].begin(), below[page].end());
    }
}

bool EndsWithin(const ChmObject& object, quint64 size) {
    return object.start <= size && object.length <= size - object.start;
}

void CheckControlData(const Part& data) {
    const quint64 scale = data.Number(8) == 2 ? kBlockLength : 1;
    const quint64 resetInterval = data.Number(0xC) * scale;
    const quint64 window = data.Number(0x10) * scale;
    Require(std::has_single_bit(window) && window >= kBlockLength && window <= kLongestWindow,
            "a window size that isn't known");
    const quint64 resets = resetInterval / (window / 2) * data.Number(0x14);
    Require(resets > 0 && resets <= 0xFFFF, "an interval between resets that isn't known");
}

// Where each block begins in the compressed bytes. The library has room for a block that grew a
// little as it was compressed, and copies whatever length the table gives. Returns how many bytes
// the blocks unpack to.
quint64 CheckResetTable(const Part& table) {
    constexpr quint64 kGrowth = 6144;
    Require(table.LongNumber(0x20) == kBlockLength, "a block length that isn't known");
    const quint64 count = table.Number(4);
    const quint64 first = table.Number(0xC);
    const auto size = static_cast<quint64>(table.Bytes().size());
    Require(first <= size && count <= (size - first) / 8, "blocks beyond their table");
    for (quint64 i = 0; i < count; ++i) {
        const auto at = static_cast<qsizetype>(first + i * 8);
        const quint64 begin = table.LongNumber(at);
        const quint64 end = table.LongNumber(i + 1 < count ? at + 8 : 0x18);
        Require(begin <= end && end - begin <= kBlockLength + kGrowth, "a block out of its place");
    }
    return count * kBlockLength;
}

// The places of what isn't compressed, and how the rest is.
void CheckObjects(QFile& file, quint64 dataOffset, const std::vector<ChmObject>& objects) {
    const auto size = static_cast<quint64>(file.size());
    Require(dataOffset <= size, "data beyond the end of the file");
    quint64 unpackedSize = 0;
    for (const ChmObject& object : objects) {
        if (object.isCompressed) {
            continue;
        }
        Require(EndsWithin(object, size - dataOffset), "an object beyond the end of the file");
        if (object.path.endsWith(u"/ControlData", Qt::CaseInsensitive)) {
            CheckControlData(Part(file, dataOffset + object.start, object.length));
        } else if (object.path.endsWith(u"/ResetTable", Qt::CaseInsensitive)) {
            unpackedSize = CheckResetTable(Part(file, dataOffset + object.start, object.length));
        }
    }
    for (const ChmObject& object : objects) {
        Require(!object.isCompressed || EndsWithin(object, unpackedSize),
                "an object beyond what is compressed");
    }
}

}  // namespace

std::vector<ChmObject> ReadChmDirectory(QFile& file) {
    const Part head(file, 0, kFileHeaderLength);
    Require(head.Begins("ITSF"), "not a compiled help file");
    const quint64 offset = head.LongNumber(0x48);
    const quint64 length = head.LongNumber(0x50);
    const bool saysDataOffset = head.Number(4) >= 3;
    const quint64 dataOffset = saysDataOffset ? head.LongNumber(0x58) : offset + length;

    const Part directory(file, offset, kDirectoryHeaderLength);
    Require(directory.Begins("ITSP"), "no directory");
    const quint64 pageLength = directory.Number(0x10);
    const quint64 pageCount = directory.Number(0x2C);
    Require(pageLength >= 0x20 && pageLength <= kLongestDirectory && pageCount > 0 &&
                pageCount <= kLongestDirectory / pageLength,
            "a directory that is too large");
    std::vector<ChmObject> objects;
    std::vector<std::vector<quint64>> below(pageCount);
    for (quint64 i = 0; i < pageCount; ++i) {
        const Part page(file, offset + kDirectoryHeaderLength + i * pageLength, pageLength);
        if (page.Begins("PMGL")) {
            AppendObjects(page, objects);
        } else {
            Require(page.Begins("PMGI"), "a directory page that isn't known");
            below[i] = PagesBelow(page);
        }
    }
    constexpr quint32 kNone = 0xFFFFFFFF;
    const quint32 root = directory.Number(0x1C);
    CheckIndex(below, root == kNone ? directory.Number(0x20) : root);
    CheckObjects(file, dataOffset, objects);
    return objects;
}

}  // namespace rillbook
