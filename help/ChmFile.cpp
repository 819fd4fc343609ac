#include "help/ChmFile.h"

#include <chm_lib.h>

#include <QCryptographicHash>
#include <QFile>
#include <QStringDecoder>
#include <QtEndian>

#include "help/HelpDigest.h"
#include "platform/text/CodePage.h"

namespace rillbook {

namespace {

constexpr quint64 kLargestObject = 16 * 1024 * 1024;

QString Decode(const QByteArray& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    return utf8.hasError() ? DecodeText(bytes) : text;
}

// The library that unpacks the file trusts every length and offset in it, so it never sees a file
// other than the one that the build made.
void RequireBuiltFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw HelpFileError("cannot be opened");
    }
    QCryptographicHash digest(QCryptographicHash::Sha256);
    if (!digest.addData(&file) || digest.result().toHex() != kHelpDigest) {
        throw HelpFileError("not the help file of this program");
    }
}

QString FromRoot(const QString& path) {
    return path.isEmpty() || path.startsWith(u'/') ? path : u'/' + path;
}

}  // namespace

void ChmFile::Closer::operator()(chmFile* file) const {
    chm_close(file);
}

ChmFile::ChmFile(const QString& path) {
    RequireBuiltFile(path);
    file_.reset(chm_open(QFile::encodeName(path).constData()));
    if (!file_) {
        throw HelpFileError("not a compiled help file");
    }
    ReadSystem();
}

// Reads the numbered texts of the file: number, length, bytes, and a terminating zero.
void ChmFile::ReadSystem() {
    const QByteArray bytes = Read(QStringLiteral("/#SYSTEM")).value_or(QByteArray());
    for (qsizetype at = 4; at + 4 <= bytes.size();) {
        const auto code = qFromLittleEndian<quint16>(bytes.constData() + at);
        const auto length = qFromLittleEndian<quint16>(bytes.constData() + at + 2);
        QByteArray value = bytes.mid(at + 4, length);
        value.truncate(qstrnlen(value.constData(), static_cast<size_t>(value.size())));
        at += 4 + length;
        const QString text = Decode(value);
        switch (code) {
            case 0:
                contentsPath_ = FromRoot(text);
                break;
            case 1:
                indexPath_ = FromRoot(text);
                break;
            case 2:
                defaultTopic_ = FromRoot(text);
                break;
            case 3:
                title_ = text;
                break;
            default:
                break;
        }
    }
}

std::optional<QByteArray> ChmFile::Read(const QString& path) const {
    chmUnitInfo unit{};
    if (path.isEmpty() ||
        chm_resolve_object(file_.get(), path.toUtf8().constData(), &unit) != CHM_RESOLVE_SUCCESS ||
        unit.length > kLargestObject) {
        return std::nullopt;
    }
    QByteArray bytes(static_cast<qsizetype>(unit.length), Qt::Uninitialized);
    const LONGINT64 count =
        chm_retrieve_object(file_.get(), &unit, reinterpret_cast<unsigned char*>(bytes.data()), 0,
                            static_cast<LONGINT64>(unit.length));
    if (count != static_cast<LONGINT64>(unit.length)) {
        return std::nullopt;
    }
    return bytes;
}

std::optional<QString> ChmFile::ReadText(const QString& path) const {
    const std::optional<QByteArray> bytes = Read(path);
    return bytes ? std::optional(Decode(*bytes)) : std::nullopt;
}

QList<SitemapEntry> ChmFile::ReadSitemap(const QString& path) const {
    return ParseSitemap(ReadText(path).value_or(QString()));
}

}  // namespace rillbook
