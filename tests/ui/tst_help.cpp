#include <QDesktopServices>
#include <QTreeWidget>

#include "forms/main/DesktopApplication.h"
#include "forms/main/frmMain.h"
#include "help/ChmFile.h"
#include "help/HTMLHelp.h"
#include "help/HelpPages.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

const QString kBuiltHelp = QStringLiteral(RILLBOOK_BINARY_DIR "/bin/rillbook.chm");

HelpWindow* Window() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && qobject_cast<HelpWindow*>(window) != nullptr) {
            return qobject_cast<HelpWindow*>(window);
        }
    }
    return nullptr;
}

QTreeWidget& Rows(const char* name) {
    return Child<QTreeWidget>(*Window(), QString::fromLatin1(name));
}

QString AddressOfRow(const QTreeWidgetItem* row) {
    return row == nullptr ? u"no row"_qs
                          : HelpPages::AddressOf(row->data(0, Qt::UserRole).toString()).toString();
}

// "contents chm:/start.html": the side in front, and the page. The current row of the contents must
// be of that page, or none.
QString Shown() {
    if (Window() == nullptr) {
        return u"nothing"_qs;
    }
    const QString address = Child<HelpPages>(*Window(), u"page"_qs).source().toString();
    const QString row = AddressOfRow(Rows("contents").currentItem());
    const bool agrees = row.section(u'#', 0, 0) == address.section(u'#', 0, 0);
    return (Rows("contents").isVisible() ? u"contents "_qs : u"index "_qs) + address +
           (agrees ? QString() : u", "_qs + row);
}

// As the window system delivers it, which keeps it from a window that a modal form holds.
void ClickRow(QTreeWidget& rows, QTreeWidgetItem* row) {
    rows.scrollToItem(row);
    const QPoint at = rows.viewport()->mapTo(rows.window(), rows.visualItemRect(row).center());
    QTest::mouseClick(rows.window()->windowHandle(), Qt::LeftButton, {}, at);
}

QTreeWidgetItem* LastRow(const QTreeWidget& rows) {
    return rows.findItems({}, Qt::MatchContains | Qt::MatchRecursive).last();
}

// Notes what a page asked for and didn't get.
class WatchedPages : public HelpPages {
public:
    QString missed;

    QVariant loadResource(int type, const QUrl& name) override {
        const QVariant found = HelpPages::loadResource(type, name);
        missed += found.isValid() ? QString() : name.toString() + u'\n';
        return found;
    }
};

}  // namespace

