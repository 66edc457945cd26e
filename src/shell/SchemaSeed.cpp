#include "Schema.h"

namespace zq::schema {

void seed(Connection&) {}

} // namespace zq::schema
