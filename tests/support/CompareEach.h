#pragma once

#include <QStringList>
#include <QtTest/QTest>

namespace rillbook {

// Asks a function that answers in text every question of a table, "2 => 4; 3 => 9", in UTF-8, and
// compares the answers.
template <typename Function>
void CompareEach(const Function& answer, const char* table) {
    const QStringList expected = QString::fromUtf8(table).split(QStringLiteral("; "));
    QStringList answers;
    for (const QString& line : expected) {
        const QString question = line.left(line.indexOf(QStringLiteral(" => ")));
        answers += question + QStringLiteral(" => ") + answer(question);
    }
    QCOMPARE(answers, expected);
}

// The same where all questions, "2; 3", have one answer.
template <typename Function>
void CompareAll(const Function& answer, const QString& expected, const char* questions) {
    for (const QString& question : QString::fromUtf8(questions).split(QStringLiteral("; "))) {
        const QString given = answer(question);
        QVERIFY2(given == expected, qPrintable(question + QStringLiteral(" => ") + given));
    }
}

}  // namespace rillbook
