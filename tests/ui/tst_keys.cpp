// What the keys do in the windows of the program.
#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>

#include "app/Application.h"
#include "forms/main/WindowKeys.h"
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
#include "help/HTMLHelp.h"
#include "help/HelpPages.h"
#include "import/frmImport.h"
#include "platform/qt/QtDoors.h"
#include "tests/support/DataRows.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

// "Shift+Ins": in the control that has the focus.
void PressKey(QWidget& window, const QString& key) {
    QApplication::setActiveWindow(&window);
    QWidget* const focus = window.focusWidget();
    const QKeyCombination combination = QKeySequence(key)[0];
    QTest::keyClick(focus == nullptr ? &window : focus, combination.key(),
                    combination.keyboardModifiers());
}

// Its title without the mark; empty if none is open.
QString OpenMenu() {
    const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    return menu == nullptr ? QString() : menu->title().remove(u'&');
}

void CloseMenu() {
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    QCoreApplication::processEvents();
}

// "rating-list.html The rating list": the page and its title.
QString ShownPage() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        const auto* help = qobject_cast<HelpWindow*>(window);
        if (help != nullptr && help->isVisible()) {
            const auto* page = help->findChild<HelpPages*>();
            return page->source().toString(QUrl::RemoveScheme).mid(1) + u' ' +
                   page->documentTitle();
        }
    }
    return u"no help"_qs;
}

}  // namespace

