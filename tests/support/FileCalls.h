#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace rillbook {

// Watches the calls by which this process uses the files of one folder, whoever makes them: SQLite,
// Qt, the C++ library or Rillbook. A test program that links rillbook_filecalls replaces these
// functions of the C library. While no watch lives they only pass on, except that a sync never
// waits for the disk.
//
// Fails the calls one by one:
//
//     for (int call = 1;; ++call) {
//         ... make the file ...
//         FileCalls calls(folder);
//         calls.Fail(call);
//         ... the operation under test ...
//         if (!calls.HasStruck()) { break; }
//     }
//
// Shows what a medium holds if the power goes at each of the calls:
//
//     FileCalls calls(folder);
//     calls.KeepMedia();
//     ... an operation ...
//     calls.Report();   // the program reported that it is saved
//     for (const FileCalls::Medium& medium : calls.Media()) { medium.WriteTo(other); ... }
//
// At most one watch exists at a time, and its calls come from one thread. Other processes aren't
// watched, nor is memory that is mapped from a file.
class FileCalls {
public:
    enum Kind : unsigned {
        Open = 1,
        Read = 2,
        Write = 4,
        Sync = 8,
        Truncate = 16,
        Name = 32,  // renaming, linking, removing
        Lock = 64,
        Map = 128,
        Any = 255
    };

    // REQUIRES: the folder exists; the path is absolute and leads through no link. Files that are
    // open already are watched as well.
    explicit FileCalls(const QString& folder);
    ~FileCalls();
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;

    enum class Lasting { Once, FromThenOn };
    // From now on counts the calls of these kinds, from 1, and lets one of them fail with a system
    // error number, or it and all that follow. An unlock never fails.
    void Fail(int call, Lasting lasting = Lasting::Once, int error = 5 /* EIO */,
              unsigned kinds = Any);
    bool HasStruck() const { return hasStruck_; }

    // Runs before each call of the kinds that are counted; its own calls aren't watched.
    std::function<void(Kind)> BeforeEach;

    // What is in the folder after a loss of power.
    struct Medium {
        int call = 0;     // before this one
        int reports = 0;  // how often Report was called before
        QMap<QString, QByteArray> files;
        // Replaces all files of a folder.
        void WriteTo(const QString& folder) const;
    };
    // From now on keeps two media per call that changes something: one that has lost whatever
    // was not synced (names of files too, until their folder is synced), and one on which some of
    // the lost sectors, and all names or none, have arrived. Equal ones that follow each other are
    // kept once.
    void KeepMedia();
    void Report() { ++reports_; }
    const std::vector<Medium>& Media() const { return media_; }

    // For the replaced functions.
    struct Access;
    static FileCalls* Active();
    bool Watches(int handle) const { return handles_.count(handle) != 0; }
    bool Watches(const char* path) const;
    // Counts one call; true if it is to fail, with errno set.
    bool Strikes(Kind kind);
    void Opened(int handle, bool isNew);
    void Closed(int handle) { handles_.erase(handle); }
    void Synced(int handle);

private:
    struct Node {
        QByteArray synced;
    };
    using Names = QMap<QString, std::shared_ptr<Node>>;

    Names PresentNames();
    std::shared_ptr<Node>& NodeOf(std::uint64_t inode);
    void KeepMedium();
    void Keep(QMap<QString, QByteArray> files);

    const QString folder_;
    const QByteArray prefix_;
    std::set<int> handles_;

    int count_ = 0;
    int failing_ = 0;
    Lasting lasting_ = Lasting::Once;
    int error_ = 0;
    unsigned kinds_ = Any;
    bool hasStruck_ = false;

    bool keeps_ = false;
    int reports_ = 0;
    std::map<std::uint64_t, std::shared_ptr<Node>> nodes_;  // by inode
    Names syncedNames_;
    std::vector<Medium> media_;
};

}  // namespace rillbook
