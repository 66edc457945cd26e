#include "NewsData.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/SqlText.h"

namespace zq::news {

namespace {
// The board's statements spell the table so; the database treats both spellings alike.
const QString kTable = QStringLiteral("tRs_news");
} // namespace

QString ListSql(const QString& filter) {
    return office::DeptListSql(kTable, filter);
}

namespace {
void writeNoticeRow(int id, bool adding, const Notice& n, const RowSnapshot& loaded) {
    Recordset rs(conn(), QStringLiteral("select * from tRs_news Where fID=") + num(id), Cursor::Keyset,
                 Lock::Optimistic);
    if (adding) {
        rs.addNew();
        rs.setValue(QStringLiteral("fPosted"), office::PostedStamp());
        rs.setValue(QStringLiteral("fPoster"), G().UserName);
    } else {
        RequireUnchanged(loaded, rs);
        if (rs.eof()) throw ConflictError(QStringLiteral("公告已被他人删除"));
    }
    rs.setValue(QStringLiteral("fID"), id);
    rs.setValue(QStringLiteral("fDate"), n.date.toString(QStringLiteral("yyyy-MM-dd")));
    rs.setValue(QStringLiteral("fContent"), n.content);
    rs.setValue(QStringLiteral("fBmName"), n.dept);
    rs.update();
}
} // namespace

int WriteNotice(int id, const Notice& n, const RowSnapshot& loaded) {
    if (id == 0)
        return office::AddWithNewKey(kTable, true, [&](int newId) { writeNoticeRow(newId, true, n, {}); });
    writeNoticeRow(id, false, n, loaded);
    return id;
}

void DeleteNotice(int id) {
    office::DeleteRow(kTable, id);
}

QString LastOpened(const QString& user) {
    Recordset rs(conn(), QStringLiteral("select fOpened from tRs_NewsSeen where fUser=") + quoted(user));
    return rs.eof() ? QString() : rs.text(0);
}

QString OpenBoard(const QString& user) {
    Transaction t(conn());
    const QString before = LastOpened(user);
    const QVariantList binds = {office::PostedStamp(), user};
    // One row a user, made at his first visit.
    if (conn().execute(QStringLiteral("update tRs_NewsSeen set fOpened=? where fUser=?"), binds) == 0)
        conn().executeOne(QStringLiteral("insert into tRs_NewsSeen (fOpened,fUser) values (?,?)"), binds);
    t.commit();
    return before;
}

int UnreadCount(const QString& user, const QString& deptPrefix) {
    const QString opened = LastOpened(user);
    QString sql = QStringLiteral("select count(*) from tRs_News a");
    QString where = opened.isEmpty() ? QStringLiteral(" Where a.fPosted is not null")
                                     : QStringLiteral(" Where a.fPosted>") + quoted(opened);
    // What he posted himself he has read.
    where += QStringLiteral(" And (") + conn().dialect().isNullOrEmpty(QStringLiteral("a.fPoster")) +
             QStringLiteral(" or a.fPoster<>") + quoted(user) + QLatin1Char(')');
    if (!deptPrefix.isEmpty()) {
        sql += QStringLiteral(" Left Join tRs_Bm b On ") +
               conn().dialect().caselessEqual(QStringLiteral("a.fBmName"), QStringLiteral("b.fName"));
        where += QStringLiteral(" And (b.fCode Like '") + checked(deptPrefix) + QStringLiteral("%' or ") +
                 conn().dialect().isNullOrEmpty(QStringLiteral("a.fBmName")) + QLatin1Char(')');
    }
    Recordset rs(conn(), sql + where);
    return int(rs.val(0));
}

bool IsUnread(const Recordset& rs, const QString& opened, const QString& user) {
    const QString posted = rs.text(QStringLiteral("fPosted"));
    if (rs.text(QStringLiteral("fPoster")) == user && !user.isEmpty()) return false;
    return !posted.isEmpty() && (opened.isEmpty() || posted > opened);
}

} // namespace zq::news
