#pragma once

#include <QStringList>

namespace zq {

// The serving staff as "code<tab>name" in code order; within the department scope when limited.
QStringList ServingStaff(bool deptLimit);

} // namespace zq
