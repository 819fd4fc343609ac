#pragma once

#include <QWidget>
#include <memory>

class QTreeWidgetItem;

namespace rillbook {

class ChmFile;

namespace Ui {
class HelpWindow;
}

// The program's one help window: contents and index beside the page. It belongs to no other window,
// so that it can be used while a form is up that holds the rest of the program.
class HelpWindow : public QWidget {
    Q_OBJECT
public:
    enum class Side { Contents, Index };

    // Shows this side of a help file in the window, which is made if there is none. `text` is the
    // file's path, which a window type of the file may follow after ">": all of them show in this
    // window. `topic` is a path within the file, perhaps with an anchor; if it is empty, a file
    // that is shown already keeps its page. With an owner the window stays above it, and lives no
    // longer. Raises HelpFileError, with nothing changed, if the file cannot be shown.
    static HelpWindow& Display(QWidget* owner, const QString& text, Side side,
                               const QString& topic = {});
    static void CloseAll();

    ~HelpWindow() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    HelpWindow();

    void ConnectPages();
    void ConnectLists();
    void SetFile(const QString& path, const std::shared_ptr<const ChmFile>& file);
    void ShowSide(Side side);
    void FilterIndex(const QString& part);
    void ShowTopicOf(const QTreeWidgetItem* row);
    void FollowPage(const QUrl& address);

    std::unique_ptr<Ui::HelpWindow> ui_;
    QString path_;
    QString title_;
};

}  // namespace rillbook
