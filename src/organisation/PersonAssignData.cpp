#include "PersonAssignData.h"

#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

namespace zq {

namespace {

std::optional<PersonPlace> placeWhere(const QString& condition) {
    Recordset rs(conn(), QStringLiteral("Select fUnit,fBmName,fRz,fName From tRsBasic ") +
                             QStringLiteral(" Where ") + condition);
    if (rs.eof()) return std::nullopt;
    return PersonPlace{rs.text(0), rs.text(1), rs.text(2), rs.text(3)};
}

std::optional<PersonPlace> placeOf(const QString& column, const QString& value) {
    // A name or code with a quote cannot be on file: the look-up simply finds nobody.
    if (value.contains(QLatin1Char('\''))) return std::nullopt;
    return placeWhere(column + QLatin1Char('=') + quoted(value));
}

SavedMove& savedMove() {
    static SavedMove last;
    return last;
}

} // namespace

QString ProposedMoveNumber() {
    return QString::number(Val(NextCode(QStringLiteral("trsPersonMove"), QStringLiteral("moveNmb"), {})) + 1,
                           'g', 15);
}

std::optional<PersonPlace> PlaceOfPersonNamed(const QString& name) {
    return placeOf(QStringLiteral("fName"), name);
}

std::optional<PersonPlace> PlaceOfPersonCoded(const QString& code) {
    return placeOf(QStringLiteral("fCode"), code);
}

std::optional<QVariant> MatchedPersonDept(const QString& name, const QString& code) {
    Recordset rs(conn(), QStringLiteral("select fBmCode from trsbasic Where fname=") +
                             quoted(name.trimmed()) + QStringLiteral(" and fcode=") + quoted(code) +
                             QStringLiteral(" order by fcode"));
    if (rs.eof()) return std::nullopt;
    return rs.value(0);
}

bool InDeptScope(const QVariant& deptCode, const QString& scope) {
    if (deptCode.isNull()) return true;
    const QString code = deptCode.toString();
    return !code.isEmpty() && code.contains(scope);
}

QString MoveNumberText(const QString& moveNmb) {
    // Enough digits that ten typed characters never turn into an exponent.
    return QString::number(Val(moveNmb.trimmed()), 'g', 15);
}

QString MoveHistoryYear(const QDate& date) {
    return QStringLiteral("... ～") + date.toString(QStringLiteral("yyyy-MM-dd"));
}

MoveSaveResult SaveMoveOrder(const MoveOrder& o, int mode, const RowSnapshot& loaded) {
    Transaction tx(conn());
    Recordset rs(conn(),
                 QStringLiteral("select * from trsPersonMove Where moveNmb=") + MoveNumberText(o.moveNmb),
                 Cursor::Keyset, Lock::Optimistic);
    // The order on show is written only while it is as it was read: gone, it is not made again.
    if (mode == 2 && !loaded.isEmpty() &&
        MoveNumberText(loaded.value(QStringLiteral("movenmb"))) == MoveNumberText(o.moveNmb))
        RequireUnchanged(loaded, rs);
    if (rs.eof())
        rs.addNew();
    else if (mode == 1)
        return MoveSaveResult::NumberInUse;
    rs.setValue(QStringLiteral("moveNmb"), Val(o.moveNmb.trimmed()));
    rs.setValue(QStringLiteral("fName"), o.fName);
    rs.setValue(QStringLiteral("fcode"), o.fcode);
    rs.setValue(QStringLiteral("oldunit"), o.oldunit);
    rs.setValue(QStringLiteral("olddpt"), o.olddpt);
    rs.setValue(QStringLiteral("worktype"), o.worktype);
    rs.setValue(QStringLiteral("newunit"), o.newunit);
    rs.setValue(QStringLiteral("newdpt"), o.newdpt);
    rs.setValue(QStringLiteral("newworktype"), o.newworktype);
    rs.setValue(QStringLiteral("chgperson"), o.chgperson);
    rs.setValue(QStringLiteral("wrtperson"), o.wrtperson);
    rs.setValue(QStringLiteral("wrtdate"), o.wrtdate.toString(QStringLiteral("yyyy-MM-dd")));
    rs.update();
    rs.close();

    // Only a move between departments is history; a new unit or post alone is not.
    if (o.olddpt != o.newdpt) {
        Recordset work(conn(), QStringLiteral("select * from trswork where 1=2"), Cursor::Keyset,
                       Lock::Optimistic);
        work.addNew();
        work.setValue(QStringLiteral("fcode"), o.fcode);
        work.setValue(QStringLiteral("fYear"), MoveHistoryYear(o.wrtdate));
        work.setValue(QStringLiteral("fbm"), o.olddpt);
        work.setValue(QStringLiteral("newbm"), o.newdpt);
        work.setValue(QStringLiteral("fRz"), o.worktype);
        work.setValue(QStringLiteral("ftype"), 1);
        work.update();
        work.close();
    }
    tx.commit();
    savedMove() = {MoveNumberText(o.moveNmb), o.fcode, o.fName};
    return MoveSaveResult::Saved;
}

const SavedMove& LastSavedMove() {
    return savedMove();
}

} // namespace zq
