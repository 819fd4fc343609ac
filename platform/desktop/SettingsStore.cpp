#include "platform/desktop/SettingsStore.h"

#include "platform/desktop/Desktop.h"

namespace rillbook {

QString GetSetting(const QString& application, const QString& section, const QString& key) {
    return Settings().Get(application, section, key);
}

void SaveSetting(const QString& application, const QString& section, const QString& key,
                 const QString& text) {
    Settings().Save(application, section, key, text);
}

}  // namespace rillbook
