#pragma once

#include <thread>

namespace rillbook {

// Reads the system's list of fonts while the program connects to its display: each takes about as
// long, and neither needs the other. To be made before the application object, and let go, which
// waits for the end of the reading, before the first text is laid out.
class FontListAhead {
public:
    FontListAhead();

private:
    std::jthread reading_;
};

}  // namespace rillbook
