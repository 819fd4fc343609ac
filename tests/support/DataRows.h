#pragma once

#include <QStringList>
#include <QVariant>
#include <QtTest/QTest>
#include <type_traits>

namespace rillbook {

// A text of a data row; literals are UTF-8.
struct TextCell : QString {
    TextCell(const char* text) : QString(QString::fromUtf8(text)) {}
    TextCell(const QString& text) : QString(text) {}
};

template <typename Type>
using CellOf = std::conditional_t<std::is_same_v<Type, QString>, TextCell, Type>;

// The columns of a data function, and its rows: `row("one reading", 3.5, "3.5")` adds one, named by
// its cells but the last of several.
template <typename... Types>
class DataRows {
public:
    template <typename... Names>
    explicit DataRows(const Names*... names) {
        static_assert(sizeof...(Names) == sizeof...(Types));
        (QTest::addColumn<Types>(names), ...);
    }

    void operator()(const CellOf<Types>&... cells) const {
        QStringList name;
        ((name += TextOf(static_cast<const Types&>(cells))), ...);
        if (name.size() > 1) {
            name.removeLast();
        }
        QTestData& row = QTest::newRow(qPrintable(name.join(QStringLiteral(" | "))));
        ((row << static_cast<const Types&>(cells)), ...);
    }

private:
    template <typename Type>
    static QString TextOf(const Type& cell) {
        if constexpr (std::is_enum_v<Type>) {
            return QString::number(static_cast<int>(cell));
        } else {
            return QVariant::fromValue(cell).toString();
        }
    }
};

}  // namespace rillbook
