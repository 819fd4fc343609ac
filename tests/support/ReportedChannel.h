#pragma once

namespace rillbook {

// Brings the open station to where a report can be shown: channel 1 is the stage of Kettle Creek in
// ft, flow in cfs where it is rated, two decimals; a reading each half day; the period is the year
// 2002. Regional settings are those of the start. REQUIRES: the doors installed.
void DescribeReportedChannel();

}  // namespace rillbook
