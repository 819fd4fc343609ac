#pragma once

#include <QString>
#include <cstdint>
#include <vector>

namespace rillbook {

// How the logger files of a station are laid out, and what its channels are called.
struct StationShape {
    struct Channel {
        std::int16_t width = 0;  // characters of the field in fixed layouts
        QString units;
        QString label;        // the quantity
        QString description;  // the channel's own, head of the titles
    };

    std::int16_t importType = 0;
    std::int16_t dateWidth = 0;  // characters of the date field in fixed layouts
    std::vector<Channel> channels;
};

// Gives the open station this shape: the file is compacted, columns of readings are added or
// dropped at the end, the header gets a row for each channel, and StationInfo and ChannelInfo
// follow. A new channel has no readings, and settings as in a new station.
//
// Raises AdoError where a step fails: the readings, the header and the two variables are as they
// were then, and the station is open, unless the file itself is gone.
// REQUIRES: a station open; at least one channel.
void ReshapeStation(const StationShape& shape);

}  // namespace rillbook
