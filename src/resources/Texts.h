#pragma once

#include <QString>

namespace zq {

// The string table: ids 0 to 217 in simplified script; the same id plus 10000 in traditional.
// LoadText gives the text of id + Language * 10000; a missing id throws std::out_of_range, as the
// table's own error did.
QString LoadText(int id);
// The text of a full id (with the language offset already added); throws when missing.
QString textById(int fullId);
bool hasText(int fullId);
// The text of one id in one language (0 simplified, 1 traditional); empty when unknown.
QString textOf(int id, int language);

} // namespace zq
