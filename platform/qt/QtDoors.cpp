#include "platform/qt/QtDoors.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <algorithm>
#include <memory>

#include "platform/desktop/Desktop.h"
#include "platform/desktop/ReplaceFile.h"

namespace rillbook {

namespace {

// The normal pointer while a box is up in the middle of long work.
class NormalPointer {
public:
    NormalPointer() : busy_(TheScreen().MousePointer() != vbDefault) {
        if (busy_) {
            TheScreen().SetMousePointer(vbDefault);
        }
    }
    ~NormalPointer() {
        if (busy_) {
            TheScreen().SetMousePointer(vbHourglass);
        }
    }
    NormalPointer(const NormalPointer&) = delete;
    NormalPointer& operator=(const NormalPointer&) = delete;

private:
    bool busy_;
};

QMessageBox::Icon IconOf(MsgBoxIcon icon) {
    switch (icon) {
        case MsgBoxIcon::Information:
            return QMessageBox::Information;
        case MsgBoxIcon::Exclamation:
            return QMessageBox::Warning;
        default:
            return QMessageBox::NoIcon;
    }
}

// The last button is that of the Escape key and the close box.
QList<QMessageBox::StandardButton> ButtonsOf(MsgBoxButtons buttons) {
    switch (buttons) {
        case MsgBoxButtons::YesNo:
            return {QMessageBox::Yes, QMessageBox::No};
        case MsgBoxButtons::YesNoCancel:
            return {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel};
        case MsgBoxButtons::RetryCancel:
            return {QMessageBox::Retry, QMessageBox::Cancel};
        default:
            return {QMessageBox::Ok};
    }
}

MsgBoxAnswer AnswerOf(int button) {
    switch (button) {
        case QMessageBox::Yes:
            return MsgBoxAnswer::Yes;
        case QMessageBox::No:
            return MsgBoxAnswer::No;
        case QMessageBox::Cancel:
            return MsgBoxAnswer::Cancel;
        case QMessageBox::Retry:
            return MsgBoxAnswer::Retry;
        default:
            return MsgBoxAnswer::Ok;
    }
}

struct Filters {
    QStringList names;           // "Text (*.a) (*.a *.b)"; the last pair of brackets isn't shown
    QString suffix;              // of the first pattern, without the point; empty for all files
    bool hasOnlySuffix = false;  // no other pattern stands beside it
};

// Of "Text (*.a)|*.a;*.b|All Files (*.*)|*.*", where "*.*" means names without a point too.
Filters ReadFilter(const QString& filter) {
    Filters filters;
    const QStringList parts = filter.split(u'|');
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns = parts.at(i + 1).split(u';', Qt::SkipEmptyParts);
        patterns.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
        filters.names +=
            QStringLiteral("%1 (%2)").arg(parts.at(i), patterns.join(QStringLiteral(" ")));
        if (i == 0 && patterns.value(0).startsWith(QStringLiteral("*."))) {
            filters.suffix = patterns.at(0).sliced(2);
            filters.hasOnlySuffix = patterns.size() == 1;
        }
    }
    return filters;
}

// A dialog for a file that exists. Completes a typed name only if no file has that name.
class OpenDialog : public QFileDialog {
public:
    OpenDialog(QWidget* parent, const QString& title, const QString& folder, const QString& suffix)
        : QFileDialog(parent, title, folder), suffix_(suffix) {
        setOption(QFileDialog::DontUseNativeDialog);
        setFileMode(QFileDialog::ExistingFile);
        const auto* edit = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        auto* buttons = findChild<QDialogButtonBox*>();
        connect(edit, &QLineEdit::textChanged, this, [this, buttons] {
            // Outside of this, no extension is set: the dialog would select a completed name in its
            // list although a file of the shorter name was clicked.
            if (IsFileFound()) {
                buttons->button(QDialogButtonBox::Open)->setEnabled(true);
            }
            setDefaultSuffix({});
        });
    }

protected:
    void accept() override {
        IsFileFound();
        QFileDialog::accept();
        if (isVisible()) {
            setDefaultSuffix({});
        }
    }

private:
    // Looks for the name as it is typed, then for the completed one.
    bool IsFileFound() {
        for (const QString& suffix : {QString(), suffix_}) {
            setDefaultSuffix(suffix);
            const QStringList files = selectedFiles();
            if (files.size() == 1 && QFileInfo::exists(files.front())) {
                return true;
            }
        }
        return false;
    }

    const QString suffix_;
};

// The dialog completes the name before it asks about a file of that name.
std::unique_ptr<QFileDialog> MakeDialog(const FileRequest& request, const Filters& filters) {
    QWidget* owner = WindowOnTop();
    const bool isFolder = !request.folder.isEmpty() && QFileInfo(request.folder).isDir();
    const QString folder = isFolder ? request.folder : QDir::homePath();
    if (!request.save) {
        return std::make_unique<OpenDialog>(owner, request.title, folder,
                                            filters.hasOnlySuffix ? filters.suffix : QString());
    }
    auto dialog = std::make_unique<QFileDialog>(owner, request.title, folder);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDefaultSuffix(filters.suffix);
    dialog->setOption(QFileDialog::DontConfirmOverwrite, !request.confirmOverwrite);
    return dialog;
}

}  // namespace

