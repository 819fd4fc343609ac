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
    channel.RecSta = u"Kettle Creek"_qs;
    channel.RecDesc = u"Stage"_qs;
    channel.RecLabel = u"ft"_qs;
    channel.ConvDesc = u"Flow"_qs;
    channel.ConvLabel = u"cfs"_qs;
    channel.DigitsOut = 2;
    channel.OutputFactor = 1.98;
    channel.OutputFactorString = u"ac-ft"_qs;
    ReportBeginDate = At("2002-01-01");
    ReportEndDate = At("2002-12-31");
}

void FormTest::cleanup() {
    station_.reset();
    doors_.reset();
    RegionalSettings() = Regional();
}

void InForm(QDialog& form, const std::function<void(QWidget& form)>& steps) {
    const NextWindow window([&](QWidget& shown) {
        shown.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&shown));
        QCoreApplication::processEvents();  // the focus follows
        steps(shown);
        shown.close();
    });
    form.exec();
}

void UseOtherRegion() {
    RegionalSettings() = {.decimalSign = u","_qs,
                          .groupSign = u"."_qs,
                          .shortDate = u"dd.MM.yyyy"_qs,
                          .longTime = u"HH:mm:ss"_qs};
}

}  // namespace rillbook
