#pragma once

#include <QString>
#include <compare>
#include <cstdint>
#include <optional>

#include "platform/ado/Statement.h"

namespace rillbook::ado {

// How long another program's lock is waited for, in milliseconds: long enough for its write to end,
// short enough that the user isn't left before a dead window.
constexpr int kPatience = 500;

// The path in a connection text: everything behind "Data Source =" and the blank that follows it.
QString PathInConnection(const QString& connectionString);

// Opens a database for reading so that neither it nor its folder changes: no companion comes into
// being, and one that a killed program left is read where it lies. Raises adErrGeneral where the
// file is missing, no database, shorter than it says, or locked by another program.
Handle OpenUntouched(const QString& path);

// REQUIRES: OpenUntouched and RequireSound have accepted the file, and their handle is closed. Null
// if the file or its folder is read-only. Raises adErrGeneral.
Handle OpenForWriting(const QString& path);

// Opens a file that nobody else knows of yet, to fill it as fast as can be: nothing comes to lie
// beside it, and after a failure or the death of the process it is worth nothing.
Handle OpenForFilling(const QString& path);

// Opens a closed database so that no other connection can read or write it until the handle is
// closed. A companion is folded back first. Raises adErrGeneral if another program has the file
// open, or if it can't be written. REQUIRES, until the handle is closed: no other descriptor of the
// file is closed in this process (see WriterMark).
Handle OpenAlone(const QString& path);

// Raises adErrGeneral if the pages of the file are inconsistent. A file that was found sound, has
// no companion and is unchanged is not read again; one that changed less than two seconds before
// its check is, as a later change might have the same time. REQUIRES: the handle is the path's.
void RequireSound(sqlite3* handle, const QString& path);

// Whether the file of a connection has lost its name, or another file has taken it. What is written
// by such a connection would be lost.
bool HasMoved(sqlite3* handle);

// Raises adErrGeneral for a file that another program has locked.
[[noreturn]] void RaiseInUse(const QString& path);

// Whether something that a killed program left, or another one uses, belongs to the file.
bool HasCompanion(const QString& path);

// Opens a database that has a write-ahead companion, to read it as it is without that. Null if it
// has none, or isn't sound by itself. REQUIRES: nobody has it open for writing.
Handle OpenSoundWithoutCompanion(const QString& path);

// Which file a path leads to, whatever its names are.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    friend auto operator<=>(const FileIdentity&, const FileIdentity&) = default;
};
// Nothing if there is no file.
std::optional<FileIdentity> IdentityOf(const QString& path);

// Stands for one connection of this process that writes to a file. While there is one, the file is
// known to be sound, and may not be read by other means than the database's: systems of the Unix
// kind drop all of a process's locks on a file when it closes any descriptor of it.
class WriterMark {
public:
    explicit WriterMark(const QString& path);
    ~WriterMark();
    WriterMark(const WriterMark&) = delete;
    WriterMark& operator=(const WriterMark&) = delete;

    static int CountOf(const QString& path);
    bool IsOnlyOne() const;
    const FileIdentity& File() const { return file_; }

private:
    FileIdentity file_;
};

}  // namespace rillbook::ado
