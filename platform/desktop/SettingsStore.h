#pragma once

#include <QString>

namespace rillbook {

// The per-user store of texts, addressed by application, section and key.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    // The empty text for a missing key.
    virtual QString Get(const QString& application, const QString& section, const QString& key) = 0;
    virtual void Save(const QString& application, const QString& section, const QString& key,
                      const QString& text) = 0;
};

QString GetSetting(const QString& application, const QString& section, const QString& key);
void SaveSetting(const QString& application, const QString& section, const QString& key,
                 const QString& text);

}  // namespace rillbook
