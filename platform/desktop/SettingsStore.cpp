#include "platform/desktop/SettingsStore.h"

#include "platform/desktop/Desktop.h"

namespace rillbook {

QMap<QString, QString> GetSettings(const QString& application, const QString& section) {
    return Settings().Get(application, section);
}

void SaveSettings(const QString& application, const QString& section,
                  const QMap<QString, QString>& texts) {
    Settings().Save(application, section, texts);
}

}  // namespace rillbook
