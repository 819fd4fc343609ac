#pragma once

#include <QTextBrowser>
#include <memory>

namespace rillbook {

class ChmFile;

// Shows the pages of a compiled help file, with their pictures and styles, on white whatever the
// desktop's colours; nothing from elsewhere.
// Addresses are "chm:/start.html#anchor".
class HelpPages : public QTextBrowser {
    Q_OBJECT
public:
    explicit HelpPages(QWidget* parent = nullptr);

    void SetFile(std::shared_ptr<const ChmFile> file) { file_ = std::move(file); }
    // `local` is a path within the file, maybe with an anchor.
    void ShowLocal(const QString& local);
    static QUrl AddressOf(const QString& local);

    // An address outside the file goes to the desktop if it is one of the web or of mail, and
    // nowhere else.
    void Follow(const QUrl& address);

    QVariant loadResource(int type, const QUrl& name) override;

private:
    QString PageText(const QString& path) const;

    std::shared_ptr<const ChmFile> file_;
};

}  // namespace rillbook
