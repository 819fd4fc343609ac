#include "store/StationConversion.h"

#include <QFileInfo>
#include <algorithm>

#include "platform/access/AccessFile.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Screen.h"
#include "store/ConvertFile.h"

namespace rillbook {

namespace {

using access::FileKind;

ConversionCommand* theCommand = nullptr;

// A box with a line for each of a hundred stations wouldn't fit on the screen.
constexpr qsizetype kMostLines = 20;

QString LeftText(const QString& what, const QStringList& names) {
    return names.isEmpty()
               ? QString()
               : QStringLiteral(" Only there: %1 %2.").arg(what, names.join(QStringLiteral(", ")));
}

QString ConvertedText(const QString& path, const ConvertedFile& result) {
    // A link may lead to another folder.
    const QFileInfo kept(result.kept);
    const bool isBeside = kept.path() == QFileInfo(path).path();
    return QStringLiteral("%1 was converted; the Access file is now %2.")
               .arg(path, isBeside ? kept.fileName() : kept.filePath()) +
           LeftText(QStringLiteral("table"), result.left.tables) +
           LeftText(QStringLiteral("column"), result.left.columns);
}

}  // namespace

ConversionCommand::ConversionCommand(const QStringList& files) : outer_(theCommand), files_(files) {
    if (outer_ == nullptr) {
        theCommand = this;
    }
}

ConversionCommand::~ConversionCommand() {
    if (outer_ == nullptr) {
        theCommand = nullptr;
        Tell();
    }
}

bool ConversionCommand::MakeStation(const QString& path) {
    if (outer_ != nullptr) {
        return outer_->MakeStation(path);
    }
    const FileKind kind = access::KindOf(path);
    if (kind == FileKind::Other) {
        return true;
    }
    if (kind == FileKind::Access && !IsWanted(path)) {
        return false;
    }
    const Hourglass hourglass;
    try {
        // One of the later kind is refused there.
        const ConvertedFile result = ConvertFile(path);
        const bool isWhole = result.left.tables.isEmpty() && result.left.columns.isEmpty();
        (isWhole ? converted_ : remarkable_) += ConvertedText(path, result);
        return true;
    } catch (const ConversionError& error) {
        refused_ += QStringLiteral("%1 could not be converted: %2")
                        .arg(path, QString::fromUtf8(error.what()));
        return false;
    }
}

bool ConversionCommand::IsWanted(const QString& path) {
    if (answer_) {
        return *answer_;
    }
    files_ += path;
    files_.removeDuplicates();
    const auto count = std::count_if(files_.begin(), files_.end(), [](const QString& file) {
        return access::KindOf(file) == FileKind::Access;
    });
    const QString question =
        count == 1 ? QStringLiteral(
                         "%1 is an Access file. To open it, Rillbook makes a station "
                         "file of it and keeps the Access file beside it under another "
                         "name. Convert it?")
                         .arg(path)
                   : QStringLiteral(
                         "%1 of the stations are Access files. To open them, Rillbook "
                         "makes station files of them and keeps the Access files beside "
                         "them under other names. Convert them?")
                         .arg(count);
    answer_ = MsgBox(question, MsgBoxButtons::YesNo) == MsgBoxAnswer::Yes;
    return *answer_;
}

void ConversionCommand::Tell() const {
    QStringList lines = refused_ + remarkable_ + converted_;
    if (lines.isEmpty()) {
        return;
    }
    if (const qsizetype more = lines.size() - kMostLines; more > 1) {
        lines.resize(kMostLines);
        lines += QStringLiteral("And %1 more.").arg(more);
    }
    MsgBox(lines.join(u'\n'), MsgBoxButtons::Ok,
           refused_.isEmpty() ? MsgBoxIcon::Information : MsgBoxIcon::Exclamation);
}

}  // namespace rillbook
