#include "store/ProjectFile.h"

#include <QFile>
#include <algorithm>
#include <cmath>
#include <optional>

#include "app/Application.h"
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
    // An item that the file's end cuts off, or that something else follows, is none.
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

// The first thing that is missing or unreadable; empty where nothing is.
QString ReadItems(ItemReader items, ProjectContents& contents) {
    if (!items.Skip() || !items.Skip()) {
        return QStringLiteral("its first line");
    }
    const std::optional<std::int64_t> count = items.WholeNumber();
    if (!count) {
        return QStringLiteral("the number of stations");
    }
    for (std::int64_t i = 1; i <= *count; ++i) {
        const std::optional<QString> path = items.Text();
        const std::optional<QString> title = path ? items.Text() : std::nullopt;
        if (!title) {
            return QStringLiteral("station %1 of %2").arg(i).arg(*count);
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

void Replace(const QString& path, const QByteArray& bytes) {
    const QString reason = ReplaceFile(path, bytes);
    if (!reason.isEmpty()) {
        throw FileError(path, reason);
    }
}

}  // namespace

void WriteProjectFile(const QString& path, const ProjectContents& contents) {
    const QString lineEnd = QStringLiteral("\r\n");
    QString text = Quoted(Application::Title()) + QLatin1Char(',') +
                   Quoted(Application::VersionDigits()) + lineEnd +
                   QString::number(contents.stations.size()) + lineEnd;
    for (const ProjectStation& station : contents.stations) {
        text += Quoted(station.path) + QLatin1Char(',') + Quoted(station.title) + lineEnd;
    }
    text += DateItem(contents.reportBeginDate) + QLatin1Char(',') +
            Quoted(contents.reportPeriodCode) + lineEnd + Quoted(contents.name) + lineEnd;

    Replace(path, EncodeText(text));
}

ProjectReading ReadProjectFile(const QString& path, const ProjectContents& defaults) {
    ProjectReading reading{.contents = defaults, .fault = {}};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        reading.fault = file.errorString();
        return reading;
    }
    const QString text = DecodeText(file.readAll());
    if (file.error() != QFileDevice::NoError) {
        reading.fault = file.errorString();
        return reading;
    }
    const QString missing = ReadItems(ItemReader(text), reading.contents);
    if (!missing.isEmpty()) {
        reading.fault = QStringLiteral("It could not be read from %1 on.").arg(missing);
    }
    return reading;
}

void KeepOldProjectFile(const QString& path) {
    const QString kept = path + QStringLiteral(".bak");
    QFile old(path);
    if (!old.exists()) {
        return;
    }
    if (!old.open(QIODevice::ReadOnly)) {
        throw FileError(path, old.errorString());
    }
    const QByteArray bytes = old.readAll();
    if (old.error() != QFileDevice::NoError) {
        throw FileError(path, old.errorString());
    }
    Replace(kept, bytes);
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
