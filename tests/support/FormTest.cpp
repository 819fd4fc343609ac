#include "tests/support/FormTest.h"

namespace rillbook {

void FormTest::init() {
    FailOnAnyWarning();
    doors_ = std::make_unique<ScriptedDoors>();
    station_ = std::make_unique<StationFixture>(2);
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

void FormTest::cleanup() {
    station_.reset();
    doors_.reset();
    RegionalSettings() = Regional();
}

void UseOtherRegion() {
    RegionalSettings() = {.decimalSign = QStringLiteral(","),
                          .groupSign = QStringLiteral("."),
                          .shortDate = QStringLiteral("dd.MM.yyyy"),
                          .longTime = QStringLiteral("HH:mm:ss")};
}

}  // namespace rillbook