class TestKeys : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        keys_ = std::make_unique<WindowKeys>();
        station_->WithReadings("2002-01-01", 15, {2, 4});
    }
    void cleanup() {
        window_.reset();
        records_.reset();
        ReleaseHelp();
        keys_.reset();
        FormTest::cleanup();
    }

    void enterPressesTheFocusedButton_data() {
        const DataRows<QString, QString, int> row("window", "button", "result");
        for (const char* window : {"frmImport", "frmRating", "frmOutputSettings", "frmAnnualTPrint",
                                   "frmDelete", "frmConversionEq", "frmConversionT"}) {
            row(window, "cmdCancel", QDialog::Rejected);
        }
        for (const char* window :
             {"frmImport", "frmRating", "frmOutputSettings", "frmAnnualTPrint", "frmAbout"}) {
            row(window, "cmdOK", QDialog::Accepted);
        }
    }
    void enterPressesTheFocusedButton() {
        QFETCH(QString, window);
        QFETCH(QString, button);
        Show(window);
        auto& form = dynamic_cast<QDialog&>(*window_);
        form.setResult(-1);
        Child<QPushButton>(form, button).setFocus();
        PressKey(form, u"Enter"_qs);
        QVERIFY(!form.isVisible());
        QTEST(form.result(), "result");
    }

    void escClosesAfterAMenu_data() {
        QTest::addColumn<QString>("menu");
        QTest::newRow("frmRating") << u"Edit"_qs;
        for (const char* window :
             {"frmCalibration", "frmInstT", "frmDailyT", "frmAnnualT", "frmInstG", "frmDailyG"}) {
            QTest::newRow(window) << u"File"_qs;
        }
    }
    void escClosesAfterAMenu() {
        Show(QString::fromLatin1(QTest::currentDataTag()));
        PressKey(*window_, u"F10"_qs);
        QTEST(OpenMenu(), "menu");
        CloseMenu();
        QVERIFY(window_->isVisible());
        PressKey(*window_, u"Esc"_qs);
        QVERIFY(!window_->isVisible());
    }

    void altOpensMenusAndTypesNothing() {
        const auto press = [this](const QString& windowAndKey) {
            Show(windowAndKey.section(u' ', 0, 0));
            if (auto* box = window_->findChild<QLineEdit*>(u"tbConvDesc"_qs)) {
                box->setFocus();
            }
            PressKey(*window_, windowAndKey.section(u' ', 1));
            QString opened = OpenMenu();
            if (!opened.isEmpty()) {
                CloseMenu();
            }
            for (const QLineEdit* box : window_->findChildren<QLineEdit*>()) {
                opened += box->text();
            }
            return opened;
        };
        CompareEach(press,
                    "frmRating Alt+E => EditFlowcfs; frmRating Alt+Q => Flowcfs; "
                    "frmRating Alt+Shift+Q => Flowcfs; frmRating Q => Flowqcfs; "
                    "frmAnnualT Alt+C => Calculation4.00 ft on Jan 1, 2002; "
                    "frmConversionEq Alt+E => ");
    }

    void f1ShowsTheTopicOfTheWindow() {
        Application::SetPath(QStringLiteral(RILLBOOK_BINARY_DIR "/bin"));
        const auto shown = [this](const QString& window) {
            ReleaseHelp();
            Show(window);
            PressKey(*window_, u"F1"_qs);
            return ShownPage();
        };
        CompareEach(
            shown,
            "frmMain => main-window.html The main window; frmAbout => about.html About Rillbook; "
            "frmImport => import-setup.html Import setup; "
            "frmCalibration => journal.html Journal and offsets; "
            "frmRating => rating-list.html The rating list; "
            "frmConversionT => rating-table.html The rating table editor; "
            "frmConversionEq => rating-equation.html The rating equation editor; "
            "frmOutputSettings => output-settings.html Output settings; "
            "frmInstT => instantaneous-table.html The table of instantaneous values; "
            "frmDailyT => daily-table.html The table of daily values; "
            "frmAnnualT => annual-table.html The annual summary table; "
            "frmAnnualTPrint => print-settings.html Print settings; "
            "frmInstG => instantaneous-graph.html The instantaneous graph; "
            "frmDailyG => daily-graph.html The daily graph; "
            "frmEditRecords => edit-records.html Edit Records; "
            "frmDelete => edit-records.html#delete Edit Records; "
            "a message => messages.html Messages; "
            "a window of frmEditRecords => edit-records.html Edit Records");
        Application::SetPath({});
    }

    void f5ReadsAgain() {
        const auto values = [this](const QString& window) {
            Show(window);
            StationConnection->Execute(u"UPDATE Records SET chan1 = chan1 + 1"_qs);
            QString text;
            for (const QChar when : u"ba"_qs) {
                const MSFlexGrid& grid = GridOf(*window_);
                text += when + grid.TextMatrix(1, 2) + grid.TextMatrix(2, 2);
                PressKey(*window_, u"F5"_qs);
            }
            return text;
        };
        CompareEach(values,
                    "frmInstT => b2.004.00a3.005.00; frmDailyT => b4.96a5.96; "
                    "frmAnnualT => bJan5.96aJan6.96");
    }

    void ctrlPPrints() {
        for (const char* window : {"frmCalibration", "frmInstG", "frmDailyG"}) {
            Show(QString::fromLatin1(window));
            doors_->CancelPrinter();
            PressKey(*window_, u"Ctrl+P"_qs);
        }
        Show(u"frmAnnualT"_qs);
        const NextWindow choice([](QWidget& form) {
            QCOMPARE(form.objectName(), u"frmAnnualTPrint"_qs);
            PressKey(form, u"Esc"_qs);
        });
        PressKey(*window_, u"Ctrl+P"_qs);
    }

    void projectKeys() {
        station_->Close();
        Show(u"frmMain"_qs);
        const QString path = station_->Folder() + u"/p.prj"_qs;
        doors_->AnswerFileDialog(path);
        PressKey(*window_, u"Ctrl+N"_qs);
        PressKey(*window_, u"Ctrl+S"_qs);
        QVERIFY(QFile::exists(path));
        doors_->ExpectMessage(u"Save Current Project?"_qs, MsgBoxAnswer::No);
        doors_->AnswerFileDialog(path);
        PressKey(*window_, u"Ctrl+O"_qs);
        QCOMPARE(doors_->fileRequests.back().title, u"Open"_qs);
        ProjectPath.clear();
    }

    // Keys of the list; what is then in the list, and its current row.
    void ratingListKeys_data() {
        const DataRows<QString, QString, QString> row("keys", "typed", "list");
        row("F2", "", "1E 2E 3T @3");
        row("Up F2", "tbDate=12/1/2002", "1E 3T 12E @3");
        row("Up F2", "tbC=2", "1E 2E 3T @2");
        row("Ins", "tbDate=2/5/2002 tbC=1", "1E 2E 2E 3T @3");
        row("Up Shift+Ins", "", "1E 2E 3T @2");
        row("Up Del", "", "1E 3T @2");
        row("Up Del Del", "", "1E @1");
        row("Tab Del", "", "1E 2E 3T @3");
    }
    void ratingListKeys() {
        QFETCH(QString, keys);
        QFETCH(QString, typed);
        station_->WithEquation("2002-01-01", 1, 1, 1, 1)
            .WithEquation("2002-02-01", 1, 1, 1, 1)
            .WithTable("2002-03-01", 1, {{0, 1}});
        Show(u"frmRating"_qs);
        MSFlexGrid& grid = GridOf(*window_);
        grid.setFocus();
        std::unique_ptr<NextWindow> editor;
        if (!keys.contains(u"Del")) {
            editor = std::make_unique<NextWindow>([&](QWidget& form) {
                for (const QString& text : typed.split(u' ', Qt::SkipEmptyParts)) {
                    TypeText(form, text.section(u'=', 0, 0), text.section(u'=', 1));
                }
                Child<QPushButton>(form, typed.isEmpty() ? u"cmdCancel"_qs : u"cmdOK"_qs)
                    .setFocus();
                PressKey(form, u"Enter"_qs);
            });
        }
        for (const QString& key : keys.split(u' ')) {
            PressKey(*window_, key);
        }
        QVERIFY(window_->focusWidget() == &grid || keys.startsWith(u"Tab"));
        QString list;
        for (int row = 1; row < grid.Rows(); ++row) {
            list += grid.TextMatrix(row, 1).section(u'/', 0, 0) + grid.TextMatrix(row, 2)[0] + u' ';
        }
        QTEST(list + u"@%1"_qs.arg(grid.Row()), "list");
    }

    // A layout from the open list, or Enter on it, leads to the first width; the arrow keys go on.
    void layoutLeadsToItsWidths() {
        const auto focusAfter = [this](const QString& keys) {
            Show(u"frmImport"_qs);
            auto& layout = Child<QComboBox>(*window_, u"cmbFileType"_qs);
            layout.setFocus();
            for (const QString& key : keys.split(u' ')) {
                QWidget* list = QApplication::activePopupWidget();
                if (list != nullptr) {
                    QTest::keyClick(layout.view(), QKeySequence(key)[0].key());
                } else {
                    PressKey(*window_, key);
                }
            }
            const MSFlexGrid& grid = GridOf(*window_);
            return u"%1 %2 %3,%4"_qs.arg(layout.currentIndex())
                .arg(window_->focusWidget()->objectName())
                .arg(grid.Row())
                .arg(grid.Col());
        };
        CompareEach(focusAfter,
                    "Down => 1 cmbFileType 1,2; Down Down Down => 3 cmbFileType 1,1; "
                    "Down Down Enter => 2 MSFlexGrid1 1,1; Down Enter => 1 cmbFileType 1,2; "
                    "Alt+Down Down Down Enter => 2 MSFlexGrid1 1,1");
    }

    // Over the modal window, else over the main window, also while another window is in use.
    void messagesBelongToTheirWindow() {
        const QtDoors doors(u"Rillbook"_qs);
        QMainWindow main;
        QWidget other;
        main.show();
        other.show();
        QApplication::setActiveWindow(&other);
        const auto ownerIs = [](const QWidget& owner) {
            return [&owner](QWidget& box) {
                QCOMPARE(box.parentWidget(), &owner);
                PressKey(box, u"Esc"_qs);
            };
        };
        const NextWindow overMain(ownerIs(main));
        MsgBox(u"12 Readable Records"_qs);
        QDialog dialog(&main);
        const NextWindow inDialog([&](QWidget& form) {
            const NextWindow overDialog(ownerIs(form));
            MsgBox(u"Not a valid Date."_qs);
            form.close();
        });
        dialog.exec();
    }

