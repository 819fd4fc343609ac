#include "import/LoggerLine.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <utility>

#include "platform/text/Numbers.h"

namespace rillbook {

namespace {

std::optional<DateTime> ReadDate(std::string_view field) {
    return ReadLoggerDateTime(field.data(), field.data() + field.size());
}

std::optional<double> ReadChannel(std::string_view field) {
    return ReadChannelField(field.data(), field.data() + field.size());
}

// Hands out the fields of a line from the left. The last one takes all that is left, commas
// included; fields that the line doesn't have are empty.
class FieldCutter {
public:
    explicit FieldCutter(std::string_view line) : rest_(line) {}

    std::string_view Next(bool isLast) {
        const std::size_t comma = isLast ? rest_.size() : std::min(rest_.find(','), rest_.size());
        const std::string_view field = rest_.substr(0, comma);
        rest_.remove_prefix(std::min(comma + 1, rest_.size()));
        return field;
    }

private:
    std::string_view rest_;
};

// A part of the Campbell date field, its first character counted from 1, as a whole number. A part
// that would begin before the field is empty, and an empty one is 0.
std::int64_t ReadPart(std::string_view field, std::int64_t first, std::size_t length) {
    if (first < 1 || static_cast<std::size_t>(first) > field.size()) {
        return 0;
    }
    const std::string_view part = field.substr(static_cast<std::size_t>(first - 1), length);
    // Three characters can say 1e9; beyond this limit no calendar reaches, and sums stay safe.
    constexpr double limit = 1e9;
    const double number = ReadLeadingNumber(part.data(), part.data() + part.size());
    return std::llrint(std::clamp(number, -limit, limit));
}

// The field is three columns of equal width, each right-aligned: the year at the end of the first,
// month and day at the end of the second, hour and minute at the end of the third. Parts beyond
// their range carry over by the calendar.
DateTime ReadCampbellDate(std::string_view field) {
    const auto width = static_cast<std::int64_t>(field.size() / 3);
    const DateTime day =
        DateSerial(ReadPart(field, width - 3, 4), ReadPart(field, 2 * width - 4, 3),
                   ReadPart(field, 2 * width - 1, 2));
    const std::int64_t hour = ReadPart(field, 3 * width - 3, 2);
    const std::int64_t minute = ReadPart(field, 3 * width - 1, 2);
    // The hours may carry over the calendar's last day.
    return ToWholeSecond(MomentOf(std::llrint(day), hour * 3600 + minute * 60));
}

}  // namespace

std::size_t LoggerLayout::LineWidth() const {
    return std::accumulate(channelWidths.begin(), channelWidths.end(), dateWidth);
}

LoggerLineParser::LoggerLineParser(LoggerLayout layout)
    : layout_(std::move(layout)), lineWidth_(layout_.LineWidth()) {}

bool LoggerLineParser::Parse(std::string_view line, LoggerReading& reading) {
    if (line.find('\0') != std::string_view::npos) {
        return false;
    }
    reading.channels.resize(layout_.channelWidths.size());
    switch (layout_.type) {
        case 0:
        case 1:
            return ParseDelimited(line, reading);
        case 2:
        case 3:
            return ParseFixed(line, reading);
        default:
            return false;
    }
}

bool LoggerLineParser::ParseDelimited(std::string_view line, LoggerReading& reading) {
    FieldCutter fields(line);
    const std::size_t count = reading.channels.size();
    const bool isTypeTwo = layout_.type == 1;
    std::string_view date = fields.Next(count == 0 && !isTypeTwo);
    if (isTypeTwo) {
        joined_.assign(date).append(1, ' ').append(fields.Next(count == 0));
        date = joined_;
    }
    const std::optional<DateTime> moment = ReadDate(date);
    if (!moment) {
        return false;
    }
    reading.moment = *moment;
    for (std::size_t i = 0; i < count; ++i) {
        reading.channels[i] = ReadChannel(fields.Next(i + 1 == count));
    }
    return true;
}

bool LoggerLineParser::ParseFixed(std::string_view line, LoggerReading& reading) {
    if (line.size() < lineWidth_) {
        return false;
    }
    const std::string_view date = line.substr(0, layout_.dateWidth);
    if (layout_.type == 3) {
        reading.moment = ReadCampbellDate(date);
    } else if (const std::optional<DateTime> moment = ReadDate(date)) {
        reading.moment = *moment;
    } else {
        return false;
    }
    std::size_t begin = layout_.dateWidth;
    for (std::size_t i = 0; i < reading.channels.size(); ++i) {
        reading.channels[i] = ReadChannel(line.substr(begin, layout_.channelWidths[i]));
        begin += layout_.channelWidths[i];
    }
    return true;
}

}  // namespace rillbook
