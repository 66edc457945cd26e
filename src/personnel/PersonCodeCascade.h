#pragma once

#include <QString>
#include <QStringList>

namespace zq {

// Every table keyed by a person's code that follows a new code, in the order they are updated.
// The spouse rows (tRsBasic_P) and the extended details (tRsDetail) are not among them: they stay
// under the old code.
const QStringList& CodeCascadeTables();

// Moves one table's rows from the old code to the new; a table this database lacks is skipped.
// A failure reaches the caller as a DbError.
void ChangePersonCode(const QString& table, const QString& oldCode, const QString& newCode);

// Runs ChangePersonCode over every table of the cascade, in order. Meant to run inside the
// transaction that updates the master row, so that master and children change together; a failure
// throws and leaves that transaction to be rolled back.
void CascadePersonCode(const QString& oldCode, const QString& newCode);

} // namespace zq
