#pragma once

#include <QString>

namespace zq {

// The string table: ids 0 to 217 in simplified script; the same id plus 10000 in traditional.
// LoadText picks by the Language property.
QString LoadText(int id);
// The text of one id in one language (0 simplified, 1 traditional); empty when unknown.
QString textOf(int id, int language);

} // namespace zq
