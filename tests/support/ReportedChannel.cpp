#include "tests/support/ReportedChannel.h"

#include "app/InitialFile.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

void DescribeReportedChannel() {
    RegionalSettings() = Regional();
    LoadAppSettings();
    FillMonthNames();
    StationInfo.OutputChannel = 1;
    StationInfo.TimeIncrement = 0.5;
    ChannelInfoData& channel = ChannelInfo[1];
    channel.RecSta = QStringLiteral("Kettle Creek");
    channel.RecDesc = QStringLiteral("Stage");
    channel.RecLabel = QStringLiteral("ft");
    channel.ConvDesc = QStringLiteral("Flow");
    channel.ConvLabel = QStringLiteral("cfs");
    channel.DigitsOut = 2;
    channel.OutputFactor = 1.98;
    channel.OutputFactorString = QStringLiteral("ac-ft");
    ReportBeginDate = At("2002-01-01");
    ReportEndDate = At("2002-12-31");
}

}  // namespace rillbook
