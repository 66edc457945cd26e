#include "OfficeData.h"

#include "services/Lookups.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/SqlText.h"

#include <QDateTime>

namespace zq::office {

namespace {

QString likeTerm(const QString& field, const QString& typed) {
    return QStringLiteral(" And a.") + field + QStringLiteral(" Like '") + checked(WildcardToLike(typed)) +
           QLatin1Char('\'');
}

} // namespace

QString DateText(const QDate& d) {
    return G().DateQuote + d.toString(QStringLiteral("yyyy-MM-dd")) + G().DateQuote;
}

QString SeekFilter(const SeekTerms& t) {
    QString f = QStringLiteral("1=1");
    if (t.byDate)
        f += QStringLiteral(" And (a.fDate>=") + DateText(t.from) + QStringLiteral(" And a.fDate<=") +
             DateText(t.to) + QLatin1Char(')');
    if (t.byTitle) f += likeTerm(QStringLiteral("fTitle"), t.title);
    if (t.byContent) f += likeTerm(QStringLiteral("fContent"), t.content);
    if (t.byAuthor) f += likeTerm(QStringLiteral("fFootnote1"), t.author);
    if (t.byChecker) f += likeTerm(QStringLiteral("fFootnote2"), t.checker);
    if (t.byDept) f += likeTerm(QStringLiteral("fBmName"), t.dept);
    if (t.forwardedOnly) f += QStringLiteral(" And a.fNews=1");
    return f;
}

QString DeptListSql(const QString& table, const QString& typedFilter) {
    const QString prefix = G().UserDeptCode;
    // Searches by title and the like read every row of the period: on the server in the form it
    // compares cheaply.
    const QString filter = conn().dialect().caselessLikes(typedFilter);
    QString sql;
    if (!prefix.isEmpty()) {
        sql = QStringLiteral("a.* from ") + table +
              QStringLiteral(" as a Left Join tRs_Bm as b On ") +
              conn().dialect().caselessEqual(QStringLiteral("a.fBmName"), QStringLiteral("b.fName")) +
              QStringLiteral(" Where (b.fCode Like '") +
              checked(prefix) + QStringLiteral("%' or ") +
              conn().dialect().isNullOrEmpty(QStringLiteral("a.fBmName")) + QLatin1Char(')');
        if (!filter.isEmpty()) sql += QStringLiteral(" And ") + filter;
    } else {
        sql = QStringLiteral("* from ") + table + QStringLiteral(" a");
        if (!filter.isEmpty()) sql += QStringLiteral(" Where ") + filter;
    }
    sql += QStringLiteral(" Order By a.fDate Desc");
    return conn().dialect().selectTop(30, sql);
}

int NextKey(const QString& table, bool sixteenBits) {
    const double next = Val(NextCode(table, QStringLiteral("fID"), {})) + 1;
    if (sixteenBits && next > 32767) throw DbError(QStringLiteral("编号已超出 32767"));
    return int(next);
}

int AddWithNewKey(const QString& table, bool sixteenBits, const std::function<void(int)>& insert) {
    // Each try reads the maximum anew, which then holds the other client's committed row. The
    // failed insert undoes only itself (a statement savepoint), so the transaction goes on.
    constexpr int kTries = 50;
    const QString turn = conn().dialect().lockNewKeys(table);
    if (!turn.isEmpty()) conn().execute(turn);
    for (int attempt = 1;; ++attempt) {
        const int id = NextKey(table, sixteenBits);
        try {
            insert(id);
            return id;
        } catch (const DbError& e) {
            // The server's driver does not always tell a refused key by its code; a key that
            // another client's row now holds tells it as well.
            const bool taken = dynamic_cast<const DuplicateKeyError*>(&e) ||
                               CountRows(table, QStringLiteral("fID=") + num(id)) > 0;
            if (!taken || attempt == kTries) throw;
        }
    }
}

QString PostedStamp() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
}

void ForwardNotice(const QDate& date, const QString& text, const QString& dept) {
    AddWithNewKey(QStringLiteral("tRs_News"), false, [&](int id) {
        // The text goes in as it stands: a quote fails the statement, and with it the whole save.
        conn().executeOne(
            QStringLiteral("Insert Into tRs_News (fID,fDate,fContent,fBmName,fPosted,fPoster) values (") +
            num(id) + QLatin1Char(',') + DateText(date) + QLatin1Char(',') + quoted(text) + QLatin1Char(',') +
            quoted(dept) + QLatin1Char(',') + quoted(PostedStamp()) + QLatin1Char(',') +
            quoted(G().UserName) + QLatin1Char(')'));
    });
}

void DeleteRow(const QString& table, int id) {
    conn().executeOne(QStringLiteral("DELETE From ") + table + QStringLiteral(" where fID=") + num(id));
}

} // namespace zq::office