private:
    void Show(const QString& name) {
        window_.reset();
        window_ = Make(name);
        window_->show();
        QApplication::setActiveWindow(window_.get());
    }

    std::unique_ptr<QWidget> Make(const QString& name) {
        const QString project = u"Upper basin"_qs;
        const QMap<QString, std::function<std::unique_ptr<QWidget>()>> makers{
            {u"frmMain"_qs, [] { return std::make_unique<frmMain>(); }},
            {u"frmAbout"_qs, [] { return std::make_unique<frmAbout>(); }},
            {u"frmImport"_qs, [] { return std::make_unique<frmImport>(); }},
            {u"frmCalibration"_qs, [&] { return std::make_unique<frmCalibration>(printer_); }},
            {u"frmRating"_qs, [] { return std::make_unique<frmRating>(); }},
            {u"frmConversionT"_qs, [] { return std::make_unique<frmConversionT>(); }},
            {u"frmConversionEq"_qs, [] { return std::make_unique<frmConversionEq>(); }},
            {u"frmOutputSettings"_qs, [] { return std::make_unique<frmOutputSettings>(); }},
            {u"frmInstT"_qs, [&] { return std::make_unique<frmInstT>(project, printer_); }},
            {u"frmDailyT"_qs, [&] { return std::make_unique<frmDailyT>(project, printer_); }},
            {u"frmAnnualT"_qs, [&] { return std::make_unique<frmAnnualT>(project, printer_); }},
            {u"frmAnnualTPrint"_qs, [] { return std::make_unique<frmAnnualTPrint>(); }},
            {u"frmInstG"_qs, [&] { return std::make_unique<frmInstG>(project, printer_); }},
            {u"frmDailyG"_qs, [&] { return std::make_unique<frmDailyG>(project, printer_); }},
            {u"frmEditRecords"_qs, [] { return std::make_unique<frmEditRecords>(); }},
            {u"frmDelete"_qs,
             [&] {
                 records_ = std::make_unique<frmEditRecords>();
                 return std::make_unique<frmDelete>(*records_);
             }},
            {u"a message"_qs, [] { return std::make_unique<QMessageBox>(); }},
            {u"a window of frmEditRecords"_qs, [&] {
                 records_ = std::make_unique<frmEditRecords>();
                 return std::make_unique<QDialog>(records_.get());
             }}};
        return makers.value(name)();
    }

    std::unique_ptr<WindowKeys> keys_;
    std::unique_ptr<frmEditRecords> records_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestKeys)
#include "tst_keys.moc"
