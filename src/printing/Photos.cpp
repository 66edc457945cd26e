#include "Photos.h"

#include "services/InputAids.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QDir>
#include <QFile>

namespace zq {

namespace {
PhotoBox& photoBox() {
    static PhotoBox box;
    return box;
}

void showInBox(const QString& file) {
    if (photoBox()) photoBox()(file);
}
} // namespace

QVector<qint64> photoChunks(qint64 size) {
    QVector<qint64> sizes{size % kPhotoChunk};
    for (qint64 i = 0; i < size / kPhotoChunk; ++i)
        sizes << kPhotoChunk;
    return sizes;
}

int SaveChunksToFile(Recordset& rs, const QString& path) {
    const QByteArray data = rs.value(0).toByteArray();
    if (data.isEmpty()) return 0;
    QFile::remove(path);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return 0;
    qint64 at = 0;
    for (qint64 size : photoChunks(data.size())) {
        file.write(data.constData() + at, size);
        at += size;
    }
    file.close();
    return file.error() == QFileDevice::NoError ? -1 : 0;
}

QString photoFilePath() {
    const QString base = StripTrailingSlash(G().PowerPath);
    return (base.isEmpty() ? QDir::tempPath() : base) + QStringLiteral("/tmpPhoto");
}

void setPhotoBox(PhotoBox box) {
    photoBox() = std::move(box);
}

void ExportPhotos() {
    showInBox({});
    const QString file = photoFilePath();
    Recordset rs(conn(),
                 QStringLiteral("select fphoto from tRsBasic where fCode=") + quoted(G().CurPersonCode));
    if (!rs.eof() && SaveChunksToFile(rs, file) == -1) showInBox(file);
}

} // namespace zq
