#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest/QTest>

#include "platform/desktop/Desktop.h"
#include "platform/qt/QtDoors.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

void Touch(const QString& path) {
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
}

void Accept(QWidget& dialog) {
    QTest::keyClick(FindChild<QWidget>(dialog, u"fileNameEdit"_qs), Qt::Key_Return);
}

// Types a name into a file dialog and takes it.
void TakeName(QWidget& dialog, const QString& name) {
    TypeText(dialog, u"fileNameEdit"_qs, name);
    Accept(dialog);
}

// The files that a file dialog lists, once it has read the folder.
QString Listed(QWidget& dialog, qsizetype expected) {
    auto& list = Child<QListView>(dialog, u"listView"_qs);
    const auto names = [&] {
        QStringList found;
        for (int row = 0; row < list.model()->rowCount(list.rootIndex()); ++row) {
            found += list.model()->index(row, 0, list.rootIndex()).data().toString();
        }
        found.sort();
        return found;
    };
    // Wait for names that should go as well as for those that should come.
    (void)QTest::qWaitFor([&] { return names().size() == expected; }, 3000);
    return names().join(u' ');
}

}  // namespace

class tst_doors : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        folder_ = std::make_unique<QTemporaryDir>();
        doors_ = std::make_unique<QtDoors>(u"Rillbook"_qs);
        window_ = std::make_unique<QWidget>();
        window_->show();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    }
    void cleanup() {
        doors_.reset();
        window_.reset();
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    void messagesAnswerToKeys_data() {
        QTest::addColumn<MsgBoxButtons>("buttons");
        QTest::addColumn<MsgBoxAnswer>("enter");
        QTest::addColumn<MsgBoxAnswer>("escape");
        QTest::newRow("OK") << MsgBoxButtons::Ok << MsgBoxAnswer::Ok << MsgBoxAnswer::Ok;
        QTest::newRow("Yes, No") << MsgBoxButtons::YesNo << MsgBoxAnswer::Yes << MsgBoxAnswer::No;
        QTest::newRow("Yes, No, Cancel")
            << MsgBoxButtons::YesNoCancel << MsgBoxAnswer::Yes << MsgBoxAnswer::Cancel;
        QTest::newRow("Retry, Cancel")
            << MsgBoxButtons::RetryCancel << MsgBoxAnswer::Retry << MsgBoxAnswer::Cancel;
    }
    void messagesAnswerToKeys() {
        QFETCH(const MsgBoxButtons, buttons);
        {
            const NextWindow steps([](QWidget& box) { QTest::keyClick(&box, Qt::Key_Return); });
            QTEST(MsgBox(u"Overwrite?"_qs, buttons), "enter");
        }
        {
            const NextWindow steps([](QWidget& box) { QTest::keyClick(&box, Qt::Key_Escape); });
            QTEST(MsgBox(u"Overwrite?"_qs, buttons), "escape");
        }
        const NextWindow steps([](QWidget& box) { box.close(); });
        QTEST(MsgBox(u"Overwrite?"_qs, buttons), "escape");
    }

    void messagesShowTheirTextAsItStands() {
        const QString text = u"Can't open <b>weir</b>.prj & co."_qs;
        const NextWindow steps([&](QWidget& form) {
            auto& box = dynamic_cast<QMessageBox&>(form);
            QCOMPARE(box.windowTitle(), u"Rillbook"_qs);
            QCOMPARE(box.icon(), QMessageBox::Warning);
            QCOMPARE(Child<QLabel>(box, u"qt_msgbox_label"_qs).textFormat(), Qt::PlainText);
            QCOMPARE(box.text(), text);
            QCOMPARE(box.parentWidget(), window_.get());
            box.close();
        });
        MsgBox(text, MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }

    void pointerIsNormalWhileABoxIsUp() {
        const auto shape = [] {
            const QCursor* cursor = QGuiApplication::overrideCursor();
            return cursor != nullptr ? cursor->shape() : Qt::ArrowCursor;
        };
        {
            const Hourglass outer;
            const Hourglass inner;
            QCOMPARE(shape(), Qt::WaitCursor);
            const NextWindow steps([&](QWidget& box) {
                QCOMPARE(shape(), Qt::ArrowCursor);
                box.close();
            });
            MsgBox(u"0 records"_qs);
            QCOMPARE(shape(), Qt::WaitCursor);
            QCOMPARE(TheScreen().MousePointer(), vbHourglass);
        }
        QCOMPARE(shape(), Qt::ArrowCursor);
    }

    void savingCompletesTheName_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("name");
        QTest::newRow("no extension") << u"weir"_qs << u"weir.prj"_qs;
        QTest::newRow("the extension") << u"weir.prj"_qs << u"weir.prj"_qs;
        QTest::newRow("another") << u"weir.txt"_qs << u"weir.txt"_qs;
        QTest::newRow("blanks and marks") << u"big <b>weir"_qs << u"big <b>weir.prj"_qs;
    }
    void savingCompletesTheName() {
        QFETCH(const QString, typed);
        QFETCH(const QString, name);
        const NextWindow steps([&](QWidget& dialog) { TakeName(dialog, typed); });
        CommonDialog dialog = ProjectDialog();
        dialog.ShowSave();
        QCOMPARE(dialog.FileName, folder_->filePath(name));
        QCOMPARE(dialog.FileTitle, name);
    }

    // The question is about the name with its extension.
    void savingAsksBeforeItReplaces() {
        Touch(folder_->filePath(u"weir.prj"_qs));
        QStringList questions;
        const NextWindow steps([&](QWidget& dialog) {
            const auto answer = [&](QMessageBox::StandardButton button) {
                return [&questions, button](QWidget& form) {
                    auto& box = dynamic_cast<QMessageBox&>(form);
                    questions += box.text().section(u' ', 0, 0);
                    box.button(button)->click();
                };
            };
            const NextWindow refuse(answer(QMessageBox::No));
            TakeName(dialog, u"weir"_qs);
            QVERIFY(dialog.isVisible());
            const NextWindow agree(answer(QMessageBox::Yes));
            Accept(dialog);
        });
        CommonDialog dialog = ProjectDialog();
        dialog.Flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
        dialog.ShowSave();
        QCOMPARE(dialog.FileName, folder_->filePath(u"weir.prj"_qs));
        QCOMPARE(questions, QStringList({u"weir.prj"_qs, u"weir.prj"_qs}));
    }

    void savingReplacesUnaskedWithoutTheFlag() {
        Touch(folder_->filePath(u"weir.prj"_qs));
        const NextWindow steps([](QWidget& dialog) { TakeName(dialog, u"weir"_qs); });
        CommonDialog dialog = ProjectDialog();
        dialog.ShowSave();
        QCOMPARE(dialog.FileTitle, u"weir.prj"_qs);
    }

    void filtersListWhatTheyName() {
        for (const QString& name : {u"a.csv"_qs, u"B.DAT"_qs, u"c.mdb"_qs, u"noext"_qs}) {
            Touch(folder_->filePath(name));
        }
        const NextWindow steps([&](QWidget& form) {
            auto& types = Child<QComboBox>(form, u"fileTypeCombo"_qs);
            QCOMPARE(types.currentText(), u"Import File (*.csv;*.dat)"_qs);
            QCOMPARE(Listed(form, 2), u"B.DAT a.csv"_qs);
            QTest::keyClick(&types, Qt::Key_Down);
            QCOMPARE(types.currentText(), u"All Files (*.*)"_qs);
            QCOMPARE(Listed(form, 4), u"B.DAT a.csv c.mdb noext"_qs);
            TakeName(form, u"noext"_qs);
        });
        CommonDialog dialog = ProjectDialog();
        dialog.DialogTitle = u"File Import - Weir"_qs;
        dialog.Filter = u"Import File (*.csv;*.dat)|*.csv;*.dat|All Files (*.*)|*.*"_qs;
        dialog.ShowOpen();
        QCOMPARE(dialog.FileName, folder_->filePath(u"noext"_qs));
    }

    void cancellingLeavesTheName() {
        const NextWindow steps([](QWidget& form) {
            QCOMPARE(form.windowTitle(), u"New"_qs);
            // A folder that isn't there is the home folder.
            QCOMPARE(dynamic_cast<QFileDialog&>(form).directory(), QDir::home());
            QTest::keyClick(&form, Qt::Key_Escape);
        });
        CommonDialog dialog = ProjectDialog();
        dialog.InitDir = u"c:\\"_qs;
        dialog.FileTitle = u"before.prj"_qs;
        QVERIFY_EXCEPTION_THROWN(dialog.ShowSave(), DialogCancelledError);
        QCOMPARE(dialog.FileTitle, u"before.prj"_qs);
    }

    void settingsKeepTexts_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("number") << u"-120"_qs;
        QTest::newRow("folder") << u"C:\\Stations\\weir, lower; \"x\"=1"_qs;
        QTest::newRow("like a value of another type") << u"@Size(1 2)"_qs;
        QTest::newRow("beyond Latin") << u"/home/Žofia/水位"_qs;
        QTest::newRow("blanks at the ends") << u" a "_qs;
    }
    void settingsKeepTexts() {
        QFETCH(const QString, text);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_->path());
        QCOMPARE(GetSetting(u"Rillbook"_qs, u"Data"_qs, u"InitDir"_qs), QString());
        SaveSetting(u"Rillbook"_qs, u"Data"_qs, u"InitDir"_qs, text);
        QCOMPARE(GetSetting(u"Rillbook"_qs, u"Data"_qs, u"InitDir"_qs), text);
        QCOMPARE(GetSetting(u"Rillbook"_qs, u"Other"_qs, u"InitDir"_qs), QString());
    }

    // A file stands where the folder of settings would be.
    void settingsThatCantBeWrittenAreLost() {
        const QString blocked = folder_->filePath(u"config"_qs);
        Touch(blocked);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, blocked);
        SaveSetting(u"Rillbook"_qs, u"Data"_qs, u"MainTop"_qs, u"7"_qs);
        QVERIFY(QFileInfo(blocked).isFile());
    }

    void clipboardHoldsTexts() {
        TheClipboard().SetText(u"1.25\t2\r3\t4"_qs);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"1.25\t2\r3\t4"_qs);
        QCOMPARE(TheClipboard().GetText(), u"1.25\t2\r\n3\t4"_qs);
        TheClipboard().Clear();
        QCOMPARE(TheClipboard().GetText(), QString());
    }

private:
    CommonDialog ProjectDialog() const {
        CommonDialog dialog;
        dialog.DialogTitle = u"New"_qs;
        dialog.InitDir = folder_->path();
        dialog.Filter = u"Rillbook Project Files (*.prj)|*.prj|All Files (*.*)|*.*"_qs;
        return dialog;
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<QtDoors> doors_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::tst_doors)
#include "tst_doors.moc"
