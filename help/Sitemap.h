#pragma once

#include <QList>
#include <QString>

namespace rillbook {

struct SitemapTopic {
    QString title;
    QString local;  // as written: a path within the help file, maybe with an anchor
};

// One line of a contents or index file. A book of the contents may have no topic, a keyword of the
// index several.
struct SitemapEntry {
    int depth = 0;  // 0 at the outermost list; one more than the entry before it at most
    QString name;
    QList<SitemapTopic> topics;
};

// The entries in the order of the text, which stands in nested lists. Takes whatever comes: what
// has no name is left out, lists nested deeper than 20 are taken as that deep, and what follows an
// unclosed tag is lost.
QList<SitemapEntry> ParseSitemap(const QString& text);

}  // namespace rillbook
