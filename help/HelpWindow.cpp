#include "help/HelpWindow.h"

#include <QFileInfo>
#include <QPointer>
#include <QTreeWidgetItemIterator>

#include "help/ChmFile.h"
#include "ui_HelpWindow.h"

namespace rillbook {

namespace {

constexpr int kLocal = Qt::UserRole;

QPointer<HelpWindow>& TheWindow() {
    static QPointer<HelpWindow> window;
    return window;
}

QString PathIn(const QString& text) {
    return QFileInfo(text).isFile() ? text : text.section(u'>', 0, -2);
}

// A row of the contents or of the index, below the last row that stands further out.
QTreeWidgetItem* AppendRow(QTreeWidget& tree, QList<QTreeWidgetItem*>& above, int depth,
                           const QString& text, const QString& local) {
    above.resize(std::min<qsizetype>(above.size(), depth));
    auto* row = above.isEmpty() ? new QTreeWidgetItem(&tree) : new QTreeWidgetItem(above.last());
    row->setText(0, text);
    row->setData(0, kLocal, local);
    above.append(row);
    return row;
}

// A keyword with several topics has a row for each below its own.
void Fill(QTreeWidget& tree, const QList<SitemapEntry>& entries) {
    tree.clear();
    QList<QTreeWidgetItem*> above;
    for (const SitemapEntry& entry : entries) {
        const bool hasOneTopic = entry.topics.size() == 1;
        AppendRow(tree, above, entry.depth, entry.name,
                  hasOneTopic ? entry.topics.first().local : QString());
        for (const SitemapTopic& topic : entry.topics) {
            if (!hasOneTopic) {
                AppendRow(tree, above, entry.depth + 1, topic.title, topic.local);
            }
        }
    }
}

}  // namespace

HelpWindow& HelpWindow::Display(QWidget* owner, const QString& text, Side side,
                                const QString& topic) {
    const QString path = PathIn(text);
    HelpWindow* window = TheWindow();
    if (window == nullptr || window->path_ != path) {
        const auto file = std::make_shared<const ChmFile>(path);
        if (window == nullptr) {
            window = new HelpWindow;
            TheWindow() = window;
        }
        window->SetFile(path, file);
    }
    if (window->parentWidget() != owner) {
        window->setParent(owner, window->windowFlags());
    }
    window->ShowSide(side);
    if (!topic.isEmpty()) {
        window->ui_->page->ShowLocal(topic);
        window->ui_->page->setFocus();  // to scroll it with the keyboard
    }
    return *window;
}

void HelpWindow::CloseAll() {
    if (TheWindow() != nullptr) {
        TheWindow()->close();
    }
}

HelpWindow::HelpWindow() : QWidget(nullptr, Qt::Window), ui_(std::make_unique<Ui::HelpWindow>()) {
    ui_->setupUi(this);
    ui_->splitter->setSizes({250, 600});
    ConnectPages();
    ConnectLists();
    connect(ui_->mnuClose, &QAction::triggered, this, &QWidget::close);
    addActions({ui_->mnuBack, ui_->mnuForward, ui_->mnuClose});
}

HelpWindow::~HelpWindow() = default;

void HelpWindow::ConnectPages() {
    HelpPages* pages = ui_->page;
    ui_->cmdBack->setDefaultAction(ui_->mnuBack);
    ui_->cmdForward->setDefaultAction(ui_->mnuForward);
    connect(pages, &QTextBrowser::backwardAvailable, ui_->mnuBack, &QAction::setEnabled);
    connect(pages, &QTextBrowser::forwardAvailable, ui_->mnuForward, &QAction::setEnabled);
    connect(ui_->mnuBack, &QAction::triggered, pages, &QTextBrowser::backward);
    connect(ui_->mnuForward, &QAction::triggered, pages, &QTextBrowser::forward);
    connect(pages, &QTextBrowser::anchorClicked, pages, &HelpPages::Follow);
    connect(pages, &QTextBrowser::sourceChanged, this, &HelpWindow::FollowPage);
}

void HelpWindow::ConnectLists() {
    for (QTreeWidget* rows : {ui_->contents, ui_->index}) {
        connect(rows, &QTreeWidget::itemClicked, this, &HelpWindow::ShowTopicOf);
        connect(rows, &QTreeWidget::itemActivated, this, &HelpWindow::ShowTopicOf);
    }
    connect(ui_->filter, &QLineEdit::textChanged, this, &HelpWindow::FilterIndex);
    connect(ui_->filter, &QLineEdit::returnPressed, this,
            [this] { ShowTopicOf(ui_->index->currentItem()); });
}

void HelpWindow::SetFile(const QString& path, const std::shared_ptr<const ChmFile>& file) {
    path_ = path;
    title_ = file->Title();
    Fill(*ui_->contents, file->Contents());
    ui_->contents->expandToDepth(0);
    Fill(*ui_->index, file->Index());
    ui_->index->expandAll();
    ui_->filter->clear();
    ui_->page->SetFile(file);
    ui_->page->clearHistory();
    ui_->page->ShowLocal(file->DefaultTopic());
    ui_->page->clearHistory();
}

void HelpWindow::ShowSide(Side side) {
    const bool isIndex = side == Side::Index;
    ui_->sides->setCurrentWidget(isIndex ? ui_->indexSide : ui_->contentsSide);
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
    (isIndex ? static_cast<QWidget*>(ui_->filter) : ui_->contents)->setFocus();
}

// Also the rows above and below one that has the text, which tell what it is about.
void HelpWindow::FilterIndex(const QString& part) {
    QTreeWidgetItem* firstFound = nullptr;
    for (QTreeWidgetItemIterator row(ui_->index); *row != nullptr; ++row) {
        const QTreeWidgetItem* above = (*row)->parent();
        const bool isFound = (*row)->text(0).contains(part, Qt::CaseInsensitive);
        (*row)->setHidden(!isFound && (above == nullptr || above->isHidden()));
        if (isFound) {
            firstFound = firstFound == nullptr ? *row : firstFound;
            for (QTreeWidgetItem* outer = (*row)->parent(); outer != nullptr;
                 outer = outer->parent()) {
                outer->setHidden(false);
            }
        }
    }
    ui_->index->setCurrentItem(firstFound);
}

void HelpWindow::ShowTopicOf(const QTreeWidgetItem* row) {
    const QString local = row == nullptr ? QString() : row->data(0, kLocal).toString();
    if (!local.isEmpty()) {
        ui_->page->ShowLocal(local);
    }
}

// The title, and the page's row in the contents: that of its anchor, else the first of the page.
void HelpWindow::FollowPage(const QUrl& address) {
    const QString topic = ui_->page->documentTitle();
    setWindowTitle(topic.isEmpty() ? title_ : topic + QStringLiteral(" - ") + title_);
    QTreeWidgetItem* found = nullptr;
    for (QTreeWidgetItemIterator row(ui_->contents); *row != nullptr; ++row) {
        const QUrl ofRow = HelpPages::AddressOf((*row)->data(0, kLocal).toString());
        if (ofRow == address) {
            found = *row;
            break;
        }
        if (found == nullptr && ofRow.matches(address, QUrl::RemoveFragment)) {
            found = *row;
        }
    }
    ui_->contents->setCurrentItem(found);
}

void HelpWindow::closeEvent(QCloseEvent*) {
    TheWindow().clear();
    deleteLater();
}

}  // namespace rillbook
