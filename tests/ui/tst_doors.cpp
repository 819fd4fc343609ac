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

using namespace Qt::Literals::StringLiterals;

namespace rillbook {

namespace {

void Touch(const QString& path) {
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
}

void Accept(QWidget& dialog) {
    QTest::keyClick(FindChild<QWidget>(dialog, u"fileNameEdit"_s), Qt::Key_Return);
}

// Types a name into a file dialog and takes it.
void TakeName(QWidget& dialog, const QString& name) {
    TypeText(dialog, u"fileNameEdit"_s, name);
    Accept(dialog);
}

// The files that a file dialog lists, once it has read the folder.
QString Listed(QWidget& dialog, qsizetype expected) {
    auto& list = Child<QListView>(dialog, u"listView"_s);
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
        doors_ = std::make_unique<QtDoors>(u"Rillbook"_s);
        window_ = std::make_unique<QWidget>();
        window_->show();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    }
    void cleanup() {
        doors_.reset();
        window_.reset();
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    void MessagesAnswerToKeys_data() {
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
    void MessagesAnswerToKeys() {
        QFETCH(const MsgBoxButtons, buttons);
        {
            const NextWindow steps([](QWidget& box) { QTest::keyClick(&box, Qt::Key_Return); });
            QTEST(MsgBox(u"Overwrite?"_s, buttons), "enter");
        }
        {
            const NextWindow steps([](QWidget& box) { QTest::keyClick(&box, Qt::Key_Escape); });
            QTEST(MsgBox(u"Overwrite?"_s, buttons), "escape");
        }
        const NextWindow steps([](QWidget& box) { box.close(); });
        QTEST(MsgBox(u"Overwrite?"_s, buttons), "escape");
    }

    void MessagesShowTheirTextAsItStands() {
        const QString text = u"Can't open <b>weir</b>.prj & co."_s;
        const NextWindow steps([&](QWidget& form) {
            auto& box = qobject_cast<QMessageBox&>(form);
            QCOMPARE(box.windowTitle(), u"Rillbook"_s);
            QCOMPARE(box.icon(), QMessageBox::Warning);
            QCOMPARE(Child<QLabel>(box, u"qt_msgbox_label"_s).textFormat(), Qt::PlainText);
            QCOMPARE(box.text(), text);
            QCOMPARE(box.parentWidget(), window_.get());
            box.close();
        });
        MsgBox(text, MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }

    void PointerIsNormalWhileABoxIsUp() {
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
            MsgBox(u"0 records"_s);
            QCOMPARE(shape(), Qt::WaitCursor);
            QCOMPARE(TheScreen().MousePointer(), vbHourglass);
        }
        QCOMPARE(shape(), Qt::ArrowCursor);
    }

    void SavingCompletesTheName_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("name");
        QTest::newRow("no extension") << u"weir"_s << u"weir.prj"_s;
        QTest::newRow("the extension") << u"weir.prj"_s << u"weir.prj"_s;
        QTest::newRow("another") << u"weir.txt"_s << u"weir.txt"_s;
        QTest::newRow("blanks and marks") << u"big <b>weir"_s << u"big <b>weir.prj"_s;
    }
    void SavingCompletesTheName() {
        QFETCH(const QString, typed);
        QFETCH(const QString, name);
        const NextWindow steps([&](QWidget& dialog) { TakeName(dialog, typed); });
        CommonDialog dialog = ProjectDialog();
        dialog.ShowSave();
        QCOMPARE(dialog.FileName, folder_->filePath(name));
        QCOMPARE(dialog.FileTitle, name);
    }

    // The question is about the name with its extension.
    void SavingAsksBeforeItReplaces() {
        Touch(folder_->filePath(u"weir.prj"_s));
        QStringList questions;
        const NextWindow steps([&](QWidget& dialog) {
            const auto answer = [&](Qt::Key key) {
                return [&questions, key](QWidget& box) {
                    questions += qobject_cast<QMessageBox&>(box).text().section(u' ', 0, 0);
                    QTest::keyClick(&box, key, Qt::AltModifier);
                };
            };
            const NextWindow refuse(answer(Qt::Key_N));
            TakeName(dialog, u"weir"_s);
            QVERIFY(dialog.isVisible());
            const NextWindow agree(answer(Qt::Key_Y));
            Accept(dialog);
        });
        CommonDialog dialog = ProjectDialog();
        dialog.Flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
        dialog.ShowSave();
        QCOMPARE(dialog.FileName, folder_->filePath(u"weir.prj"_s));
        QCOMPARE(questions, QStringList({u"weir.prj"_s, u"weir.prj"_s}));
    }

    void SavingReplacesUnaskedWithoutTheFlag() {
        Touch(folder_->filePath(u"weir.prj"_s));
        const NextWindow steps([](QWidget& dialog) { TakeName(dialog, u"weir"_s); });
        CommonDialog dialog = ProjectDialog();
        dialog.ShowSave();
        QCOMPARE(dialog.FileTitle, u"weir.prj"_s);
    }

    void FiltersListWhatTheyName() {
        for (const QString& name : {u"a.csv"_s, u"B.DAT"_s, u"c.mdb"_s, u"noext"_s}) {
            Touch(folder_->filePath(name));
        }
        const NextWindow steps([&](QWidget& form) {
            auto& types = Child<QComboBox>(form, u"fileTypeCombo"_s);
            QCOMPARE(types.currentText(), u"Import File (*.csv;*.dat)"_s);
            QCOMPARE(Listed(form, 2), u"B.DAT a.csv"_s);
            types.setCurrentIndex(1);
            Q_EMIT types.textActivated(types.currentText());
            QCOMPARE(types.currentText(), u"All Files (*.*)"_s);
            QCOMPARE(Listed(form, 4), u"B.DAT a.csv c.mdb noext"_s);
            TakeName(form, u"noext"_s);
        });
        CommonDialog dialog = ProjectDialog();
        dialog.DialogTitle = u"File Import - Weir"_s;
        dialog.Filter = u"Import File (*.csv;*.dat)|*.csv;*.dat|All Files (*.*)|*.*"_s;
        dialog.ShowOpen();
        QCOMPARE(dialog.FileName, folder_->filePath(u"noext"_s));
    }

    void CancellingLeavesTheName() {
        const NextWindow steps([](QWidget& form) {
            QCOMPARE(form.windowTitle(), u"New"_s);
            // A folder that isn't there is the home folder.
            QCOMPARE(qobject_cast<QFileDialog&>(form).directory(), QDir::home());
            QTest::keyClick(&form, Qt::Key_Escape);
        });
        CommonDialog dialog = ProjectDialog();
        dialog.InitDir = u"c:\\"_s;
        dialog.FileTitle = u"before.prj"_s;
        QVERIFY_EXCEPTION_THROWN(dialog.ShowSave(), DialogCancelledError);
        QCOMPARE(dialog.FileTitle, u"before.prj"_s);
    }

    void SettingsKeepTexts_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("number") << u"-120"_s;
        QTest::newRow("folder") << u"C:\\Stations\\weir, lower; \"x\"=1"_s;
        QTest::newRow("like a value of another type") << u"@Size(1 2)"_s;
        QTest::newRow("beyond Latin") << u"/home/Žofia/水位"_s;
        QTest::newRow("blanks at the ends") << u" a "_s;
    }
    void SettingsKeepTexts() {
        QFETCH(const QString, text);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_->path());
        QCOMPARE(GetSetting(u"Rillbook"_s, u"Data"_s, u"InitDir"_s), QString());
        SaveSetting(u"Rillbook"_s, u"Data"_s, u"InitDir"_s, text);
        QCOMPARE(GetSetting(u"Rillbook"_s, u"Data"_s, u"InitDir"_s), text);
        QCOMPARE(GetSetting(u"Rillbook"_s, u"Other"_s, u"InitDir"_s), QString());
    }

    // A file stands where the folder of settings would be.
    void SettingsThatCantBeWrittenAreLost() {
        const QString blocked = folder_->filePath(u"config"_s);
        Touch(blocked);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, blocked);
        SaveSetting(u"Rillbook"_s, u"Data"_s, u"MainTop"_s, u"7"_s);
        QVERIFY(QFileInfo(blocked).isFile());
    }

    void ClipboardHoldsTexts() {
        TheClipboard().SetText(u"1.25\t2\r3\t4"_s);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"1.25\t2\r3\t4"_s);
        QCOMPARE(TheClipboard().GetText(), u"1.25\t2\r3\t4"_s);
        TheClipboard().Clear();
        QCOMPARE(TheClipboard().GetText(), QString());
    }

private:
    CommonDialog ProjectDialog() const {
        CommonDialog dialog;
        dialog.DialogTitle = u"New"_s;
        dialog.InitDir = folder_->path();
        dialog.Filter = u"Rillbook Project Files (*.prj)|*.prj|All Files (*.*)|*.*"_s;
        return dialog;
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<QtDoors> doors_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::tst_doors)
#include "tst_doors.moc"
