#include "adapters/qt/ChoicesFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <optional>

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

// What else may stand there would block whoever opens it.
bool canBeRead(const QString& strPath) {
    const QFileInfo info(strPath);
    return info.isFile() || !info.exists();
}

// Absent for a file that can't be read as a whole.
std::optional<Choices> readChoices(const QString& strPath) {
    if (!canBeRead(strPath))
        return std::nullopt;
    const QSettings file(strPath, QSettings::IniFormat);
    Choices choices;
    for (const Row& row : kRows)
        // Only this word: whatever else a broken file may hold means off.
        choices.*row.choice = file.value(QLatin1String(row.strKey)).toString() == QLatin1String("true");
    return file.status() == QSettings::NoError ? std::optional(choices) : std::nullopt;
}

} // namespace

ChoicesFile::ChoicesFile()
    : ChoicesFile(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                  QStringLiteral("/vellux/choices.conf")) {}

ChoicesFile::ChoicesFile(const QString& strPath) : m_strPath(strPath) {
    read();
    m_observation = m_choices.observe([this] { write(); });
}

void ChoicesFile::read() {
    m_choices.set(readChoices(m_strPath).value_or(Choices()));
}

void ChoicesFile::write() {
    const Choices choices = m_choices.get();
    m_bStored = false;
    if (!canBeRead(m_strPath))
        return;
    QDir().mkpath(QFileInfo(m_strPath).path());
    {
        QSettings file(m_strPath, QSettings::IniFormat);
        for (const Row& row : kRows)
            file.setValue(QLatin1String(row.strKey), choices.*row.choice);
    }
    m_bStored = QFileInfo::exists(m_strPath) && readChoices(m_strPath) == choices;
}

} // namespace vellux
