#pragma once

#include <QString>
#include <stdexcept>
#include <vector>

class QFile;

namespace rillbook {

// A file that isn't compiled help, or is damaged. The text is for developers.
class HelpFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct ChmObject {
    QString path;  // "/start.html"; the format's own begin with "/#", "/$" or "::"
    bool isCompressed = false;
    quint64 start = 0;  // from the begin of its section
    quint64 length = 0;
};

// The objects of a compiled help file, in the order of its directory. Checks on the way what the
// library that unpacks them takes on trust, and what would lead it out of its memory or into a loop
// without end: lengths, the tree of the index pages, and the measures of the compression. Raises
// HelpFileError.
std::vector<ChmObject> ReadChmDirectory(QFile& file);

}  // namespace rillbook
