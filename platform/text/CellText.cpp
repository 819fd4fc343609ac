#include "platform/text/CellText.h"

#include <QRegularExpression>
#include <algorithm>
#include <optional>

namespace rillbook {

namespace {

constexpr QStringView kQuote = u"\"";

bool IsSeparator(QChar character) {
    return character == u'\t' || character == u'\r' || character == u'\n';
}

// Takes a quoted cell from the start of the text; nothing if there is none.
std::optional<QString> TakeQuoted(QStringView& text) {
    if (!text.startsWith(kQuote)) {
        return std::nullopt;
    }
    qsizetype end = text.indexOf(kQuote, 1);
    while (end >= 0 && text.sliced(end + 1).startsWith(kQuote)) {
        end = text.indexOf(kQuote, end + 2);
    }
    if (end < 0 || (end + 1 < text.size() && !IsSeparator(text[end + 1]))) {
        return std::nullopt;
    }
    static const QRegularExpression reasonForQuotes(QStringLiteral("[\t\r\n\"]"));
    QString cell = text.sliced(1, end - 1).toString();
    if (!cell.contains(reasonForQuotes)) {
        return std::nullopt;
    }
    text = text.sliced(end + 1);
    return cell.replace(QStringLiteral("\"\""), kQuote.toString());
}

QString TakeBare(QStringView& text) {
    qsizetype end = 0;
    while (end < text.size() && !IsSeparator(text[end])) {
        ++end;
    }
    const QString cell = text.left(end).toString();
    text = text.sliced(end);
    return cell;
}

}  // namespace

QString OneLine(const QString& text) {
    static const QRegularExpression breaks(QStringLiteral("[\\t\\v]+"));
    static const QRegularExpression breaksAtEnd(QStringLiteral("[\\t\\v]+\\z"));
    if (!text.contains(breaks)) {
        return text;
    }
    return QString(text).remove(breaksAtEnd).replace(breaks, QStringLiteral(" "));
}

QString EmptyIfBlank(const QString& text) {
    return QStringView(text).trimmed().isEmpty() ? QString() : text;
}

QList<QStringList> SplitCells(QStringView text) {
    QList<QStringList> rows;
    bool rowEnded = true;
    while (!text.isEmpty() || !rowEnded) {
        if (rowEnded) {
            rows.append(QStringList());
        }
        const std::optional<QString> quoted = TakeQuoted(text);
        rows.back().append(OneLine(quoted ? *quoted : TakeBare(text)));
        rowEnded = !text.startsWith(u'\t');
        text = text.sliced(text.startsWith(u"\r\n") ? 2 : std::min<qsizetype>(1, text.size()));
    }
    return rows;
}

}  // namespace rillbook
