#include "forms/main/WindowKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPushButton>
#include <QToolButton>
#include <algorithm>

#include "help/HTMLHelp.h"

namespace rillbook {

namespace {

// The page of one window; empty if the window has none.
QString OwnTopic(const QWidget& window) {
    static const QMap<QString, QString> pages{
        {QStringLiteral("frmMain"), QStringLiteral("main-window.html")},
        {QStringLiteral("frmAbout"), QStringLiteral("about.html")},
        {QStringLiteral("frmImport"), QStringLiteral("import-setup.html")},
        {QStringLiteral("frmCalibration"), QStringLiteral("journal.html")},
        {QStringLiteral("frmRating"), QStringLiteral("rating-list.html")},
        {QStringLiteral("frmConversionT"), QStringLiteral("rating-table.html")},
        {QStringLiteral("frmConversionEq"), QStringLiteral("rating-equation.html")},
        {QStringLiteral("frmOutputSettings"), QStringLiteral("output-settings.html")},
        {QStringLiteral("frmInstT"), QStringLiteral("instantaneous-table.html")},
        {QStringLiteral("frmDailyT"), QStringLiteral("daily-table.html")},
        {QStringLiteral("frmAnnualT"), QStringLiteral("annual-table.html")},
        {QStringLiteral("frmAnnualTPrint"), QStringLiteral("print-settings.html")},
        {QStringLiteral("frmInstG"), QStringLiteral("instantaneous-graph.html")},
        {QStringLiteral("frmDailyG"), QStringLiteral("daily-graph.html")},
        {QStringLiteral("frmEditRecords"), QStringLiteral("edit-records.html")},
        {QStringLiteral("frmDelete"), QStringLiteral("edit-records.html#delete")},
        {QStringLiteral("HelpWindow"), QStringLiteral("keys.html#help")}};
    if (qobject_cast<const QMessageBox*>(&window) != nullptr) {
        return QStringLiteral("messages.html");
    }
    if (qobject_cast<const QPrintDialog*>(&window) != nullptr) {
        return QStringLiteral("printing.html");
    }
    return pages.value(window.objectName());
}

bool IsEnter(const QKeyEvent& key) {
    return key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
}

bool IsCharacterWithAlt(const QKeyEvent& key) {
    const Qt::KeyboardModifiers others = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return (key.modifiers() & others) == Qt::AltModifier && !key.text().isEmpty() &&
           key.text().front().isPrint();
}

// The first menu of the window's bar that `isWanted` and that the user can open; nullptr if there
// is none.
template <typename IsWanted>
QAction* FindMenu(const QMenuBar& bar, IsWanted isWanted) {
    const QList<QAction*> menus = bar.actions();
    const auto found = std::find_if(menus.begin(), menus.end(), [&](const QAction* menu) {
        return menu->isVisible() && menu->isEnabled() && isWanted(*menu);
    });
    return found == menus.end() ? nullptr : *found;
}

template <typename IsWanted>
bool OpenMenu(const QWidget& window, IsWanted isWanted) {
    auto* bar = window.findChild<QMenuBar*>();
    QAction* menu = bar == nullptr || !bar->isVisible() ? nullptr : FindMenu(*bar, isWanted);
    if (menu == nullptr) {
        return false;
    }
    bar->setActiveAction(menu);
    return true;
}

bool OpenFirstMenu(const QWidget& window) {
    return OpenMenu(window, [](const QAction&) { return true; });
}

// Menus that mark a letter have a shortcut for it.
void OpenUnmarkedMenu(const QWidget& window, const QString& letter) {
    OpenMenu(window, [&](const QAction& menu) {
        return QKeySequence::mnemonic(menu.text()).isEmpty() &&
               menu.text().startsWith(letter, Qt::CaseInsensitive);
    });
}

// Gives the focus back to the control that had it, once Esc has closed a menu of a bar. The bar
// would keep it for another Esc, and not every style shows that.
void LeaveBarOf(const QMenu& menu) {
    for (QObject* owner : menu.menuAction()->associatedObjects()) {
        if (auto* bar = qobject_cast<QMenuBar*>(owner)) {
            const auto leave = [bar] {
                QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
                QCoreApplication::sendEvent(bar, &escape);
            };
            QMetaObject::invokeMethod(bar, leave, Qt::QueuedConnection);
        }
    }
}

}  // namespace

WindowKeys::WindowKeys() {
    qApp->installEventFilter(this);
}

QString WindowKeys::HelpTopic(const QWidget& window) {
    for (const QWidget* owner = &window; owner != nullptr; owner = owner->parentWidget()) {
        const QString page = OwnTopic(*owner);
        if (!page.isEmpty()) {
            return page;
        }
    }
    return {};
}

bool WindowKeys::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && watched->isWidgetType() &&
        PressKey(*static_cast<QWidget*>(watched), *static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return false;
}

bool WindowKeys::PressKey(QWidget& target, const QKeyEvent& key) {
    const bool isPlain = (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (isPlain && key.key() == Qt::Key_F1) {
        ShowHelpTopic(HelpTopic(target));
        return true;
    }
    // An open menu has keys of its own, and Alt may still be held in it.
    if (auto* menu = qobject_cast<QMenu*>(&target)) {
        if (key.key() == Qt::Key_Escape) {
            LeaveBarOf(*menu);
        }
        return false;
    }
    if (qobject_cast<QMenuBar*>(&target) != nullptr) {
        return false;
    }
    if (isPlain && key.key() == Qt::Key_F10) {
        return OpenFirstMenu(*target.window());
    }
    if (IsCharacterWithAlt(key)) {
        OpenUnmarkedMenu(*target.window(), key.text());
        return true;
    }
    auto* button = qobject_cast<QAbstractButton*>(&target);
    if (isPlain && IsEnter(key) &&
        (qobject_cast<QPushButton*>(button) != nullptr ||
         qobject_cast<QToolButton*>(button) != nullptr)) {
        button->click();
        return true;
    }
    return false;
}

}  // namespace rillbook
