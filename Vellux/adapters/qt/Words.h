// The models' words in the user's language.
#pragma once

#include <QString>

#include <string>

namespace vellux {

/// A colour, a speed, a button's title or a status that the program writes, translated for showing; any other
/// text as it is. The models keep theirs, since titles decide and positions are saved. Main thread.
QString shownWord(const std::string& strWord);

} // namespace vellux
