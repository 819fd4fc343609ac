#pragma once

#include <QMap>
#include <QString>

namespace rillbook {

// The per-user store of texts, addressed by application, section and key.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    // The texts of a section by their keys, as one save left them.
    virtual QMap<QString, QString> Get(const QString& application, const QString& section) = 0;
    // Stores all of these texts or, if the process ends or the disk is full, none of them; other
    // keys keep their texts. Never waits for another program, never raises, and reports nothing:
    // settings that cannot be stored do not keep the program from ending.
    virtual void Save(const QString& application, const QString& section,
                      const QMap<QString, QString>& texts) = 0;
};

QMap<QString, QString> GetSettings(const QString& application, const QString& section);
void SaveSettings(const QString& application, const QString& section,
                  const QMap<QString, QString>& texts);

}  // namespace rillbook
