#pragma once

#include "shell/TextSearch.h"

#include <QString>
#include <QVector>

namespace zq {

// The statements of the document archive (tWd_File1), callable without a window: the search index
// over its documents and the list of documents by department.

// The archive's table as its screens name it.
QString ArchiveTable();

// What of a document's file goes into the index: the text of a .txt, .docx, .odt or .doc file that
// exists; nothing for a picture, a missing file or another kind.
QString ArchiveFileText(const QString& path, bool picture);

// Puts a document (fYnxj 1) into the index with its stored contents and its file's text, or takes a
// class out of it. Runs on conn() inside the caller's transaction.
void IndexArchiveEntry(const QString& code, const QString& name, bool document, const QString& contents,
                       const QString& filePath, bool picture);
// Rebuilds the whole index of the archive from the table, with the files' texts when asked (slow on
// a share), in one transaction. Gives the number of documents indexed.
int ReindexArchive(bool withFiles);

// Documents whose name or text hold every word of the query, under a class when one is given.
QVector<SearchHit> FindInArchive(const QString& query, const QString& classCode = {});

// The documents of the archive by department, under a class when one is given.
QString DeptDocumentsSql(const QString& classCode);

} // namespace zq
