#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest/QTest>

#include "platform/desktop/Desktop.h"
#include "platform/qt/QtDoors.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

// Types a name into a file dialog and takes it.
void TakeName(QWidget& dialog, const QString& name) {
    TypeText(dialog, u"fileNameEdit"_qs, name);
    QTest::keyClick(FindChild<QWidget>(dialog, u"fileNameEdit"_qs), Qt::Key_Return);
}

// The files that a file dialog lists.
QString Listed(QWidget& dialog) {
    const auto& list = Child<QListView>(dialog, u"listView"_qs);
    QStringList found;
    for (int row = 0; row < list.model()->rowCount(list.rootIndex()); ++row) {
        found += list.model()->index(row, 0, list.rootIndex()).data().toString();
    }
    found.sort();
    return found.join(u' ');
}

}  // namespace

class tst_doors : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        folder_ = std::make_unique<QTemporaryDir>();
        doors_ = std::make_unique<QtDoors>(u"Rillbook"_qs);
        dialog_ = CommonDialog();
        dialog_.InitDir = folder_->path();
        dialog_.Filter = u"Rillbook Project Files (*.prj)|*.prj|All Files (*.*)|*.*"_qs;
    }
    void cleanup() {
        doors_.reset();
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
    }

    void messagesAnswerToKeys() {
        using enum MsgBoxAnswer;
        const std::tuple<MsgBoxButtons, MsgBoxAnswer, MsgBoxAnswer> rows[] = {
            {MsgBoxButtons::YesNo, Yes, No},
            {MsgBoxButtons::YesNoCancel, Yes, Cancel},
            {MsgBoxButtons::RetryCancel, Retry, Cancel}};
        for (const auto& [buttons, enter, escape] : rows) {
            const NextWindow first([](QWidget& box) { QTest::keyClick(&box, Qt::Key_Return); });
            QCOMPARE(MsgBox(u"Overwrite?"_qs, buttons), enter);
            const NextWindow second([](QWidget& box) { QTest::keyClick(&box, Qt::Key_Escape); });
            QCOMPARE(MsgBox(u"Overwrite?"_qs, buttons), escape);
        }
    }

    void messagesShowTheirTextUnderANormalPointer() {
        const Hourglass hourglass;
        const NextWindow steps([](QWidget& box) {
            QCOMPARE(Child<QLabel>(box, u"qt_msgbox_label"_qs).textFormat(), Qt::PlainText);
            QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
            box.close();
        });
        MsgBox(u"Can't open <b>weir</b>.prj & co."_qs);
        QVERIFY(QGuiApplication::overrideCursor() != nullptr);
    }

    // Without the flag that asks, a file in the way is no matter.
    void savingCompletesTheName() {
        WriteBytes(folder_->filePath(u"old.prj"_qs), "old");
        for (const auto& [typed, name] : {std::pair(u"old"_qs, u"old.prj"_qs),
                                          {u"weir"_qs, u"weir.prj"_qs},
                                          {u"weir.txt"_qs, u"weir.txt"_qs},
                                          {u"big <b>weir"_qs, u"big <b>weir.prj"_qs}}) {
            const NextWindow steps([text = typed](QWidget& dialog) { TakeName(dialog, text); });
            CommonDialog dialog = dialog_;
            dialog.ShowSave();
            QCOMPARE(dialog.FileName, folder_->filePath(name));
            QCOMPARE(dialog.FileTitle, name);
        }
    }

    // The question is about the name with its extension.
    void savingAsksBeforeItReplaces() {
        WriteBytes(folder_->filePath(u"weir.prj"_qs), "old");
        const auto answer = [](QMessageBox::StandardButton button) {
            return [button](QWidget& form) {
                auto& box = dynamic_cast<QMessageBox&>(form);
                QVERIFY2(box.text().startsWith(u"weir.prj "), qPrintable(box.text()));
                box.button(button)->click();
            };
        };
        const NextWindow steps([&](QWidget& dialog) {
            const NextWindow refuse(answer(QMessageBox::No));
            TakeName(dialog, u"weir"_qs);
            QVERIFY(dialog.isVisible());
            const NextWindow agree(answer(QMessageBox::Yes));
            TakeName(dialog, u"weir"_qs);
        });
        dialog_.Flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
        dialog_.ShowSave();
        QCOMPARE(dialog_.FileName, folder_->filePath(u"weir.prj"_qs));
    }

    void filtersListWhatTheyName() {
        for (const QString& name : {u"a.csv"_qs, u"B.DAT"_qs, u"c.mdb"_qs}) {
            WriteBytes(folder_->filePath(name), {});
        }
        const NextWindow steps([](QWidget& form) {
            QTRY_COMPARE(Listed(form), u"B.DAT a.csv"_qs);
            QTest::keyClick(&form, Qt::Key_Escape);
        });
        dialog_.Filter = u"Import File (*.csv;*.dat)|*.csv;*.dat|All Files (*.*)|*.*"_qs;
        dialog_.FileTitle = u"before.prj"_qs;
        QVERIFY_EXCEPTION_THROWN(dialog_.ShowOpen(), DialogCancelledError);
        QCOMPARE(dialog_.FileTitle, u"before.prj"_qs);
    }

    void settingsKeepTexts() {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_->path());
        for (const QString& text : {u"C:\\Stations\\weir, lower; \"x\"=1"_qs, u"@Size(1 2)"_qs,
                                    u"/home/Žofia/水位"_qs, u" a "_qs}) {
            SaveSetting(u"Rillbook"_qs, u"Data"_qs, u"InitDir"_qs, text);
            QCOMPARE(GetSetting(u"Rillbook"_qs, u"Data"_qs, u"InitDir"_qs), text);
        }
        // A file where the folder of settings would be stays what it is.
        const QString blocked = folder_->filePath(u"config"_qs);
        WriteBytes(blocked, "kept");
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, blocked);
        SaveSetting(u"Rillbook"_qs, u"Data"_qs, u"MainTop"_qs, u"7"_qs);
        QCOMPARE(ReadBytes(blocked), "kept");
    }

private:
    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<QtDoors> doors_;
    CommonDialog dialog_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::tst_doors)
#include "tst_doors.moc"
