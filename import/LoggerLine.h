#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// How the lines of a logger file are laid out.
struct LoggerLayout {
    // 0 Type 1 (date and time in one field, then the channels, commas between), 1 Type 2 (date and
    // time in two fields), 2 fixed width, 3 Campbell Scientific. No line is readable in any other.
    int type = 0;
    // The two below are in bytes and not negative, and count in the fixed layouts only; the second
    // has an entry a channel and so gives the number of channels in all layouts.
    std::size_t dateWidth = 0;
    std::vector<std::size_t> channelWidths;

    // Length below which a line of a fixed layout is unreadable.
    std::size_t LineWidth() const;
};

constexpr bool IsKnownLayout(int type) {
    return type >= 0 && type <= 3;
}

struct LoggerReading {
    DateTime moment = 0;
    std::vector<std::optional<double>> channels;  // channel 1 first; nothing where no number stands
};

// Takes the readings out of lines. A line is unreadable if it has no date (in the Campbell layout,
// whose dates are computed from numbers, no line is), if it is shorter than a fixed layout asks
// for, or if it holds a NUL byte and so isn't text. A channel that holds no number makes no line
// unreadable.
class LoggerLineParser {
public:
    explicit LoggerLineParser(LoggerLayout layout);

    // False for an unreadable line; the reading then means nothing. Pass the same reading again to
    // have its storage used again.
    bool Parse(std::string_view line, LoggerReading& reading);

private:
    bool ParseDelimited(std::string_view line, LoggerReading& reading);
    bool ParseFixed(std::string_view line, LoggerReading& reading);

    const LoggerLayout layout_;
    const std::size_t lineWidth_;
    std::string joined_;
};

}  // namespace rillbook
