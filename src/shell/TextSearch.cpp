#include "TextSearch.h"

#include "DbError.h"
#include "Recordset.h"
#include "Schema.h"

#include <QRegularExpression>

#include <algorithm>

namespace zq {

namespace {

// What is indexed of a very long text: enough for any document a clerk files, and the server's word
// vectors stay far below their size limit.
constexpr int kIndexedChars = 200000;
// What is kept of one word, in UTF-16 units: the server refuses a word of over 2 KB in its index,
// and no word a clerk searches for is longer. Texts and queries are cut alike, so a longer word is
// still found by its first part.
constexpr int kWordChars = 200;

QString cutWord(const QString& word) {
    if (word.size() <= kWordChars) return word;
    return word.left(word.at(kWordChars - 1).isHighSurrogate() ? kWordChars - 1 : kWordChars);
}

bool isIdeograph(char32_t c) {
    switch (QChar::script(c)) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Hangul:
        return true;
    default:
        return false;
    }
}

// The tokens of a text in order. For a query (`forQuery`) a Chinese run of two or more characters
// gives only its pairs, which must follow each other; a run of one character is left for the
// caller to search by text.
struct Tokenised {
    QStringList tokens;
    bool single = false;     // a run of one Chinese character was met
    bool lastIsWord = false; // the last token is a word of letters or digits
};

Tokenised tokenise(const QString& text) {
    Tokenised out;
    QString word;
    QVector<char32_t> run;
    const auto flushWord = [&] {
        if (word.isEmpty()) return;
        out.tokens << cutWord(word).toLower();
        out.lastIsWord = true;
        word.clear();
    };
    const auto flushRun = [&] {
        if (run.isEmpty()) return;
        if (run.size() == 1) {
            out.tokens << QString::fromUcs4(run.constData(), 1);
            out.single = true;
        }
        for (qsizetype i = 0; i + 1 < run.size(); ++i)
            out.tokens << QString::fromUcs4(run.constData() + i, 2);
        out.lastIsWord = false;
        run.clear();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t c = text[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(text[i].unicode(), text[i + 1].unicode());
            ++i;
        }
        if (isIdeograph(c)) {
            flushWord();
            run << c;
        } else if (QChar::isLetterOrNumber(c)) {
            flushRun();
            if (QChar::requiresSurrogates(c)) {
                word += QChar(QChar::highSurrogate(c));
                word += QChar(QChar::lowSurrogate(c));
            } else {
                word += QChar(char16_t(c));
            }
        } else {
            flushWord();
            flushRun();
        }
    }
    flushWord();
    flushRun();
    return out;
}

const QString kIndexTable = QStringLiteral("zq_findtext");

} // namespace

QStringList SearchTokens(const QString& text) {
    return tokenise(text.left(kIndexedChars)).tokens;
}

void CreateSearchIndex(Connection& c) {
    if (schema::tableExists(c, kIndexTable)) return;
    for (const QString& sql : c.dialect().searchIndexSchema())
        c.execute(sql);
}

namespace {
void indexRow(Connection& c, const QString& table, const QString& code, const QString& name,
              const QString& text) {
    const Dialect& d = c.dialect();
    const QString whole = (name + QLatin1Char('\n') + text).left(kIndexedChars);
    const QString tokens = d.searchTokensValue(SearchTokens(whole));
    const int changed = c.execute(QStringLiteral("update zq_findtext set fname=?, ftext=?, ftokens=") +
                                      d.searchTokensMarker() + QStringLiteral(" where ftable=? and fcode=?"),
                                  {name, whole, tokens, table.toLower(), code});
    if (changed == 0)
        c.execute(QStringLiteral("insert into zq_findtext (ftable, fcode, fname, ftext, ftokens) values "
                                 "(?, ?, ?, ?, ") +
                      d.searchTokensMarker() + QLatin1Char(')'),
                  {table.toLower(), code, name, whole, tokens});
}
} // namespace

