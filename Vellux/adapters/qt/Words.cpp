#include "adapters/qt/Words.h"

#include <QCoreApplication>

namespace vellux {

namespace {

constexpr const char* kContext = "Words";

// For lupdate, which finds no words in the models.
[[maybe_unused]] constexpr const char* kWords[] = {
    QT_TRANSLATE_NOOP("Words", "Red"),           QT_TRANSLATE_NOOP("Words", "Green"),
    QT_TRANSLATE_NOOP("Words", "Yellow"),        QT_TRANSLATE_NOOP("Words", "Purple"),
    QT_TRANSLATE_NOOP("Words", "Cyan"),          QT_TRANSLATE_NOOP("Words", "Blue"),
    QT_TRANSLATE_NOOP("Words", "White"),         QT_TRANSLATE_NOOP("Words", "Orange"),
    QT_TRANSLATE_NOOP("Words", "None"),          QT_TRANSLATE_NOOP("Words", "Steady"),
    QT_TRANSLATE_NOOP("Words", "Slow"),          QT_TRANSLATE_NOOP("Words", "Medium"),
    QT_TRANSLATE_NOOP("Words", "Fast"),          QT_TRANSLATE_NOOP("Words", "Connect"),
    QT_TRANSLATE_NOOP("Words", "Connecting..."), QT_TRANSLATE_NOOP("Words", "Disconnect"),
};

} // namespace

QString shownWord(const std::string& strWord) {
    return QCoreApplication::translate(kContext, strWord.c_str());
}

} // namespace vellux
