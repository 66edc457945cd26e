#include "PersonRecordsData.h"

#include "PersonBasicData.h"
#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/SqlText.h"

#include <algorithm>

namespace zq {

namespace {

QString personRow(const QString& table, const QString& code) {
    return QStringLiteral("select * from ") + table + QStringLiteral(" where fcode=") + quoted(code);
}

// Reads named fields of a person's one row, empty texts when there is none.
QStringList readFields(Recordset& rs, const QStringList& fields) {
    QStringList values;
    for (const QString& f : fields)
        values << (rs.eof() ? QString() : rs.text(f));
    return values;
}

// Opens the one row of a statement for writing: the row as it stands must be the row that was
// read, or none when none was (then it is added, with `fcode`).
void openReadRow(Recordset& rs, const QString& code, const RowSnapshot& loaded) {
    if (loaded.isEmpty()) {
        if (!rs.eof()) throw ConflictError(); // another client made it meanwhile
        rs.addNew();
        rs.setValue(QStringLiteral("fcode"), code);
    } else {
        RequireUnchanged(loaded, rs);
    }
}

// Writes a person's one row of a table in one transaction, as it was read.
void writePersonRow(const QString& table, const QString& code, const QStringList& fields,
                    const QStringList& values, const RowSnapshot& loaded) {
    Transaction t(conn());
    Recordset rs(conn(), personRow(table, code), Cursor::Keyset, Lock::Optimistic);
    openReadRow(rs, code, loaded);
    for (int i = 0; i < fields.size(); ++i)
        rs.setValue(fields.at(i), values.value(i));
    rs.update();
    rs.close();
    t.commit();
}

const QStringList& detailFields() {
    static const QStringList f{"fRsDetail1", "fRsDetail2", "fRsDetail3", "fRsDetail4"};
    return f;
}

} // namespace

const QStringList& SpouseFields() {
    static const QStringList f{"fpname",  "fpbirthday", "fpzz", "fpmz", "fpjg",
                               "fpphone", "fpxl",       "fphj", "fprz", "fpdw"};
    return f;
}

const QVector<int>& SpouseLengths() {
    static const QVector<int> l{10, 10, 10, 20, 40, 20, 20, 20, 20, 60};
    return l;
}

MaritalState ReadMaritalState(const QString& code) {
    Recordset rs(conn(), QStringLiteral("select fHY from trsbasic where fcode=") + quoted(code));
    MaritalState m;
    m.found = !rs.eof();
    if (m.found) m.fHy = rs.text(0);
    return m;
}

SpouseRow ReadSpouse(const QString& code) {
    Recordset rs(conn(), personRow(QStringLiteral("tRsBasic_P"), code));
    return {readFields(rs, SpouseFields()), rs.eof() ? RowSnapshot() : Snapshot(rs)};
}

void WriteSpouse(const QString& code, const QStringList& values, const RowSnapshot& loaded) {
    writePersonRow(QStringLiteral("tRsBasic_P"), code, SpouseFields(), values, loaded);
}

int WrongSpouseDate(const QStringList& values) {
    const QString birthday = values.value(1).trimmed();
    return birthday.isEmpty() || IsDateText(birthday) ? -1 : 1;
}

QStringList AppraisalYears(const QString& code, int thisYear) {
    Recordset rs(conn(), QStringLiteral("select fSpDay from tRsBasic where fcode=") + quoted(code));
    const int from = rs.eof() ? 0 : int(Val(rs.text(0).left(4)));
    QStringList years;
    if (from == 0) return years;
    for (int y = from; y <= thisYear; ++y)
        years << QString::number(y);
    return years;
}

namespace {
QString appraisalSql(const QString& code, const QString& year) {
    // The year stands unquoted: only digits pass; without them "fyear=" ends the statement, which
    // fails as it always did for a person without a year list.
    const bool digits = std::all_of(year.begin(), year.end(), [](QChar c) { return c.isDigit(); });
    return QStringLiteral("Select * from tRsRemark where fCode=") + quoted(code) +
           QStringLiteral(" And fyear=") + (digits ? year : QString());
}
} // namespace

Appraisal ReadAppraisal(const QString& code, const QString& year) {
    Recordset rs(conn(), appraisalSql(code, year));
    if (rs.eof()) return {};
    return {rs.text(QStringLiteral("fpy")), rs.text(QStringLiteral("fpdr")), Snapshot(rs)};
}

void WriteAppraisal(const QString& code, const QString& year, const Appraisal& a) {
    Recordset rs(conn(), appraisalSql(code, year), Cursor::Keyset, Lock::Optimistic);
    openReadRow(rs, code, a.loaded);
    rs.setValue(QStringLiteral("fYear"), int(Val(year)));
    rs.setValue(QStringLiteral("fpy"), a.text);
    rs.setValue(QStringLiteral("fpdr"), a.appraiser);
    rs.setValue(QStringLiteral("fcode"), code);
    rs.update();
}

QStringList DetailCaptions() {
    QStringList captions;
    for (Recordset rs(conn(),
                      QStringLiteral("select FieldName_%1 from rptListDetail where fTable='tRsDetail' and "
                                     "FieldID>0 Order By OrderID")
                          .arg(G().Language));
         !rs.eof() && captions.size() < 4; rs.moveNext())
        captions << rs.text(0);
    return captions;
}

DetailRow ReadDetail(const QString& code) {
    Recordset rs(conn(), personRow(QStringLiteral("tRsDetail"), code));
    return {readFields(rs, detailFields()), rs.eof() ? RowSnapshot() : Snapshot(rs)};
}

void WriteDetail(const QString& code, const QStringList& values, const RowSnapshot& loaded) {
    writePersonRow(QStringLiteral("tRsDetail"), code, detailFields(), values, loaded);
}

QString DetailSeekFilter(const QVector<bool>& ticked, const QStringList& texts) {
    QString filter = QStringLiteral("1=1");
    for (int i = 0; i < 4; ++i)
        if (ticked.value(i))
            filter += QStringLiteral(" And b.fRsDetail%1 Like ").arg(i + 1) +
                      quoted(WildcardToLike(texts.value(i)));
    return filter;
}

QVector<DictColumn> WorkStateColumns() {
    QVector<DictColumn> cols;
    for (Recordset rs(conn(), QStringLiteral("select FieldGridWidth,FieldName_%1 from RptListDetail  where "
                                             "ftable='tRs_WorkState' Order by OrderID")
                                  .arg(G().Language));
         !rs.eof(); rs.moveNext())
        cols.append({rs.text(1), rs.value(0).isNull() ? 8 : rs.val(0)});
    return cols;
}

QString RecordSavedText(const QString& caption, const QString& code, const QString& name) {
    return QLatin1Char('<') + caption + QStringLiteral(">记录存盘 [") + code + QLatin1Char('-') + name +
           QLatin1Char(']');
}

} // namespace zq
