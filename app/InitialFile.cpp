#include "app/InitialFile.h"

#include <cmath>
#include <optional>

#include "app/Application.h"
#include "platform/desktop/SettingsStore.h"
#include "platform/text/Numbers.h"

namespace rillbook {

QString InitDir;
std::int16_t MainTop, MainLeft;
std::int16_t GraphH, GraphW, GraphT, GraphL, GraphM;
std::int16_t AnnualH, AnnualW, AnnualT, AnnualL, AnnualM;
std::array<QString, 13> MonthNames;

namespace {

const QString kSection = QStringLiteral("Data");
const QString kInitDirKey = QStringLiteral("InitDir");
const QString kInitDirDefault = QStringLiteral("c:\\");

struct WindowSetting {
    const char* key;
    std::int16_t* value;
    std::int16_t standard;
};

// In the order in which they are read.
const std::array<WindowSetting, 12> kWindowSettings{{{"MainTop", &MainTop, 1000},
                                                     {"MainLeft", &MainLeft, 1500},
                                                     {"GraphH", &GraphH, 6500},
                                                     {"GraphW", &GraphW, 9200},
                                                     {"GraphT", &GraphT, 100},
                                                     {"GraphL", &GraphL, 100},
                                                     {"GraphM", &GraphM, 0},
                                                     {"AnnualH", &AnnualH, 6500},
                                                     {"AnnualW", &AnnualW, 9200},
                                                     {"AnnualT", &AnnualT, 100},
                                                     {"AnnualL", &AnnualL, 100},
                                                     {"AnnualM", &AnnualM, 0}}};

// A number that isn't whole is rounded. Nothing if it doesn't fit.
std::optional<std::int16_t> StoredNumber(const QString& text) {
    bool isNumber = false;
    const double number = std::nearbyint(text.toDouble(&isNumber));
    if (!isNumber || number != ToInt16(number)) {
        return std::nullopt;
    }
    return ToInt16(number);
}

}  // namespace

void LoadAppSettings() {
    ResetInitialFile();
    const QMap<QString, QString> texts = GetSettings(Application::Title(), kSection);
    const QString folder = texts.value(kInitDirKey);
    InitDir = folder.isEmpty() ? kInitDirDefault : folder;
    for (const WindowSetting& setting : kWindowSettings) {
        const QString text = texts.value(QString::fromLatin1(setting.key));
        const std::optional<std::int16_t> stored =
            text.isEmpty() ? setting.standard : StoredNumber(text);
        if (!stored) {
            return;
        }
        *setting.value = *stored;
    }
}

void SaveAppSettings() {
    QMap<QString, QString> texts{{kInitDirKey, InitDir}};
    for (const WindowSetting& setting : kWindowSettings) {
        texts.insert(QString::fromLatin1(setting.key), QString::number(*setting.value));
    }
    SaveSettings(Application::Title(), kSection, texts);
}

void FillMonthNames() {
    static const char* const names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (std::size_t month = 1; month <= 12; ++month) {
        MonthNames[month] = QString::fromLatin1(names[month - 1]);
    }
}

void ResetInitialFile() {
    InitDir.clear();
    for (const WindowSetting& setting : kWindowSettings) {
        *setting.value = 0;
    }
}

}  // namespace rillbook
