#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace rillbook {

// A file that couldn't be read or written: its path and the system's reason.
class FileError : public std::exception {
public:
    FileError(const QString& path, const QString& reason);

    const QString& Path() const { return path_; }
    const QString& Reason() const { return reason_; }
    const char* what() const noexcept override { return utf8_.constData(); }

private:
    QString path_;
    QString reason_;
    QByteArray utf8_;
};

}  // namespace rillbook