class TestHelp : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        help_ = HTMLHelp();
        help_.CHMFile = kBuiltHelp;
    }
    void cleanup() {
        help_.HHClose();
        FormTest::cleanup();
    }

    void tellsWhatHinders_data() {
        const DataRows<QString, QString, QByteArray> row("name", "message", "bytes");
        const QString missing =
            u"The file ~ does not exist.\nPlease make sure the correct path and "
            "file name have been specified."_qs;
        const QString noForm =
            u"The HHDisplayIndex method was called without a form being "
            "specified, while HHShowOnTop was set to True."_qs;
        const QString damaged =
            u"The file ~ cannot be displayed.\nIt is damaged, or is not a "
            "compiled HTML Help file."_qs;
        const QByteArray good = ReadBytes(kBuiltHelp);
        row("help.CHM", "~ is not a valid HTML Help file.", {});
        row("missing.chm", missing, {});
        row("on-top.chm", noForm, "x");
        row("foreign.chm", damaged, "SQLite format 3");
        row("cut.chm", damaged, good.chopped(1));
        row("longer.chm", damaged, good + 'x');
        const qsizetype middle = good.size() / 2;
        row("one-byte.chm", damaged,
            good.left(middle) + static_cast<char>(~good.at(middle)) + good.mid(middle + 1));
    }
    void tellsWhatHinders() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        help_.CHMFile = folder_.filePath(name);
        help_.HHShowOnTop = name.startsWith(u"on-top");
        if (!bytes.isEmpty()) {
            WriteBytes(help_.CHMFile, bytes);
        }
        doors_->ExpectMessage(message.replace(u'~', help_.CHMFile));
        help_.HHDisplayIndex();
        QCOMPARE(Shown() + u" %1"_qs.arg(help_.HHWndHandle), u"nothing 0"_qs);
        QCOMPARE(doors_->shownMessages.at(0).title, u"HTML Help Class"_qs);
    }

    // The sources' links are checked where they are written; here, that all of it was packed.
    void showsEveryTopicWhole() {
        const auto file = std::make_shared<const ChmFile>(kBuiltHelp);
        WatchedPages pages;
        pages.SetFile(file);
        int shown = 0;
        for (const SitemapEntry& entry : file->Contents() + file->Index()) {
            for (const SitemapTopic& topic : entry.topics) {
                pages.ShowLocal(topic.local);
                pages.document()->setTextWidth(600);
                pages.missed += pages.documentTitle().isEmpty() ? topic.local + u'\n' : QString();
                ++shown;
            }
        }
        QVERIFY(shown > 100);
        QCOMPARE(pages.missed, QString());
    }

    void staysWhiteOnADarkDesktop() {
        const QPalette before = QApplication::palette();
        QApplication::setPalette(QPalette(Qt::black));
        HelpPages pages;
        pages.setHtml(u"<p>Stage</p>"_qs);
        const QImage page = pages.viewport()->grab().toImage();
        QApplication::setPalette(before);
        QCOMPARE(page.pixelColor(0, 0), QColor(Qt::white));
        QCOMPARE(pages.palette().color(QPalette::Text), QColor(Qt::black));
    }

    void readsSitemaps() {
        const QString object = u"<LI><OBJECT type=\"text/sitemap\">%1</OBJECT>"_qs;
        const QString a =
            object.arg(u"<param name=\"Name\" value=\"a\"><param name=Local value=x>"_qs);
        const QString b =
            object.arg(u"<PARAM value='<b &gt; &#228; &quot;c&quot;' NAME='name'>"_qs);
        const QString k = object.arg(
            u"<param name=Name value=k><param name=Name value=\"One > two\"><param "
            "name=Local value=1><param name=Local value=2>"_qs);
        const QString nameless = object.arg(u"<param name=Local value=x>"_qs);
        QStringList entries;
        for (const SitemapEntry& entry :
             ParseSitemap(b + u"</ul></ul><ul><ul><ul>"_qs + a + nameless + u"</ul></ul>"_qs + k +
                          a + u"<LI><OBJECT><param name=\"Name"_qs)) {
            entries << QString::number(entry.depth) + u' ' + entry.name;
            for (const SitemapTopic& topic : entry.topics) {
                entries << topic.title + u'=' + topic.local;
            }
        }
        QCOMPARE(entries.join(u" | "),
                 u"0 <b > ä \"c\" | 1 a | a=x | 0 k | One > two=1 | k=2 | 0 a | a=x"_qs);
    }

    void showsOneWindow() {
        help_.HHWindow = u" main "_qs;
        help_.HHDisplayContents();
        HelpWindow* first = Window();
        const QString start = u"chm:"_qs + ChmFile(kBuiltHelp).DefaultTopic();
        QCOMPARE(Shown(), u"contents "_qs + start);
        QCOMPARE(help_.HHWndHandle, first->winId());
        const QString other = AddressOfRow(LastRow(Rows("contents")));
        ClickRow(Rows("contents"), LastRow(Rows("contents")));
        help_.HHDisplayIndex();
        QCOMPARE(Window(), first);
        QCOMPARE(Shown(), u"index "_qs + other);
        QVERIFY(other != start);
        QTest::keyClick(first->windowHandle(), Qt::Key_Left, Qt::AltModifier);
        QCOMPARE(Shown(), u"index "_qs + start);
        QTest::keyClick(first->windowHandle(), Qt::Key_Right, Qt::AltModifier);
        QCOMPARE(Shown(), u"index "_qs + other);
        QTest::keyClick(first->windowHandle(), Qt::Key_Escape);
        QCOMPARE(Shown(), u"nothing"_qs);
        help_.HHDisplayIndex();
        QCOMPARE(Shown(), u"index "_qs + start);
    }

    void filtersTheIndex() {
        help_.HHDisplayIndex();
        QTreeWidgetItem* row = LastRow(Rows("index"));
        TypeText(*Window(), u"filter"_qs, row->text(0).toUpper());
        QTest::keyClick(Window()->windowHandle(), Qt::Key_Return);
        QCOMPARE(Shown(), u"index "_qs + AddressOfRow(row));
        QVERIFY(Rows("index").topLevelItem(0)->isHidden() && !row->isHidden());
        TypeText(*Window(), u"filter"_qs, u"no such keyword"_qs);
        QTest::keyClick(Window()->windowHandle(), Qt::Key_Return);
        QVERIFY(Rows("index").currentItem() == nullptr && row->isHidden());
    }

    // A missing page says so; the web is the desktop's affair, and a file nobody's.
    void followsLinks() {
        QStringList seen;
        for (const char* link :
             {"file:///etc/passwd", "https://example.org/", "chm:/gone.html#x"}) {
            const QUrl address(QString::fromLatin1(link));
            QDesktopServices::setUrlHandler(address.scheme(), this, "Opened");
            help_.HHDisplayContents();
            auto& page = Child<HelpPages>(*Window(), u"page"_qs);
            Q_EMIT page.anchorClicked(address);
            QDesktopServices::unsetUrlHandler(address.scheme());
            QVERIFY(!page.toPlainText().isEmpty());
            seen << Shown();
        }
        const QString start = u"contents chm:"_qs + ChmFile(kBuiltHelp).DefaultTopic();
        QCOMPARE(seen.join(u'|'), start + u'|' + start + u"|contents chm:/gone.html#x, no row"_qs);
        QCOMPARE(opened_, u"https://example.org/"_qs);
    }

    void staysInUseBesideAReport() {
        station_->WithReadings("2002-01-01", 720, {2, 4});
        frmMain main;
        main.show();
        main.EnableStationMenus(true);
        const auto opensFileMenu = [&main] {
            QTest::mouseClick(main.windowHandle(), Qt::LeftButton, {}, QPoint(10, 10));
            QWidget* menu = QApplication::activePopupWidget();
            return menu != nullptr && menu->close();
        };
        QVERIFY(opensFileMenu());
        for (const char* report : {"mnuOutInstT", "mnuOutDailyG"}) {
            const NextWindow settings([](QWidget& form) { Click(form, u"cmdOK"_qs); });
            const NextWindow shown([&](QWidget& form) {
                Trigger(form, u"mnuHelpIndex"_qs);
                Trigger(form, u"mnuHelpContent"_qs);
                QTreeWidgetItem* last = LastRow(Rows("contents"));
                ClickRow(Rows("contents"), last);
                QCOMPARE(Shown(), u"contents "_qs + AddressOfRow(last));
                const NextWindow about([](QWidget& box) {
                    ClickRow(Rows("contents"), Rows("contents").topLevelItem(0));
                    box.close();
                });
                Trigger(form, u"mnuHelpAbout"_qs);
                QVERIFY(Shown() != u"contents "_qs + AddressOfRow(last));
                QVERIFY(!opensFileMenu());
                form.close();
            });
            Trigger(main, QString::fromLatin1(report));
        }
        Trigger(main, u"mnuHelpIndex"_qs);
        QVERIFY(Shown().startsWith(u"index"));
        Trigger(main, u"mnuFileExit"_qs);
        QCOMPARE(Shown(), u"nothing"_qs);
    }

public Q_SLOTS:
    void Opened(const QUrl& address) { opened_ += address.toString(); }

private:
    const QTemporaryDir folder_;
    HTMLHelp help_;
    QString opened_;
};

}  // namespace rillbook

int main(int argc, char* argv[]) {
    const rillbook::DesktopApplication application(argc, argv);
    rillbook::TestHelp test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_help.moc"
