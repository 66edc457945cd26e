#include "DemoDatabase.h"

#include "admin/Demo.h"

namespace zq::bench {

bool ensureDemoDatabase(const ConnectionSettings& settings, int persons, quint32 seed) {
    if (demo::holdsSchema(settings)) return false;
    demo::Options o;
    o.persons = persons;
    o.seed = seed;
    demo::createDemoDatabase(settings, o);
    return true;
}

} // namespace zq::bench
