#pragma once

#include <QAbstractFileIconProvider>

namespace zq {

// Icons and type names of files by their names alone. The toolkit's own provider reads a file whose
// name says nothing of its type, and the database file is such a file: closing that read drops
// every lock this process holds on the database, and another program may then take the database
// for unused and remove its journal under this client.
class NameOnlyIconProvider : public QAbstractFileIconProvider {
public:
    using QAbstractFileIconProvider::icon;
    QIcon icon(const QFileInfo& info) const override;
    QString type(const QFileInfo& info) const override;
};

// The one provider every file view of the program uses.
NameOnlyIconProvider& FileIcons();

} // namespace zq
