#include "adapters/qt/ChoicesFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace vellux {

namespace {

struct Row {
    const char* strKey;
    bool Choices::*choice;
};
constexpr Row kRows[] = {
    {"reconnect", &Choices::bReconnect},
    {"light-off-when-not-reached", &Choices::bLightOffWhenNotReached},
    {"told-of-missing-tray", &Choices::bToldOfMissingTray},
};

} // namespace

ChoicesFile::ChoicesFile()
    : ChoicesFile(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                  QStringLiteral("/vellux/choices.conf")) {}

ChoicesFile::ChoicesFile(const QString& strPath) : m_strPath(strPath) {
    read();
    m_observation = m_choices.observe([this] { write(); });
}

void ChoicesFile::read() {
    const QSettings file(m_strPath, QSettings::IniFormat);
    Choices choices;
    for (const Row& row : kRows)
        // Only this word: whatever else a broken file may hold means off.
        choices.*row.choice = file.value(QLatin1String(row.strKey)).toString() == QLatin1String("true");
    m_choices.set(choices);
}

void ChoicesFile::write() {
    QDir().mkpath(QFileInfo(m_strPath).path());
    QSettings file(m_strPath, QSettings::IniFormat);
    const Choices choices = m_choices.get();
    for (const Row& row : kRows)
        file.setValue(QLatin1String(row.strKey), choices.*row.choice);
    file.sync();
    m_bStored = file.status() == QSettings::NoError;
}

} // namespace vellux
