#pragma once

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/types.h>

#include <QProcess>
#include <array>

namespace rillbook {

// For its lifetime, this thread cannot write to read-only files and folders, even if the tests run
// as root. The user stays the same, so that the checkout can be in a folder that only its owner can
// enter.
class OrdinaryUser {
public:
    using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

    OrdinaryUser();
    ~OrdinaryUser();

private:
    Capabilities former_{};
    const int formerBits_;
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
    // Waits for the next line that it writes to its standard output; empty at its end.
    QByteArray NextLine();

private:
    QProcess process_;
};

}  // namespace rillbook
