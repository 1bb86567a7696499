// The user's choices in a file of their own.
#pragma once

#include "app/Choices.h"
#include "threads/Observable.h"

#include <QString>

namespace vellux {

/// Reads the choices when it is made and writes them at each change. A file that is absent, broken or
/// unreadable means that all are off. Main thread.
class ChoicesFile {
public:
    /// In the user's configuration directory: vellux/choices.conf.
    ChoicesFile();
    /// At the path.
    explicit ChoicesFile(const QString& strPath);
    ChoicesFile(const ChoicesFile&) = delete;
    ChoicesFile& operator=(const ChoicesFile&) = delete;

    Observable<Choices>& choices() { return m_choices; }
    /// Whether the last change is in the file; true when nothing has changed yet.
    bool isStored() const { return m_bStored; }
    const QString& path() const { return m_strPath; }

private:
    void read();
    void write();

    const QString m_strPath;
    Observable<Choices> m_choices;
    bool m_bStored = true;
    Observation m_observation;
};

} // namespace vellux