QWidget* WindowOnTop() {
    if (QWidget* modal = QApplication::activeModalWidget()) {
        return modal;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto main = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
        return window->isVisible() && qobject_cast<const QMainWindow*>(window) != nullptr;
    });
    return main != windows.end() ? *main : QApplication::activeWindow();
}

QtDoors::QtDoors(const QString& programTitle) {
    TheDesktop() = Desktop{.programTitle = programTitle,
                           .messages = this,
                           .fileDialogs = this,
                           .settings = this,
                           .clipboard = this,
                           .screen = this,
                           .printers = &printers_};
}

QtDoors::~QtDoors() {
    QtDoors::SetMousePointer(vbDefault);
    TheDesktop() = {};
}

MsgBoxAnswer QtDoors::Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                           const QString& title, std::optional<MsgBoxAnswer> byEnter) {
    const NormalPointer pointer;
    QMessageBox box(WindowOnTop());
    box.setWindowTitle(title);
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setIcon(IconOf(icon));
    const QList<QMessageBox::StandardButton> choice = ButtonsOf(buttons);
    for (const QMessageBox::StandardButton button : choice) {
        QPushButton* added = box.addButton(button);
        if (AnswerOf(button) == byEnter.value_or(AnswerOf(choice.first()))) {
            box.setDefaultButton(added);
        }
    }
    box.setEscapeButton(choice.last());
    return AnswerOf(box.exec());
}

std::optional<QString> QtDoors::Ask(const FileRequest& request) {
    const NormalPointer pointer;
    const Filters filters = ReadFilter(request.filter);
    const std::unique_ptr<QFileDialog> dialog = MakeDialog(request, filters);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    if (!filters.names.isEmpty()) {
        dialog->setNameFilters(filters.names);
    }
    if (!request.fileName.isEmpty()) {
        dialog->selectFile(request.fileName);
    }
    if (dialog->exec() != QDialog::Accepted || dialog->selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return QFileInfo(dialog->selectedFiles().first()).absoluteFilePath();
}

QMap<QString, QString> QtDoors::Get(const QString& application, const QString& section) {
    QSettings store(QSettings::IniFormat, QSettings::UserScope, application, application);
    store.beginGroup(section);
    QMap<QString, QString> texts;
    const QStringList keys = store.childKeys();
    for (const QString& key : keys) {
        // A comma without quotes, typed by hand, makes a list of the text.
        texts.insert(key, store.value(key).toStringList().join(u','));
    }
    return texts;
}

// QSettings would wait half a minute for the lock file of a program that was killed while making
// it. So it only makes the bytes, in a folder of their own, and the file is replaced as a whole.
void QtDoors::Save(const QString& application, const QString& section,
                   const QMap<QString, QString>& texts) {
    const QSettings stored(QSettings::IniFormat, QSettings::UserScope, application, application);
    const QTemporaryDir folder;
    const QString draft = folder.filePath(QStringLiteral("settings.ini"));
    QSettings changed(draft, QSettings::IniFormat);
    const QStringList keys = stored.allKeys();
    for (const QString& key : keys) {
        changed.setValue(key, stored.value(key));
    }
    for (const auto& [key, text] : texts.asKeyValueRange()) {
        changed.setValue(section + u'/' + key, text);
    }
    changed.sync();
    QFile bytes(draft);
    if (stored.status() != QSettings::AccessError && changed.status() == QSettings::NoError &&
        bytes.open(QIODevice::ReadOnly)) {
        QDir().mkpath(QFileInfo(stored.fileName()).path());
        ReplaceFile(stored.fileName(), bytes.readAll());
    }
}

void QtDoors::Clear() {
    QGuiApplication::clipboard()->clear();
}

// Other programs end a line as their system does: here with a line feed.
void QtDoors::SetText(const QString& text) {
    QGuiApplication::clipboard()->setText(
        QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n'));
}

QString QtDoors::GetText() {
    return QGuiApplication::clipboard()
        ->text()
        .replace(QStringLiteral("\r\n"), QStringLiteral("\n"))
        .replace(u'\n', QStringLiteral("\r\n"));
}

void QtDoors::SetMousePointer(int pointer) {
    if (pointer_ == vbDefault && pointer != vbDefault) {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    } else if (pointer_ != vbDefault && pointer == vbDefault) {
        QGuiApplication::restoreOverrideCursor();
    }
    pointer_ = pointer;
}

int QtDoors::MousePointer() const {
    return pointer_;
}

}  // namespace rillbook
