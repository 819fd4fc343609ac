#include "help/HelpPages.h"

#include <QDesktopServices>
#include <QRegularExpression>

#include "help/ChmFile.h"

namespace rillbook {

namespace {

QString Scheme() {
    return QStringLiteral("chm");
}

}  // namespace

HelpPages::HelpPages(QWidget* parent) : QTextBrowser(parent) {
    // The colours in the pages are chosen for it.
    QPalette paper;
    paper.setColor(QPalette::Base, Qt::white);
    paper.setColor(QPalette::Text, Qt::black);
    setPalette(paper);
}

QUrl HelpPages::AddressOf(const QString& local) {
    return QUrl(Scheme() + QStringLiteral(":/")).resolved(QUrl(local));
}

void HelpPages::ShowLocal(const QString& local) {
    Follow(AddressOf(local));
}

void HelpPages::Follow(const QUrl& address) {
    static const QStringList outside{QStringLiteral("http"), QStringLiteral("https"),
                                     QStringLiteral("mailto")};
    if (address.scheme() == Scheme()) {
        setSource(address, QTextDocument::HtmlResource);
    } else if (outside.contains(address.scheme())) {
        QDesktopServices::openUrl(address);
    }
}

// The document has resolved the address against its page.
QVariant HelpPages::loadResource(int type, const QUrl& name) {
    if (!file_ || name.scheme() != Scheme()) {
        return {};
    }
    if (type == QTextDocument::HtmlResource) {
        return PageText(name.path());
    }
    const std::optional<QByteArray> bytes = file_->Read(name.path());
    return bytes ? QVariant(*bytes) : QVariant();
}

QString HelpPages::PageText(const QString& path) const {
    const QString text = file_->ReadText(path).value_or(QString());
    if (text.isEmpty()) {
        return QStringLiteral("<p>The help file has no readable page %1.</p>")
            .arg(path.toHtmlEscaped());
    }
    // Styles are loaded only from where their type is told.
    static const QRegularExpression untyped(
        QStringLiteral("<link(?=[^>]*\\bstylesheet\\b)(?![^>]*\\btype=)"),
        QRegularExpression::CaseInsensitiveOption);
    return QString(text).replace(untyped, QStringLiteral("<link type=\"text/css\""));
}

}  // namespace rillbook
