#include "Schema.h"

namespace zq::schema {

namespace {

// The users who may log in to this account set. fName is the person's fName, so that the user's
// department follows from the personnel table; the password is kept only as a salted hash.
Table usersTable() {
    return {"tSysUser",
            {{"fName", Type::Text, 10},
             {"fPassHash", Type::Text, 128},
             {"fPower", Type::Text, 350},
             {"fSupervisor", Type::SmallInt},
             {"fDisabled", Type::SmallInt},
             {"fLastLogin", Type::DateTime}},
            {{"fName"}}};
}

// One row per operation line: when, who, in which module, what.
Table logTable() {
    return {"tSysLog",
            {{"fID", Type::AutoId},
             {"fTime", Type::DateTime},
             {"fUser", Type::Text, 20},
             {"fModel", Type::Text, 30},
             {"fText", Type::Memo}},
            {{"fTime"}, {"fUser"}}};
}

} // namespace

void createUserTables(Connection& c) {
    createTable(c, usersTable());
    createTable(c, logTable());
}

} // namespace zq::schema
