#include "store/ProjectFile.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <optional>

#include "app/Application.h"
#include "platform/desktop/KeptFile.h"
#include "platform/desktop/ReplaceFile.h"
#include "platform/text/CodePage.h"
#include "platform/text/Numbers.h"
#include "store/FileError.h"

namespace rillbook {

QString ProjectPath;
DateTime ReportBeginDate = 0;
DateTime ReportEndDate = 0;
QString ReportPeriodCode;

namespace {

const QString kTwelveMonths = QStringLiteral("9312");
// In bytes. Far more than a project of thousands of stations; a larger file isn't read whole only
// to be refused.
constexpr qint64 kLargestProject = 16 << 20;
const QString kNoProject = QStringLiteral("This is not a project file.");

QString Quoted(const QString& text) {
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString DateItem(DateTime moment) {
    const CalendarDate date = DateParts(moment);
    const ClockTime time = TimeParts(moment);
    QString text = QString::asprintf("#%04d-%02d-%02d", date.year, date.month, date.day);
    if (time != ClockTime{}) {
        text += QString::asprintf(" %02d:%02d:%02d", time.hour, time.minute, time.second);
    }
    return text + QLatin1Char('#');
}

// Items of a file of texts, numbers and dates, separated by commas and line ends.
class ItemReader {
public:
    explicit ItemReader(const QString& text) : text_(text) {}

    std::optional<QString> Text() { return Between(u'"'); }

    std::optional<DateTime> Date() {
        const std::optional<QString> text = Between(u'#');
        return text ? ReadLoggerDateTime(*text) : std::nullopt;
    }

    // Passes over an item of any kind.
    bool Skip() {
        SkipBlanks();
        if (at_ < text_.size() && (text_[at_] == u'"' || text_[at_] == u'#')) {
            return Between(text_[at_].unicode()).has_value();
        }
        const qsizetype begin = at_;
        while (at_ < text_.size() && text_[at_] != u',' && !IsLineEnd(text_[at_])) {
            ++at_;
        }
        return at_ > begin && EndItem();
    }

    // Whether this character, or nothing, comes next.
    bool Precedes(char16_t mark) {
        SkipBlanks();
        return at_ == text_.size() || text_[at_] == mark;
    }

    std::optional<std::int64_t> WholeNumber() {
        SkipBlanks();
        const qsizetype begin = at_;
        while (at_ < text_.size() && text_[at_] >= u'0' && text_[at_] <= u'9') {
            ++at_;
        }
        bool isNumber = false;
        const std::int64_t number = text_.sliced(begin, at_ - begin).toLongLong(&isNumber);
        return isNumber && EndItem() ? std::optional(number) : std::nullopt;
    }

private:
    // Nothing if the file ends inside the item, or if something else follows it on its line.
    std::optional<QString> Between(char16_t mark) {
        SkipBlanks();
        if (at_ >= text_.size() || text_[at_] != mark) {
            return std::nullopt;
        }
        const qsizetype begin = at_ + 1;
        const qsizetype end = text_.indexOf(mark, begin);
        if (end < 0) {
            return std::nullopt;
        }
        at_ = end + 1;
        return EndItem() ? std::optional(text_.sliced(begin, end - begin)) : std::nullopt;
    }

    void SkipBlanks() {
        while (at_ < text_.size() && text_[at_].isSpace()) {
            ++at_;
        }
    }

    bool EndItem() {
        while (at_ < text_.size() && (text_[at_] == u' ' || text_[at_] == u'\t')) {
            ++at_;
        }
        if (at_ == text_.size() || IsLineEnd(text_[at_])) {
            return true;
        }
        return text_[at_++] == u',';
    }

    static bool IsLineEnd(QChar character) { return character == u'\r' || character == u'\n'; }

    const QString& text_;
    qsizetype at_ = 0;
};

// The number of stations; nothing if the file doesn't begin as a project does. Pictures in text
// formats begin with two items and a number too, but what follows is neither a station nor a date.
std::optional<std::int64_t> ReadBeginning(ItemReader& items) {
    const bool hasTitleAndVersion = items.Skip() && items.Skip();
    const std::optional<std::int64_t> count =
        hasTitleAndVersion ? items.WholeNumber() : std::nullopt;
    return count && items.Precedes(*count > 0 ? u'"' : u'#') ? count : std::nullopt;
}

// Returns the first thing that is missing or unreadable; empty if there is none.
QString ReadItems(ItemReader& items, std::int64_t count, ProjectContents& contents) {
    for (std::int64_t i = 1; i <= count; ++i) {
        const std::optional<QString> path = items.Text();
        const std::optional<QString> title = path ? items.Text() : std::nullopt;
        if (!title) {
            return QStringLiteral("station %1 of %2").arg(i).arg(count);
        }
        contents.stations.push_back({*path, *title});
    }
    const std::optional<DateTime> begin = items.Date();
    const std::optional<QString> code = begin ? items.Text() : std::nullopt;
    if (!code) {
        return QStringLiteral("the report period");
    }
    contents.reportBeginDate = *begin;
    contents.reportPeriodCode = *code;
    const std::optional<QString> name = items.Text();
    if (!name) {
        return QStringLiteral("the project's name");
    }
    contents.name = *name;
    return {};
}

KeptFile KeepAsBackup(const QString& path) {
    return KeepUnderName(path, [&path](int number) {
        return path + QStringLiteral(".bak") + (number == 1 ? QString() : QString::number(number));
    });
}

}  // namespace

void WriteProjectFile(const QString& path, const ProjectContents& contents, OldProject old) {
    const QString lineEnd = QStringLiteral("\r\n");
    QString text = Quoted(Application::Title()) + QLatin1Char(',') +
                   Quoted(Application::VersionDigits()) + lineEnd +
                   QString::number(contents.stations.size()) + lineEnd;
    for (const ProjectStation& station : contents.stations) {
        text += Quoted(station.path) + QLatin1Char(',') + Quoted(station.title) + lineEnd;
    }
    text += DateItem(contents.reportBeginDate) + QLatin1Char(',') +
            Quoted(contents.reportPeriodCode) + lineEnd + Quoted(contents.name) + lineEnd;

    const bool isKept = old == OldProject::Keep && QFile::exists(path);
    const KeptFile kept = isKept ? KeepAsBackup(path) : KeptFile();
    const QString reason =
        kept.reason.isEmpty() ? ReplaceFile(path, EncodeText(text)) : kept.reason;
    if (!reason.isEmpty()) {
        // A second name of the file that stays would not protect its contents.
        if (kept.isNew && kept.reason.isEmpty()) {
            QFile::remove(kept.path);
        }
        throw FileError(path, reason);
    }
}

ProjectReading ReadProjectFile(const QString& path) {
    const QFileInfo info(path);
    ProjectReading reading{.contents = {.stations = {},
                                        .reportBeginDate = ReportBeginDate,
                                        .reportPeriodCode = ReportPeriodCode,
                                        // A double quote would end the name's item.
                                        .name = info.completeBaseName().remove(u'"')},
                           .isProject = false,
                           .fault = kNoProject};
    // Reading a pipe might never end.
    if (info.exists() && (!info.isFile() || info.size() > kLargestProject)) {
        return reading;
    }
    QFile file(path);
    const bool isOpen = file.open(QIODevice::ReadOnly);
    const QString text = isOpen ? DecodeText(file.readAll()) : QString();
    if (file.error() != QFileDevice::NoError) {
        reading.fault = file.errorString();
        return reading;
    }
    ItemReader items(text);
    const std::optional<std::int64_t> count = ReadBeginning(items);
    if (!count) {
        return reading;
    }
    reading.isProject = true;
    const QString missing = ReadItems(items, *count, reading.contents);
    reading.fault =
        missing.isEmpty() ? QString() : QStringLiteral("Could not read past %1.").arg(missing);
    return reading;
}

DateTime PeriodEnd(DateTime begin, int unit, double count) {
    // Ten thousand years of days: more has no meaning, and carries no further.
    const double limit = 3652500;
    const auto n = static_cast<std::int64_t>(std::clamp(count, -limit, limit));
    const auto [year, month, day] = DateParts(begin);
    switch (unit) {
        case 1:
            return DateSerial(year, month, day + n - 1);
        case 2:
            return DateSerial(year, month, day + 7 * n - 1);
        case 3:
            return DateSerial(year, month + n, day - 1);
        default:
            return DateSerial(year + n, month, day) - 1;
    }
}

QString ReportEndFromPeriod(DateTime begin, const QString& code) {
    QString used = code;
    const bool known = used.size() >= 2 && used[0] == u'9' && used[1] >= u'1' && used[1] <= u'4';
    if (!known) {
        ReportPeriodCode = kTwelveMonths;
        used = kTwelveMonths;
    }
    const double count = std::floor(ReadLeadingNumber(QStringView(used).sliced(2)));
    return MonthDayYearText(PeriodEnd(begin, used[1].digitValue(), count));
}

void ResetProjectFile() {
    ProjectPath.clear();
    ReportBeginDate = 0;
    ReportEndDate = 0;
    ReportPeriodCode.clear();
}

}  // namespace rillbook
