#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <QProcess>

namespace rillbook {

// An ordinary user for its lifetime, whom read-only files bind even where the tests run as root.
class OrdinaryUser {
public:
    OrdinaryUser();
    ~OrdinaryUser();

private:
    const bool isRoot_;
};

// For its lifetime, no file of this process grows beyond `bytes`: writing fails as on a full disk.
class FullDisk {
public:
    explicit FullDisk(qint64 bytes);
    ~FullDisk();

private:
    rlimit former_{};
};

// Another program: this one, started again to do one thing until it is killed. Its main function
// finds the deed and its objects in the arguments.
class OtherProgram {
public:
    OtherProgram(const QString& deed, const QStringList& objects);
    ~OtherProgram() { Kill(); }
    void Kill();

private:
    QProcess process_;
};

}  // namespace rillbook
