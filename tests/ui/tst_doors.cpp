#include <sys/wait.h>
#include <unistd.h>

#include <QClipboard>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QSettings>
#include <QTemporaryDir>
#include <csignal>

#include "platform/desktop/Desktop.h"
#include "platform/qt/PictureBox.h"
#include "platform/qt/QtDoors.h"
#include "platform/qt/QtPrinter.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

// Types a name into a file dialog and takes it.
void TakeName(QWidget& dialog, const QString& name) {
    TypeText(dialog, u"fileNameEdit"_qs, name);
    QTest::keyClick(FindChild<QWidget>(dialog, u"fileNameEdit"_qs), Qt::Key_Return);
}

constexpr Colour kGrey{195, 195, 195};

// What the first page of a PDF file draws, one step a line: places, lengths, pens and sizes of
// fonts.
QString Steps(const QByteArray& pdf) {
    static const QRegularExpression wanted(
        u"^(.* (?:cm|re|m|l)$|\\S+ w(?= )|\\S+ \\S+ Td)|(\\S+ Tf)"_qs);
    const QByteArray stream = pdf.sliced(pdf.indexOf("stream\n") + 7);
    QStringList found;
    for (const QByteArray& line : qUncompress(QByteArray("\0\x10\0\0", 4) + stream).split('\n')) {
        found += wanted.match(QString::fromLatin1(line).trimmed()).captured();
    }
    found.removeAll(QString());
    return found.join(u'\n');
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
    void cleanup() { doors_.reset(); }

    void messagesAnswerToKeys() {
        using enum MsgBoxAnswer;
        const struct {
            MsgBoxButtons buttons;
            std::optional<MsgBoxAnswer> byEnter;
            MsgBoxAnswer enter;
            MsgBoxAnswer escape;
        } rows[] = {{MsgBoxButtons::YesNo, {}, Yes, No},
                    {MsgBoxButtons::YesNo, No, No, No},
                    {MsgBoxButtons::YesNoCancel, {}, Yes, Cancel},
                    {MsgBoxButtons::RetryCancel, {}, Retry, Cancel}};
        for (const auto& row : rows) {
            for (const auto& [key, answer] :
                 {std::pair(Qt::Key_Return, row.enter), {Qt::Key_Escape, row.escape}}) {
                const NextWindow press([k = key](QWidget& box) { QTest::keyClick(&box, k); });
                QCOMPARE(MsgBox(u"Overwrite?"_qs, row.buttons, MsgBoxIcon::None, {}, row.byEnter),
                         answer);
            }
        }
    }

    // Without the flag that asks, a file in the way is no matter.
    void savingCompletesTheName() {
        WriteBytes(folder_->filePath(u"old.prj"_qs), "old");
        for (const auto& [typed, name] :
             {std::pair(u"old"_qs, u"old.prj"_qs), {u"weir.txt"_qs, u"weir.txt"_qs}}) {
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
            const NextWindow agree(answer(QMessageBox::Yes));
            TakeName(dialog, u"weir"_qs);
        });
        dialog_.Flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
        dialog_.ShowSave();
        QCOMPARE(dialog_.FileName, folder_->filePath(u"weir.prj"_qs));
    }

    // A file of the typed name comes first, and then that with the extension.
    void openingCompletesOnlyAMissingName() {
        for (const auto& [typed, name] :
             {std::pair(u"gauge7"_qs, u"gauge7"_qs), {u"weir"_qs, u"weir.prj"_qs}}) {
            WriteBytes(folder_->filePath(name), "a");
            WriteBytes(folder_->filePath(u"gauge7.prj"_qs), "b");
            const NextWindow steps([text = typed](QWidget& dialog) { TakeName(dialog, text); });
            CommonDialog dialog = dialog_;
            dialog.ShowOpen();
            QCOMPARE(dialog.FileName, folder_->filePath(name));
        }
    }

    void cancellingLeavesTheName() {
        const NextWindow steps([](QWidget& form) {
            QCOMPARE(dynamic_cast<QFileDialog&>(form).nameFilters().join(u'|'),
                     u"Import File (*.csv;*.dat) (*.csv *.dat)|All Files (*.*) (*)"_qs);
            QTest::keyClick(&form, Qt::Key_Escape);
        });
        dialog_.Filter = u"Import File (*.csv;*.dat)|*.csv;*.dat|All Files (*.*)|*.*"_qs;
        dialog_.FileTitle = u"before.prj"_qs;
        QVERIFY_EXCEPTION_THROWN(dialog_.ShowOpen(), DialogCancelledError);
        QCOMPARE(dialog_.FileTitle, u"before.prj"_qs);
    }

    // Also those of other keys, and those that were typed into the file by hand. A lock file that a
    // killed program left delays nothing.
    void settingsKeepTexts() {
        const QString file = SettingsFile();
        QVERIFY(QDir(folder_->path()).mkdir(u"Rillbook"_qs));
        WriteBytes(file, "[Data]\nA=/data/weirs,lower\nB=1,5\n[Other]\nC=kept\n");
        WriteBytes(file + u".lock"_qs, {});
        QElapsedTimer timer;
        timer.start();
        for (const QString& text : {u"C:\\Stations\\weir, lower; \"x\"=1"_qs, u"@Size(1 2)"_qs,
                                    u"/home/Žofia/水位"_qs, u" a "_qs}) {
            const QMap<QString, QString> texts{{u"D"_qs, text}, {u"B"_qs, u"6"_qs}};
            SaveSettings(u"Rillbook"_qs, u"Data"_qs, texts);
            QCOMPARE(GetSettings(u"Rillbook"_qs, u"Data"_qs),
                     (QMap<QString, QString>{
                         {u"A"_qs, u"/data/weirs,lower"_qs}, {u"B"_qs, u"6"_qs}, {u"D"_qs, text}}));
        }
        QVERIFY(timer.elapsed() < 5000);
        QCOMPARE(GetSettings(u"Rillbook"_qs, u"Other"_qs).value(u"C"_qs), u"kept"_qs);
        const FullDisk full(10);
        SaveSettings(u"Rillbook"_qs, u"Data"_qs, {{u"D"_qs, QString(5000, u'x')}});
        QCOMPARE(GetSettings(u"Rillbook"_qs, u"Data"_qs).value(u"D"_qs), u" a "_qs);
    }

    void killsLeaveOneSetOfSettings() {
        SettingsFile();
        QStringList mixed;
        QSet<QString> found;
        for (int round = 0; round < 40; ++round) {
            const pid_t child = fork();
            qputenv("TMPDIR", folder_->path().toUtf8());  // drafts of killed saves
            for (int save = 0; child == 0; ++save) {
                QMap<QString, QString> texts;
                for (const QChar key : u"ABCDEFGHIJKLM"_qs) {
                    texts.insert(key, QString::number(100 * round + save));
                }
                SaveSettings(u"Rillbook"_qs, u"Data"_qs, texts);
            }
            usleep(static_cast<useconds_t>(5000 + round * 1371));
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            const QStringList values = GetSettings(u"Rillbook"_qs, u"Data"_qs).values();
            found += values.value(0);
            mixed += QSet<QString>(values.begin(), values.end()).size() > 1 ? values.join(u' ')
                                                                            : QString();
        }
        mixed.removeAll(QString());
        QCOMPARE(mixed, QStringList());
        QVERIFY(found.size() > 10);
    }

    void clipboardHoldsTexts() {
        TheClipboard().SetText(u"1.25\t2\r3\t4"_qs);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"1.25\t2\n3\t4"_qs);
        QCOMPARE(TheClipboard().GetText(), u"1.25\t2\r\n3\t4"_qs);
    }

    // Whatever the screen's dots to the pixel.
    void picturesShowWhatIsDrawn() {
        PictureBox picture;
        picture.resize(200, 100);
        picture.show();
        picture.Surface().PaintStrip(kGrey, 1500, 0, 1500, 750);
        const QImage image = picture.grab().toImage();
        const double ratio = picture.devicePixelRatioF();
        QCOMPARE(image.size(), QSize(200, 100) * ratio);
        const QPoint corner(qRound(100 * ratio), qRound(50 * ratio));
        QCOMPARE(image.pixelColor(corner - QPoint(0, 1)), QColor(195, 195, 195));
        QCOMPARE(image.pixelColor(corner - QPoint(1, 1)), QColor(Qt::white));
        QCOMPARE(image.pixelColor(corner), QColor(Qt::white));
    }

    // The nought of Arial is 0.556 of its size wide, so a hundred of them at 8 points 8896 twips.
    void textsHaveTheWidthsOfArial() {
        const std::unique_ptr<Printer> page = BeginPdf(u"page.pdf"_qs);
        const double width = page->TextWidth(QString(100, u'0'));
        QVERIFY2(qAbs(width - 8896) < 40, qPrintable(QString::number(width)));
    }

    void pagesLieAcross() {
        const std::unique_ptr<Printer> page = BeginPdf(u"page.pdf"_qs, QPageSize::A4, cdlLandscape);
        page->Print(u"one"_qs);
        page->NewPage();
        QCOMPARE(QPointF(page->CurrentX, page->CurrentY), QPointF());
        page->EndDoc();
        QCOMPARE(QSizeF(page->Width(), page->Height()), QSizeF(16840, 11900));
        QCOMPARE(ReadBytes(folder_->filePath(u"page.pdf"_qs))
                     .count("/MediaBox [0 0 842.000000 595.000000]"),
                 2);
    }

    // From the corner of the paper, an inch is 1440 twips or 1200 dots or 72 points; a pen of 4 is
    // as wide as on a printer of 600 dots to the inch. The first outline is what can be drawn on;
    // what goes far off ends there. A text stands with its foot 120 dots below its place.
    void pagesAreMeasuredInTwips() {
        const std::unique_ptr<Printer> page = BeginPdf(u"page.pdf"_qs);
        page->Clear(kGrey);
        page->PaintStrip(kGrey, 1440, 2880, 20, 720);
        page->DrawWidth = 4;
        page->Line(1440, 1440, 2880, 1440);
        page->Line(-2e8, 2880, 2e8, 2880);
        page->Line(0, 0, qQNaN(), 100);
        page->Box(720, 720, 1440, 2160);
        page->Font.italic = true;
        page->CurrentX = 1440;
        page->CurrentY = 1440;
        page->Print(u"W"_qs);
        page->EndDoc();
        const QByteArray pdf = ReadBytes(folder_->filePath(u"page.pdf"_qs));
        QCOMPARE(Steps(pdf),
                 u"0.060000000 0 0 -0.060000000 0 792 cm\n"
                 "0 0 m\n9600 0 l\n9600 12600 l\n0 12600 l\n0 0 l\n"
                 "1200 2400 17 600 re\n"
                 "8 w\n1200 1200 m\n2400 1200 l\n-9 2400 m\n9609 2400 l\n"
                 "8 w\n600 600 600 1200 re\n"
                 "1 w\n133 Tf\n1200 -1320 Td"_qs);
        // Texts are texts, in a face that the file brings along.
        QVERIFY(pdf.contains("LiberationSans-Italic") && pdf.contains("/FontFile2") &&
                pdf.contains("/ToUnicode"));
    }

    void filesHaveTheChosenPages() {
        const auto write = [this](const QString& pages) {
            const PdfFile file{folder_->filePath(u"pages.pdf"_qs), QPageRanges::fromString(pages)};
            const QPageLayout layout(QPageSize(QPageSize::Letter), QPageLayout::Portrait, {});
            const std::unique_ptr<Printer> document = NewPdfDocument(file, u"Weir"_qs, layout);
            for (int number = 1; number <= 4; ++number) {
                document->PaintStrip(kGrey, 1200.0 * number, 0, 60, 60);
                document->NewPage();
            }
            document->EndDoc();
            return ReadBytes(file.path);
        };
        const QByteArray pdf = write(u"2-3"_qs);
        QCOMPARE(pdf.count("/MediaBox"), 2);
        QVERIFY2(Steps(pdf).contains(u"\n2000 0 50 50 re"), qPrintable(Steps(pdf)));
        QVERIFY_EXCEPTION_THROWN(write(u"6-7"_qs), PrinterError);
        QCOMPARE(ReadBytes(folder_->filePath(u"pages.pdf"_qs)), pdf);
    }

    void documentsAreWrittenWholeOrNotAtAll() {
        WriteBytes(folder_->filePath(u"old.pdf"_qs), "the old graph");
        const QString before = FolderText(folder_->path());
        BeginPdf(u"old.pdf"_qs)->Print(u"never ended"_qs);
        QCOMPARE(FolderText(folder_->path()), before);
        for (const auto& [name, reason] :
             {std::pair(u"none/page.pdf"_qs, u"No such file or directory"_qs),
              std::pair(u"old.pdf"_qs, u"The disk is full"_qs)}) {
            const std::unique_ptr<Printer> page = BeginPdf(name);
            page->Print(u"Weir"_qs);
            QString told;
            try {
                const FullDisk full(1000);
                page->EndDoc();
            } catch (const PrinterError& failure) {
                told = failure.Reason();
            }
            QCOMPARE(told, u"Can't write %1: %2"_qs.arg(folder_->filePath(name), reason));
            QCOMPARE(FolderText(folder_->path()), before);
        }
    }

    void filesAreAskedForAndServeOneDocument() {
        ScriptedDoors doors;
        QtPrinterDoor printers{QPageSize(QPageSize::A4)};
        doors.CancelFileDialog();
        QVERIFY_EXCEPTION_THROWN(printers.BeginDoc(u"Weir / Stage"_qs, cdlPortrait),
                                 DialogCancelledError);
        doors.AnswerFileDialog(folder_->filePath(u"a.pdf"_qs));
        QVERIFY(printers.Choose(u"Print the graph"_qs, cdlLandscape));
        printers.BeginDoc(u"first"_qs, cdlLandscape)->EndDoc();
        doors.AnswerFileDialog(folder_->filePath(u"b.pdf"_qs));
        printers.BeginDoc(u"second"_qs, cdlPortrait)->EndDoc();
        QCOMPARE(QDir(folder_->path()).entryList(QDir::Files).join(u' '), u"a.pdf b.pdf"_qs);
        QString asked;
        for (const FileRequest& request : doors.fileRequests) {
            QVERIFY(request.save && request.confirmOverwrite);
            asked += request.title + u'|' + request.fileName + u'\n';
        }
        QCOMPARE(asked, u"Print|Weir - Stage.pdf\nPrint the graph|\nPrint|second.pdf\n"_qs);
    }

private:
    QString SettingsFile() const {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_->path());
        return folder_->filePath(u"Rillbook/Rillbook.ini"_qs);
    }

    std::unique_ptr<Printer> BeginPdf(const QString& name,
                                      QPageSize::PageSizeId paper = QPageSize::Letter,
                                      int orientation = cdlPortrait) {
        ScriptedDoors doors;
        doors.AnswerFileDialog(folder_->filePath(name));
        return QtPrinterDoor(QPageSize(paper)).BeginDoc(u"Weir"_qs, orientation);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<QtDoors> doors_;
    CommonDialog dialog_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::tst_doors)
#include "tst_doors.moc"
