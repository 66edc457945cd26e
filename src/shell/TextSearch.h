#pragma once

#include "Connection.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace zq {

// Full-text search of documents kept in other tables (the archive, the dictionary): one index row a
// document, keyed by its table and code, holding its name and whole text. Chinese has no spaces,
// so a run of Chinese characters is indexed as its overlapping pairs ("员工手册" gives 员工, 工手,
// 手册); other letters and digits form words, folded to lower case.

// The tokens of a text as they are indexed.
QStringList SearchTokens(const QString& text);

// Creates the index tables; nothing when they exist.
void CreateSearchIndex(Connection& c);

// Puts a document's name and text into the index, or replaces what it held. Runs on conn() inside
// the caller's transaction, so that the index changes with the document.
void IndexDocument(const QString& table, const QString& code, const QString& name, const QString& text);
// Indexes the name and stored text (fDetail1) of the rows of a table a condition selects, on `c`.
void IndexStoredTexts(Connection& c, const QString& table, const QString& condition);
// Takes a document out of the index; nothing when it is not there.
void UnindexDocument(const QString& table, const QString& code);
// Takes every document of a table out of the index.
void ClearIndex(const QString& table);

struct SearchHit {
    QString code;
    QString name;
    QString line; // the first line of its text that holds a searched word, else its first line
};
// The documents of a table, in code order and at most `limit`, that hold every word of the query
// (words separated by blanks; each found as written, inside longer words too). A code prefix
// limits them to one branch. A query without letters or digits finds nothing.
QVector<SearchHit> SearchDocuments(const QString& table, const QString& query, const QString& codePrefix = {},
                                   int limit = 200);

// The line of a text that a hit shows: the first that holds any of the words, trimmed and cut to
// `width` characters around the word.
QString MatchingLine(const QString& text, const QStringList& words, int width = 60);

} // namespace zq
