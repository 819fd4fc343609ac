#include "platform/ado/SqlTokens.h"

#include "platform/ado/AdoError.h"

namespace rillbook::ado {

namespace {

bool IsWordCharacter(QChar c) {
    return c.isLetterOrNumber() || c == u'_' || c == u'$';
}

// The mark that ends what `opening` begins; null where it begins nothing.
QChar ClosingMark(QChar opening) {
    switch (opening.unicode()) {
        case u'\'':
        case u'"':
        case u'`':
        case u'#':
            return opening;
        case u'[':
            return u']';
        default:
            return {};
    }
}

SqlToken::Kind KindOfMarked(QChar opening) {
    switch (opening.unicode()) {
        case u'\'':
            return SqlToken::Kind::Text;
        case u'#':
            return SqlToken::Kind::Moment;
        default:
            return SqlToken::Kind::Name;
    }
}

// Behind the closing mark. Two quotes in a row stand for one within quotes.
qsizetype EndOfMarked(QStringView statement, qsizetype begin, QChar closing) {
    const bool doubles = closing != u'#' && closing != u']';
    qsizetype at = begin + 1;
    for (;;) {
        at = statement.indexOf(closing, at);
        if (at < 0) {
            throw AdoError(
                adErrSyntax,
                QStringLiteral("A %1 is missing in: %2").arg(closing).arg(statement.mid(begin)));
        }
        ++at;
        if (!doubles || at >= statement.size() || statement[at] != closing) {
            return at;
        }
        ++at;
    }
}

// Behind a comment that begins here, else `begin`.
qsizetype EndOfComment(QStringView statement, qsizetype begin) {
    const QStringView rest = statement.mid(begin);
    if (rest.startsWith(u"--")) {
        const qsizetype end = statement.indexOf(u'\n', begin);
        return end < 0 ? statement.size() : end;
    }
    if (rest.startsWith(u"/*")) {
        const qsizetype end = statement.indexOf(u"*/", begin + 2);
        return end < 0 ? statement.size() : end + 2;
    }
    return begin;
}

}  // namespace

bool SqlToken::IsWord(QStringView word) const {
    return kind == Kind::Word && text.compare(word, Qt::CaseInsensitive) == 0;
}

bool SqlToken::IsSymbol(char16_t symbol) const {
    return kind == Kind::Symbol && text[0] == symbol;
}

QString SqlToken::Identifier() const {
    if (kind != Kind::Name) {
        return text.toString();
    }
    const QChar closing = text.back();
    QString name = text.mid(1, text.size() - 2).toString();
    if (closing != u']') {
        name.replace(QString(2, closing), QString(closing));
    }
    return name;
}

std::vector<SqlToken> TokensOf(QStringView statement) {
    std::vector<SqlToken> tokens;
    qsizetype at = 0;
    while (at < statement.size()) {
        const QChar c = statement[at];
        if (const qsizetype behind = EndOfComment(statement, at); behind > at) {
            at = behind;
            continue;
        }
        if (c.isSpace()) {
            ++at;
            continue;
        }
        qsizetype end = at + 1;
        SqlToken::Kind kind = SqlToken::Kind::Symbol;
        if (const QChar closing = ClosingMark(c); !closing.isNull()) {
            kind = KindOfMarked(c);
            end = EndOfMarked(statement, at, closing);
        } else if (IsWordCharacter(c)) {
            kind = SqlToken::Kind::Word;
            while (end < statement.size() && IsWordCharacter(statement[end])) {
                ++end;
            }
        }
        tokens.push_back({kind, statement.mid(at, end - at)});
        at = end;
    }
    return tokens;
}

QString QuotedName(const QString& name) {
    QString inner = name;
    inner.replace(u'"', QStringLiteral("\"\""));
    return u'"' + inner + u'"';
}

}  // namespace rillbook::ado