void IndexDocument(const QString& table, const QString& code, const QString& name, const QString& text) {
    indexRow(conn(), table, code, name, text);
}

void IndexStoredTexts(Connection& c, const QString& table, const QString& condition) {
    QVector<QStringList> rows;
    {
        Recordset rs(c, QStringLiteral("select fcode, fname, fDetail1 from ") + table +
                            QStringLiteral(" where ") + condition);
        for (; !rs.eof(); rs.moveNext())
            rows.push_back({rs.text(0), rs.text(1), rs.text(2)});
    }
    for (const QStringList& r : rows)
        indexRow(c, table, r[0], r[1], r[2]);
}

void UnindexDocument(const QString& table, const QString& code) {
    conn().execute(QStringLiteral("delete from zq_findtext where ftable=? and fcode=?"),
                   {table.toLower(), code});
}

void ClearIndex(const QString& table) {
    conn().execute(QStringLiteral("delete from zq_findtext where ftable=?"), {table.toLower()});
}

QString MatchingLine(const QString& text, const QStringList& words, int width) {
    const QStringList lines = text.split(QRegularExpression(QStringLiteral("[\r\n]+")), Qt::SkipEmptyParts);
    const auto cut = [width](const QString& line, qsizetype at) {
        const QString t = line.trimmed();
        if (t.size() <= width) return t;
        const qsizetype from = std::clamp<qsizetype>(at - width / 3, 0, t.size() - width);
        return (from > 0 ? QStringLiteral("…") : QString()) + t.mid(from, width) +
               (from + width < t.size() ? QStringLiteral("…") : QString());
    };
    // The name stands first in the indexed text; a word found only there shows the name.
    for (const QString& line : lines)
        for (const QString& w : words) {
            const qsizetype at = line.trimmed().indexOf(w, 0, Qt::CaseInsensitive);
            if (at >= 0) return cut(line, at);
        }
    return lines.isEmpty() ? QString() : cut(lines.first(), 0);
}

QVector<SearchHit> SearchDocuments(const QString& table, const QString& query, const QString& codePrefix,
                                   int limit) {
    Connection& c = conn();
    const Dialect& d = c.dialect();
    QVector<Dialect::SearchPhrase> phrases;
    QStringList words;
    QStringList likes;
    for (const QString& term : query.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts)) {
        const Tokenised t = tokenise(term);
        if (t.tokens.isEmpty()) continue;
        words << term;
        if (t.single) {
            // A lone Chinese character is no pair of the index: its documents are found by their
            // text. Wildcards of the pattern are taken as the characters they are.
            QString plain = term.toLower();
            plain.remove(QLatin1Char('%')).remove(QLatin1Char('_'));
            likes << QLatin1Char('%') + plain + QLatin1Char('%');
        } else {
            phrases.push_back({t.tokens, t.lastIsWord});
        }
    }
    if (words.isEmpty()) return {};
    QString sql = QStringLiteral("select fcode, fname, ftext from zq_findtext where ftable=?");
    QVariantList binds{table.toLower()};
    if (!phrases.isEmpty()) {
        sql += QStringLiteral(" and ") + d.searchCondition();
        binds << d.searchQueryValue(phrases);
    }
    for (const QString& like : likes) {
        sql += QStringLiteral(" and lower(ftext) like ?");
        binds << like;
    }
    if (!codePrefix.isEmpty()) {
        sql += QStringLiteral(" and fcode like ?");
        QString prefix = codePrefix;
        binds << prefix.remove(QLatin1Char('%')).remove(QLatin1Char('_')) + QLatin1Char('%');
    }
    sql += QStringLiteral(" order by fcode");
    sql = d.selectTop(limit, sql.mid(7));
    QVector<SearchHit> hits;
    for (const QStringList& row : ReadRows(sql, binds))
        hits.push_back({row[0], row[1], MatchingLine(row[2], words)});
    return hits;
}

} // namespace zq
