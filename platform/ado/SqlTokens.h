#pragma once

#include <QString>
#include <QStringView>
#include <vector>

namespace rillbook::ado {

// A piece of a statement; blanks and comments between the pieces are none.
struct SqlToken {
    enum class Kind {
        Word,    // a keyword, a bare name, a run of digits
        Name,    // a name between double quotes, brackets or backquotes
        Text,    // between single quotes, where two of them stand for one
        Moment,  // between # signs
        Symbol   // one other character
    };
    Kind kind;
    QStringView text;  // a view of the statement, marks included

    // Case doesn't count.
    bool IsWord(QStringView word) const;
    bool IsSymbol(char16_t symbol) const;
    // A Word as it is; a Name without its marks.
    QString Identifier() const;
};

// The tokens view `statement`. Raises adErrSyntax for a mark that isn't closed.
std::vector<SqlToken> TokensOf(QStringView statement);

// A name as it stands in a statement, whatever it holds.
QString QuotedName(const QString& name);

}  // namespace rillbook::ado
