#include "platform/ado/SelectParts.h"

#include <algorithm>
#include <array>

#include "platform/ado/SqlTokens.h"

namespace rillbook::ado {

namespace {

using Tokens = std::vector<SqlToken>;

Tokens::const_iterator FindWord(const Tokens& tokens, QStringView word) {
    return std::find_if(tokens.begin(), tokens.end(),
                        [word](const SqlToken& token) { return token.IsWord(word); });
}

bool MakesOtherRows(const Tokens& tokens) {
    static constexpr std::array kWords{u"DISTINCT", u"GROUP",     u"HAVING", u"LIMIT",
                                       u"UNION",    u"INTERSECT", u"EXCEPT"};
    return std::any_of(kWords.begin(), kWords.end(), [&tokens](const char16_t* word) {
        return FindWord(tokens, word) != tokens.end();
    });
}

}  // namespace

std::optional<SelectParts> PartsOfSelect(const QByteArray& select) {
    const QString statement = QString::fromUtf8(select);
    const Tokens tokens = TokensOf(statement);
    const auto from = FindWord(tokens, u"FROM");
    const auto order = FindWord(tokens, u"ORDER");
    const bool computes = std::any_of(tokens.begin(), from,
                                      [](const SqlToken& token) { return token.IsSymbol(u'('); });
    if (tokens.end() - from < 2 || computes || MakesOtherRows(tokens)) {
        return std::nullopt;
    }
    const auto table = from + 1;
    const auto behind = table + 1;
    const bool isName = table->kind == SqlToken::Kind::Word || table->kind == SqlToken::Kind::Name;
    if (!isName || !(behind == tokens.end() || behind == order || behind->IsWord(u"WHERE"))) {
        return std::nullopt;
    }
    const auto offset = [&](Tokens::const_iterator token) {
        return token == tokens.end() ? statement.size()
                                     : token->text.data() - QStringView(statement).data();
    };
    return SelectParts{
        table->Identifier(),
        statement.mid(offset(behind), offset(order) - offset(behind)).toUtf8(),
        statement.mid(offset(order)).toUtf8(),
    };
}

}  // namespace rillbook::ado
