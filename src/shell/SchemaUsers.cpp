#include "Schema.h"

namespace zq::schema {

void createUserTables(Connection&) {}

} // namespace zq::schema
