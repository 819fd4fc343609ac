#include "help/Sitemap.h"

#include <QRegularExpression>
#include <QTextDocumentFragment>
#include <algorithm>

namespace rillbook {

namespace {

constexpr int kDeepest = 20;

// Past the tag's ">", which may stand within quotes; -1 where it never closes.
qsizetype EndOfTag(const QString& text, qsizetype begin) {
    QChar quote;
    for (qsizetype i = begin + 1; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (!quote.isNull()) {
            quote = c == quote ? QChar() : quote;
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u'>') {
            return i + 1;
        }
    }
    return -1;
}

QString PlainText(const QString& value) {
    if (!value.contains(u'&')) {
        return value.trimmed();
    }
    QString markup = value;
    markup.replace(u'<', QStringLiteral("&lt;"));
    return QTextDocumentFragment::fromHtml(markup).toPlainText().trimmed();
}

QString Attribute(const QString& tag, const QString& name) {
    static const QRegularExpression pattern(
        QStringLiteral(R"re((\w+)\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s"'>]+)))re"));
    for (auto found = pattern.globalMatch(tag); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        if (match.captured(1).compare(name, Qt::CaseInsensitive) == 0) {
            return PlainText(match.captured(2) + match.captured(3) + match.captured(4));
        }
    }
    return {};
}

// "ul" of "<UL class=x>", "/ul" of "</UL>".
QString NameOf(const QString& tag) {
    static const QRegularExpression end(QStringLiteral("[\\s>]"));
    return tag.mid(1, tag.indexOf(end, 1) - 1).toLower();
}

class Reader {
public:
    void Take(const QString& tag) {
        const QString name = NameOf(tag);
        if (name == u"ul") {
            ++lists_;
        } else if (name == u"/ul") {
            lists_ = std::max(lists_ - 1, 0);
        } else if (name == u"object") {
            entry_ = {};
            title_.clear();
        } else if (name == u"param") {
            TakeParam(Attribute(tag, QStringLiteral("name")).toLower(),
                      Attribute(tag, QStringLiteral("value")));
        } else if (name == u"/object" && !entry_.name.isEmpty()) {
            const int allowed = entries.isEmpty() ? 0 : entries.last().depth + 1;
            entry_.depth = std::clamp(lists_ - 1, 0, std::min(allowed, kDeepest));
            entries.append(entry_);
            entry_ = {};
        }
    }

    QList<SitemapEntry> entries;

private:
    // The first name is the entry's own, a later one the title of the topic that follows it.
    void TakeParam(const QString& name, const QString& value) {
        if (name == u"name") {
            (entry_.name.isEmpty() ? entry_.name : title_) = value;
        } else if (name == u"local" && !value.isEmpty()) {
            entry_.topics.append({title_.isEmpty() ? entry_.name : title_, value});
            title_.clear();
        }
    }

    int lists_ = 0;
    SitemapEntry entry_;
    QString title_;
};

}  // namespace

QList<SitemapEntry> ParseSitemap(const QString& text) {
    Reader reader;
    for (qsizetype begin = text.indexOf(u'<'); begin >= 0;) {
        const qsizetype end = EndOfTag(text, begin);
        if (end < 0) {
            break;
        }
        reader.Take(text.mid(begin, end - begin));
        begin = text.indexOf(u'<', end);
    }
    return reader.entries;
}

}  // namespace rillbook
