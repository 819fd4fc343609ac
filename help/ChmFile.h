#pragma once

#include <QByteArray>
#include <QStringList>
#include <memory>
#include <optional>

#include "help/ChmDirectory.h"
#include "help/Sitemap.h"

struct chmFile;

namespace rillbook {

// A compiled help file, open for reading while it lives.
class ChmFile {
public:
    // Raises HelpFileError where the file can't be opened, is no compiled help or is damaged so
    // that neither its contents nor its first page can be read.
    explicit ChmFile(const QString& path);

    // The pages, pictures and lists: "/start.html". Not what the format keeps for itself.
    QStringList Paths() const;

    // Nothing where there is no such object, where it can't be unpacked, or is past all measure.
    // Capitals and small letters are the same.
    std::optional<QByteArray> Read(const QString& path) const;
    // The same as text: UTF-8, or Windows-1252 where it isn't that.
    std::optional<QString> ReadText(const QString& path) const;

    const QString& Title() const { return title_; }
    // "/start.html"
    const QString& DefaultTopic() const { return defaultTopic_; }
    // Empty where the file has none.
    QList<SitemapEntry> Contents() const { return ReadSitemap(contentsPath_); }
    QList<SitemapEntry> Index() const { return ReadSitemap(indexPath_); }

private:
    void ReadSystem();
    QString FirstPathWith(const QString& suffix) const;
    QList<SitemapEntry> ReadSitemap(const QString& path) const;

    struct Closer {
        void operator()(chmFile* file) const;
    };
    std::vector<ChmObject> objects_;
    std::unique_ptr<chmFile, Closer> file_;
    QString title_;
    QString defaultTopic_;
    QString contentsPath_;
    QString indexPath_;
};

}  // namespace rillbook
