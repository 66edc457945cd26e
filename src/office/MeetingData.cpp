#include "MeetingData.h"

#include "services/Lookups.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/SqlText.h"

namespace zq::meeting {

namespace {
const QString kTable = QStringLiteral("tRs_meeting");
}

QString DefaultFoot1() {
    return QStringLiteral("主办单位:");
}

QString DefaultFoot2() {
    return QStringLiteral("协办单位:");
}

QString ListSql(const QString& filter) {
    return office::DeptListSql(kTable, filter);
}

namespace {
void writeMeetingRow(int id, bool adding, const Meeting& m, const RowSnapshot& loaded) {
    Recordset rs(conn(), QStringLiteral("select * from tRs_meeting Where fID=") + num(id), Cursor::Keyset,
                 Lock::Optimistic);
    if (adding) {
        rs.addNew();
    } else {
        RequireUnchanged(loaded, rs);
        if (rs.eof()) throw ConflictError(QStringLiteral("会议记录已被他人删除"));
    }
    rs.setValue(QStringLiteral("fID"), id);
    rs.setValue(QStringLiteral("fDate"), m.date.toString(QStringLiteral("yyyy-MM-dd")));
    rs.setValue(QStringLiteral("fTitle"), m.title);
    rs.setValue(QStringLiteral("fContent"), m.content);
    rs.setValue(QStringLiteral("fFoot1"), m.foot1);
    rs.setValue(QStringLiteral("fFoot2"), m.foot2);
    rs.setValue(QStringLiteral("fFootnote1"), m.host);
    rs.setValue(QStringLiteral("fFootnote2"), m.cohost);
    rs.setValue(QStringLiteral("fFilePath"), m.filePath);
    rs.setValue(QStringLiteral("fNews"), m.news ? 1 : 0);
    rs.setValue(QStringLiteral("fBmName"), m.dept);
    rs.update();
}
} // namespace

int WriteMeeting(int id, const Meeting& m, const RowSnapshot& loaded) {
    if (id == 0)
        return office::AddWithNewKey(kTable, true, [&](int newId) { writeMeetingRow(newId, true, m, {}); });
    writeMeetingRow(id, false, m, loaded);
    return id;
}

QString NoticeText(const Meeting& m) {
    const QString crlf = QStringLiteral("\r\n");
    QString text = m.title + crlf + m.content + crlf;
    if (!TrimBlanks(m.host).isEmpty()) text += crlf + m.foot1 + m.host + crlf;
    if (!TrimBlanks(m.cohost).isEmpty()) text += m.foot2 + m.cohost + crlf;
    return text;
}

void DeleteMeeting(int id) {
    office::DeleteRow(kTable, id);
}

} // namespace zq::meeting
