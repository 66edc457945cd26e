#include "ArchiveData.h"

#include "services/Documents.h"
#include "shell/Connection.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QFileInfo>

namespace zq {

QString ArchiveTable() {
    return QStringLiteral("twd_File1");
}

QString ArchiveFileText(const QString& path, bool picture) {
    if (picture || path.isEmpty() || !QFileInfo(path).isFile()) return {};
    return ReadDocumentText(path);
}

void IndexArchiveEntry(const QString& code, const QString& name, bool document, const QString& contents,
                       const QString& filePath, bool picture) {
    if (!document) {
        UnindexDocument(ArchiveTable(), code);
        return;
    }
    QString text = contents;
    const QString fileText = ArchiveFileText(filePath, picture);
    if (!fileText.isEmpty()) text += QLatin1Char('\n') + fileText;
    IndexDocument(ArchiveTable(), code, name, text);
}

int ReindexArchive(bool withFiles) {
    const QVector<QStringList> rows = ReadRows(
        QStringLiteral("select fCode, fName, fDetail1, fFilePath, fBz from tWd_File1 where fYnxj=1"));
    Connection& c = conn();
    Transaction t(c);
    ClearIndex(ArchiveTable());
    for (const QStringList& r : rows)
        IndexArchiveEntry(r[0], r[1], true, r[2], withFiles ? r[3] : QString(), Val(r[4]) == 1);
    t.commit();
    return int(rows.size());
}

QVector<SearchHit> FindInArchive(const QString& query, const QString& classCode) {
    return SearchDocuments(ArchiveTable(), query, classCode);
}

QString DeptDocumentsSql(const QString& classCode) {
    QString sql = QStringLiteral("Select * from tWd_File1 Where fynxj=1");
    if (!classCode.isEmpty())
        sql += QStringLiteral("  And fCode like ") + quoted(classCode + QLatin1Char('%'));
    return sql + QStringLiteral(" Order by fbmcode,fcode");
}

} // namespace zq
