#include <QAccessible>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>

#include "forms/main/frmAbout.h"
#include "forms/main/frmMain.h"
#include "forms/records/frmDelete.h"
#include "forms/records/frmEditRecords.h"
#include "forms/reference/frmCalibration.h"
#include "forms/reference/frmConversionEq.h"
#include "forms/reference/frmConversionT.h"
#include "forms/reference/frmRating.h"
#include "forms/reports/frmAnnualT.h"
#include "forms/reports/frmAnnualTPrint.h"
#include "forms/reports/frmDailyT.h"
#include "forms/reports/frmInstT.h"
#include "forms/reports/frmOutputSettings.h"
#include "graphs/frmDailyG.h"
#include "graphs/frmInstG.h"
#include "help/HelpWindow.h"
#include "import/frmImport.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

// Controls that the keyboard reaches and that a screen reader couldn't name, or only as their
// group.
QStringList Nameless(const QWidget& form) {
    QStringList faults;
    for (QWidget* control : form.findChildren<QWidget*>(QRegularExpression(u"^(?!qt_).+"_qs))) {
        if ((control->focusPolicy() & Qt::TabFocus) != 0) {
            QAccessibleInterface* seen = QAccessible::queryAccessibleInterface(control);
            const QString name = seen != nullptr ? seen->text(QAccessible::Name) : QString();
            if (name.isEmpty() || name == control->parentWidget()->property("title")) {
                faults << control->objectName() + u" has no name"_qs;
            }
        }
    }
    return faults;
}

// Texts that answer to the same letter, of one level.
QStringList Clashes(const QStringList& texts) {
    QMap<QString, QStringList> byLetter;
    for (const QString& text : texts) {
        const QKeySequence letter = QKeySequence::mnemonic(text);
        if (!letter.isEmpty()) {
            byLetter[letter.toString()] << text;
        }
    }
    QStringList faults;
    for (const QStringList& same : byLetter) {
        if (same.size() > 1) {
            faults << same.join(u" = "_qs);
        }
    }
    return faults;
}

QStringList Clashes(const QWidget& form) {
    QStringList level;
    QStringList faults;
    for (const QWidget* control : form.findChildren<QWidget*>()) {
        QStringList items;
        for (const QAction* action : control->actions()) {
            items << action->text();
        }
        const auto* label = qobject_cast<const QLabel*>(control);
        if (qobject_cast<const QMenu*>(control) != nullptr) {
            faults << Clashes(items);
        } else if (qobject_cast<const QMenuBar*>(control) != nullptr) {
            level << items;
        } else if (label == nullptr || label->buddy() != nullptr) {
            level << control->property("text").toString() << control->property("title").toString();
        }
    }
    return faults + Clashes(level);
}

QString Faults(const QWidget& form) {
    const QStringList faults = Nameless(form) + Clashes(form);
    return faults.isEmpty() ? QString()
                            : form.objectName() + u": "_qs + faults.join(u", "_qs) + u'\n';
}

}  // namespace

class TestAccessibility : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void namesEveryControlAndLetter() {
        station_->WithReadings("2002-01-01", 15, {2, 4});
        const QString project = u"Upper basin"_qs;
        frmEditRecords records;
        HelpWindow& help =
            HelpWindow::Display(nullptr, QStringLiteral(RILLBOOK_BINARY_DIR "/bin/rillbook.chm"),
                                HelpWindow::Side::Contents);
        const QString faults =
            Faults(help) + Faults(records) + Faults(frmDelete(records)) + Faults(frmAbout()) +
            Faults(frmImport()) + Faults(frmCalibration(printer_)) + Faults(frmRating()) +
            Faults(frmConversionEq()) + Faults(frmConversionT()) + Faults(frmOutputSettings()) +
            Faults(frmInstT(project, printer_)) + Faults(frmDailyT(project, printer_)) +
            Faults(frmAnnualT(project, printer_)) + Faults(frmAnnualTPrint()) +
            Faults(frmInstG(project, printer_)) + Faults(frmDailyG(project, printer_)) +
            Faults(frmMain());
        HelpWindow::CloseAll();
        // Two captions of the File menu that are settled; a second press goes on to the other.
        QCOMPARE(faults, u"frmMain: Open P&roject... = &Remove Station...\n"_qs);
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestAccessibility)

#include "tst_accessibility.moc"
