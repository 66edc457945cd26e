#include "FileIcons.h"

#include <QFileInfo>
#include <QFileIconProvider>
#include <QMimeDatabase>

namespace zq {

namespace {
QMimeType typeByName(const QFileInfo& info) {
    return QMimeDatabase().mimeTypeForFile(info.fileName(), QMimeDatabase::MatchExtension);
}
} // namespace

QIcon NameOnlyIconProvider::icon(const QFileInfo& info) const {
    static const QFileIconProvider standard; // its icons by kind read no file
    if (info.isDir()) return standard.icon(QAbstractFileIconProvider::Folder);
    const QMimeType mime = typeByName(info);
    const QIcon generic = standard.icon(QAbstractFileIconProvider::File);
    if (mime.isDefault()) return generic;
    return QIcon::fromTheme(mime.iconName(), QIcon::fromTheme(mime.genericIconName(), generic));
}

QString NameOnlyIconProvider::type(const QFileInfo& info) const {
    if (info.isDir()) return QAbstractFileIconProvider::type(info);
    return typeByName(info).comment();
}

NameOnlyIconProvider& FileIcons() {
    static NameOnlyIconProvider provider;
    return provider;
}

} // namespace zq
