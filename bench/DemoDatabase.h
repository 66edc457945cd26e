#pragma once

#include "shell/Connection.h"

namespace zq::bench {

// Makes the database the settings name as a demo company of `persons` persons unless it exists
// (a file that exists, or a server database that holds the schema). True when it was made now.
bool ensureDemoDatabase(const ConnectionSettings& settings, int persons, quint32 seed);

} // namespace zq::bench
