#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <memory>
#include <optional>
#include <stdexcept>

#include "help/Sitemap.h"

struct chmFile;

namespace rillbook {

// The help file is missing or is not the one that was built with the program. The text is for
// developers.
class HelpFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The compiled help file of this program, open for reading during the object's lifetime.
class ChmFile {
public:
    // Raises HelpFileError if the file cannot be opened or any of its bytes differs from the file
    // that the build made.
    explicit ChmFile(const QString& path);

    // The bytes of a page, picture or list, such as "/start.html", in any case. Returns nothing if
    // the file has no such object or it cannot be unpacked.
    std::optional<QByteArray> Read(const QString& path) const;
    // The same as text: UTF-8, or Windows-1252 if the bytes are not UTF-8.
    std::optional<QString> ReadText(const QString& path) const;

    const QString& Title() const { return title_; }
    // "/start.html"
    const QString& DefaultTopic() const { return defaultTopic_; }
    QList<SitemapEntry> Contents() const { return ReadSitemap(contentsPath_); }
    QList<SitemapEntry> Index() const { return ReadSitemap(indexPath_); }

private:
    void ReadSystem();
    QList<SitemapEntry> ReadSitemap(const QString& path) const;

    struct Closer {
        void operator()(chmFile* file) const;
    };
    std::unique_ptr<chmFile, Closer> file_;
    QString title_;
    QString defaultTopic_;
    QString contentsPath_;
    QString indexPath_;
};

}  // namespace rillbook
