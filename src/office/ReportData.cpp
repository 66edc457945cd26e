#include "ReportData.h"

#include "services/Lookups.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

namespace zq::report {

namespace {

const QString kTable = QStringLiteral("tRs_RptFlow");

QString checkerField(int n, const char* tail = "") {
    return QStringLiteral("fChecker%1%2").arg(n).arg(QLatin1String(tail));
}

} // namespace

QStringList VerdictTexts() {
    return {QStringLiteral("未审核"), QStringLiteral("审核通过"), QStringLiteral("审核未通过"),
            QStringLiteral("暂缓审核")};
}

QColor CheckColor(int verdict) {
    switch (verdict) {
    case 0:
        return QColor(0, 0, 0);
    case 1:
        return QColor(0, 128, 0);
    case 2:
        return QColor(255, 0, 0);
    case 3:
        return QColor(0, 0, 255);
    default:
        return {};
    }
}

bool AddAnswerColumns() {
    // A condition that matches nothing: the count fails only when the column is missing.
    if (CountRows(kTable, QStringLiteral("fChecker1_='' and 1=2")) != -1) return false;
    const QString type = conn().dialect().addedTextColumn();
    for (int n = 1; n <= 4; ++n)
        conn().execute(QStringLiteral("Alter Table tRs_RptFlow Add Column ") + checkerField(n, "_") + type);
    return true;
}

QString ListSql(const QString& filter) {
    const Globals& g = G();
    QString sql;
    if (!g.UserDeptCode.isEmpty()) {
        const QString u = checked(g.UserName);
        sql =
            QStringLiteral("* from tRs_RptFlow Where (fFootnote1='%1' or fChecker1='%1' or fChecker2='%1' or "
                           "fChecker3='%1' or fChecker4='%1')")
                .arg(u);
    } else {
        sql = QStringLiteral("* from tRs_RptFlow a Where 1=1");
    }
    if (!filter.isEmpty()) sql += QStringLiteral(" And ") + filter;
    sql += QStringLiteral(" Order By fDate Desc");
    return conn().dialect().selectTop(30, sql);
}

QString JoinCheckers(const QStringList& checkers) {
    // The first name counts even when empty, so that the list then begins with ", ".
    QString joined = checkers.value(0);
    for (int i = 1; i < 4; ++i)
        if (!checkers.value(i).isEmpty()) joined += QStringLiteral(", ") + checkers.value(i);
    return joined;
}

int FirstFreeChecker(const QStringList& checkers) {
    for (int i = 0; i < 4; ++i)
        if (TrimBlanks(checkers.value(i)).isEmpty()) return i;
    return -1;
}

namespace {
void writeReportRow(int id, bool adding, const Report& r, const RowSnapshot& loaded) {
    Recordset rs(conn(),
                 QStringLiteral("select * from tRs_RptFlow where ") +
                     (adding ? QStringLiteral("1=2") : QStringLiteral("fID=") + num(id)),
                 Cursor::Static, Lock::Optimistic);
    if (adding) {
        rs.addNew();
        rs.setValue(QStringLiteral("fID"), id);
    } else {
        RequireUnchanged(loaded, rs);
        if (rs.eof()) throw DbError(QStringLiteral("报告记录已不存在"));
    }
    rs.setValue(QStringLiteral("fDate"), r.date.toString(QStringLiteral("yyyy-MM-dd")));
    rs.setValue(QStringLiteral("fTitle"), r.title);
    rs.setValue(QStringLiteral("fContent"), r.content);
    rs.setValue(QStringLiteral("fFootnote1"), r.author);
    rs.setValue(QStringLiteral("fFootnote2"), JoinCheckers(r.checkers));
    for (int n = 1; n <= 4; ++n) {
        rs.setValue(checkerField(n), r.checkers.value(n - 1));
        // Any change to a report asks every checker again; their answers stay for reference.
        rs.setValue(checkerField(n, "Ok"), 0);
    }
    rs.setValue(QStringLiteral("fFilePath"), r.filePath);
    rs.setValue(QStringLiteral("fNews"), r.news ? 1 : 0);
    rs.setValue(QStringLiteral("fBmName"), r.dept);
    rs.update();
}
} // namespace

int WriteReport(int id, const Report& r, const RowSnapshot& loaded) {
    if (id == 0)
        return office::AddWithNewKey(kTable, false, [&](int newId) { writeReportRow(newId, true, r, {}); });
    writeReportRow(id, false, r, loaded);
    return id;
}

QString NoticeText(const Report& r) {
    const QString crlf = QStringLiteral("\r\n");
    QString text = r.title + crlf + r.content + crlf;
    if (!TrimBlanks(r.author).isEmpty()) text += crlf + QStringLiteral("报告人:") + r.author;
    text += crlf;
    const QString joined = JoinCheckers(r.checkers);
    if (!TrimBlanks(joined).isEmpty()) text += QStringLiteral("审核人:") + joined + crlf;
    return text;
}

Rights RightsOf(const Recordset& rs, const QString& userName, bool supervisor) {
    Rights r;
    r.canChange = supervisor || userName == rs.text(QStringLiteral("fFootnote1"));
    for (int n = 1; n <= 4; ++n) {
        const QString name = rs.text(checkerField(n));
        if (rs.val(checkerField(n, "Ok")) > 0)
            r.answers += name + QStringLiteral("--") + rs.text(checkerField(n, "_")) + QStringLiteral("\r\n");
        if (name == userName) r.checkerNo = n; // named twice: the later slot
    }
    return r;
}

void SignOff(Recordset& rs, int checkerNo, int verdict, const QString& answer) {
    rs.setValue(checkerField(checkerNo, "Ok"), verdict);
    rs.setValue(checkerField(checkerNo, "_"), answer);
    rs.update();
}

void DeleteReport(int id) {
    office::DeleteRow(kTable, id);
}

} // namespace zq::report
