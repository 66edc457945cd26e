#include "LoanData.h"

#include "services/InputAids.h"
#include "services/Lookups.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/SqlText.h"

#include <QRegularExpression>

namespace zq {

namespace {

QString dateText(const QDate& d) {
    return conn().dialect().dateQuote() + checked(d.toString(Qt::ISODate)) + conn().dialect().dateQuote();
}

// " and <column> between a  and  b" of a range row; the texts as typed are checked for numbers so
// that a word never reaches the statement as a column name.
QString range(const QString& column, const SeekInput& r) {
    const auto number = [](const QString& t) {
        if (!IsNumericText(t)) throw DbError(QStringLiteral("not a number: ") + t);
        return QString::number(Val(t), 'g', 15);
    };
    return QStringLiteral(" and ") + column + QStringLiteral(" between ") + number(r.a) +
           QStringLiteral("  and  ") + number(r.b);
}

QString dates(const QString& column, const SeekInput& r) {
    return QStringLiteral(" and ") + column + QStringLiteral(" between ") + dateText(r.d1) +
           QStringLiteral("  and  ") + dateText(r.d2);
}

QString like(const QString& column, const QString& pattern) {
    return QStringLiteral(" and ") + column + QStringLiteral(" like ") + quoted(pattern);
}

// The compare operators of the certificate search; anything else is no operator.
QString compareOp(const QString& op) {
    static const QStringList ops = {QStringLiteral(">"), QStringLiteral("<"), QStringLiteral(">="),
                                    QStringLiteral("<="), QStringLiteral("=")};
    if (!ops.contains(op)) throw DbError(QStringLiteral("no operator: ") + op);
    return op;
}

QVariant number(const QString& text) {
    return Val(text);
}

QVariant dateOrNull(const QString& text) {
    const QDate d = ParseDate(text);
    return d.isValid() ? QVariant(d.toString(Qt::ISODate)) : QVariant();
}

} // namespace

QString LoanTable(int state) {
    return state == 2 ? QStringLiteral("tRsLoanGoods") : QStringLiteral("trsLoanTools");
}

QString LoanCaption(int state) {
    return state == 2 ? QStringLiteral("借领用行政物品") : QStringLiteral("借领用工具设备");
}

QString LoanModelKey(int state) {
    return state == 2 ? QStringLiteral("mnuRsOthTools") : QStringLiteral("mnuRsOthLoanGoods");
}

const QStringList& LoanFields() {
    static const QStringList f =
        QStringLiteral("fcode,fName,goodsname,Model,geshu,price,Total,useyear,lyxz,loantime,"
                       "backtime,demo")
            .split(QLatin1Char(','));
    return f;
}

const QStringList& CardFields() {
    static const QStringList f =
        QStringLiteral("fcode,fName,cardname,cardcode,cardjg,cardtime,usetime,fyxz,pxfy")
            .split(QLatin1Char(','));
    return f;
}

PagedQuery LoanSeekPaged(const QString& table, const QString& fieldList, const QVector<SeekInput>& rows) {
    // A loan of a person outside the clerk's departments (with no department at all, while the
    // scope is empty) is counted and numbered but shows blank, its key with it.
    QString inScope = QStringLiteral("b.fbmcode<>''");
    if (const QString scope = G().DeptScope; !scope.isEmpty())
        inScope += QStringLiteral(" and ") + conn().dialect().like(QStringLiteral("b.fbmcode"),
                                                                    quoted(QLatin1Char('%') + scope + QLatin1Char('%')));
    PagedQuery q;
    const QStringList fields = fieldList.split(QLatin1Char(','));
    for (const QString& f : fields)
        q.columns << QStringLiteral("case when ") + inScope + QStringLiteral(" then a.") + f + QStringLiteral(" end");
    q.headerColumn = true;
    q.key = QStringLiteral("a.fID");
    q.keyColumn = int(fields.indexOf(QRegularExpression(QStringLiteral("^fid$"),
                                                        QRegularExpression::CaseInsensitiveOption))) + 1;
    q.from = table + QStringLiteral(" a Inner join trsbasic b On ") +
             conn().dialect().caselessEqual(QStringLiteral("a.fcode"), QStringLiteral("b.fcode"));
    q.condition = QStringLiteral("1=1");
    static const char* const likeColumns[] = {"a.fcode", "a.fname", "goodsname", "model", nullptr, nullptr,
                                              nullptr,   nullptr,   "lyxz",      nullptr, nullptr, "demo"};
    static const char* const rangeColumns[] = {"geshu", "price", "total", "useyear"};
    for (int i = 0; i < rows.size() && i < 12; ++i) {
        const SeekInput& r = rows.at(i);
        if (!r.ticked) continue;
        if (likeColumns[i])
            q.condition += like(QLatin1String(likeColumns[i]), WildcardToLike(r.a));
        else if (i >= 4 && i <= 7)
            q.condition += range(QLatin1String(rangeColumns[i - 4]), r);
        else
            q.condition += dates(i == 9 ? QStringLiteral("a.loantime") : QStringLiteral("a.backtime"), r);
    }
    q.order = QStringList{QStringLiteral("a.fcode"), QStringLiteral("a.loantime desc")};
    return q;
}

QString CardSeekSql(const QVector<SeekInput>& rows) {
    QString sql = QStringLiteral("select * from trscard where 1=1");
    for (int i = 0; i < rows.size() && i < 9; ++i) {
        const SeekInput& r = rows.at(i);
        if (!r.ticked) continue;
        const QString& field = CardFields().at(i);
        if (i == 5) {
            sql += dates(field, r);
        } else if (i == 6) {
            sql += QStringLiteral(" and usetime") + compareOp(r.op) + dateText(r.d1);
        } else if (i == 8) {
            if (!IsNumericText(r.a)) throw DbError(QStringLiteral("not a number: ") + r.a);
            sql += QStringLiteral(" and pxfy ") + compareOp(r.op) + QString::number(Val(r.a), 'g', 15);
        } else {
            sql += like(field.toLower(), QLatin1Char('%') + r.a + QLatin1Char('%'));
        }
    }
    return sql + QStringLiteral(" order by cardtime");
}

QVector<LabelCaption> LoadLabelCaptions(const QString& table) {
    Recordset rs(conn(), QStringLiteral("select FieldName") + G().lang() +
                             QStringLiteral(",fieldbrieftype from RptListDetail where ftable=") +
                             quoted(table) + QStringLiteral(" And ") + conn().dialect().lowerFunction() +
                             QStringLiteral("(FieldName)<>'fid' Order by OrderID"));
    QVector<LabelCaption> out;
    for (; !rs.eof(); rs.moveNext())
        out.push_back({rs.text(0), rs.text(1)});
    return out;
}

void SaveBriefTypes(const QString& table, const QStringList& fields, const QStringList& types) {
    Transaction t(conn());
    for (int i = 0; i < fields.size() && i < types.size(); ++i)
        conn().executeOne(
            QStringLiteral("update RptListDetail set fieldbrieftype=? where ftable=? and FieldName=?"),
            {checked(types.at(i)), table, fields.at(i)});
    t.commit();
}

QString LoanSubtotal(const QString& quantity, const QString& price, bool* tooLarge) {
    const double product = Val(quantity) * Val(price);
    const bool over = product > 9999999999999.0;
    if (tooLarge) *tooLarge = over;
    return over ? QStringLiteral("99999999999.99") : QString::number(product, 'f', 2);
}

bool IsNumericText(const QString& text) {
    static const QRegularExpression number(
        QStringLiteral("^\\s*[-+]?(\\d+\\.?\\d*|\\.\\d+)([eE][-+]?\\d+)?\\s*$"));
    return number.match(text).hasMatch();
}

QDate ParseDate(const QString& text) {
    const QString t = text.trimmed();
    for (const char* format : {"yyyy-M-d", "yyyy/M/d", "yyyy.M.d", "yyyyMMdd"}) {
        const QDate d = QDate::fromString(t, QLatin1String(format));
        if (d.isValid()) return d;
    }
    return {};
}

PersonRef FindPerson(const QString& code) {
    Recordset rs(conn(), QStringLiteral("select fName,fBmCode from trsbasic where fcode=") + quoted(code));
    if (rs.eof()) return {};
    return {true, rs.text(0), rs.text(1)};
}

QString PersonCodeOfName(const QString& name) {
    Recordset rs(conn(), QStringLiteral("select fcode from trsbasic where fname=") + quoted(name));
    return rs.eof() ? QString() : rs.text(0);
}

QString PersonNameOfCode(const QString& code, bool servingOnly) {
    Recordset rs(conn(), QStringLiteral("select fname from trsbasic where fcode=") + quoted(code) +
                             (servingOnly ? QStringLiteral(" And fZt=1") : QString()));
    return rs.eof() ? QString() : rs.text(0);
}

RowSnapshot ReadLoan(const QString& table, const QString& key) {
    if (!IsNumericText(key)) return {};
    return Snapshot(Recordset(conn(), QStringLiteral("select * from ") + table +
                                          QStringLiteral(" where fid=") + QString::number(qint64(Val(key)))));
}

EntryCheck CheckLoanEntry(const LoanEntry& e, const QStringList& captions) {
    for (int i = 0; i < 3; ++i)
        if (e.fields[i].isEmpty()) return {captions.value(i) + QStringLiteral("不能为空！"), i};
    for (int i : {4, 5, 6, 7})
        if (!e.fields[i].isEmpty() && !IsNumericText(e.fields[i]))
            return {captions.value(i) + QStringLiteral("必须为数字型!"), i};
    if (!e.fields[10].isEmpty()) {
        const QDate back = ParseDate(e.fields[10]);
        if (!back.isValid())
            return {QStringLiteral("归还日期格式错误，应为") + QDate::currentDate().toString(Qt::ISODate) +
                        QStringLiteral("格式，请更改！"),
                    10, 0};
        if (back < e.loanDate) return {QStringLiteral("归还日期应大于领用日期!"), 10};
    }
    const PersonRef p = FindPerson(e.fields[0]);
    if (!p.found) return {QStringLiteral("此工号不存在,请查证!"), 0};
    if (p.name != e.fields[1]) return {QStringLiteral("此人工号与姓名不符,请查证!"), 1};
    if (!p.deptCode.contains(G().DeptScope)) return {QStringLiteral("此人不属于你部门,无权录入!"), 0};
    return {};
}

void SaveLoan(const QString& table, int mode, const QString& key, const LoanEntry& e,
              const RowSnapshot& loaded) {
    Connection& c = conn();
    Transaction t(c);
    const QString where =
        mode == 1 ? QStringLiteral("1=2") : QStringLiteral("fid=") + QString::number(qint64(Val(key)));
    Recordset rs(c, QStringLiteral("select * from ") + table + QStringLiteral(" where ") + where,
                 Cursor::Keyset, Lock::Optimistic);
    if (mode != 1) RequireUnchanged(loaded, rs);
    if (rs.eof()) rs.addNew();
    const QStringList& f = LoanFields();
    for (int i : {0, 1, 2, 3, 8, 11})
        rs.setValue(f.at(i), checked(e.fields[i]));
    for (int i : {4, 5, 6, 7})
        rs.setValue(f.at(i), number(e.fields[i]));
    rs.setValue(f.at(9), e.loanDate.toString(Qt::ISODate));
    // A return date can be changed but not removed.
    if (!e.fields[10].isEmpty()) rs.setValue(f.at(10), dateOrNull(e.fields[10]));
    rs.update();
    t.commit();
}

void DeleteLoan(const QString& table, const QString& key) {
    Transaction t(conn());
    conn().executeOne(QStringLiteral("delete from ") + table + QStringLiteral(" where fID=") +
                      QString::number(qint64(Val(key))) + QStringLiteral(" and backtime is not null"));
    t.commit();
}

EntryCheck CheckCardEntry(const CardEntry& e, const QStringList& captions) {
    for (int i = 0; i < 5; ++i)
        if (e.fields[i].isEmpty()) return {captions.value(i) + QStringLiteral("不能为空，请输入内容！"), i};
    const PersonRef p = FindPerson(e.fields[0]);
    if (!p.found) return {QStringLiteral("此工号不存在,请查证!"), 0};
    if (p.name != e.fields[1]) return {QStringLiteral("此人工号与姓名不符,请查证!"), 1};
    if (!p.deptCode.contains(G().DeptScope)) return {QStringLiteral("此人不属于你部门,无权录入!"), 0};
    if (!e.fields[8].isEmpty() && !IsNumericText(e.fields[8]))
        return {QStringLiteral("培训费用必须为数字型!"), 8};
    return {};
}

void SaveCard(const CardEntry& e, const RowSnapshot& loaded) {
    Connection& c = conn();
    Transaction t(c);
    Recordset rs(c,
                 QStringLiteral("select * from trscard where cardcode=") + quoted(e.fields[3]) +
                     QStringLiteral(" and fcode=") + quoted(e.fields[0]),
                 Cursor::Keyset, Lock::Optimistic);
    // The certificate on show is written only as it was read; a new number or person is another
    // certificate, added or written over as on adding.
    if (loaded.value(QStringLiteral("cardcode")) == e.fields[3] &&
        loaded.value(QStringLiteral("fcode")) == e.fields[0])
        RequireUnchanged(loaded, rs);
    if (rs.eof()) rs.addNew();
    const QStringList& f = CardFields();
    for (int i : {0, 1, 2, 3, 4, 7})
        rs.setValue(f.at(i), checked(e.fields[i]));
    for (int i : {5, 6})
        rs.setValue(f.at(i), dateOrNull(e.fields[i]));
    rs.setValue(f.at(8), number(e.fields[8]));
    rs.update();
    t.commit();
}

RowSnapshot ReadCardByNumber(const QString& number) {
    return Snapshot(
        Recordset(conn(), QStringLiteral("select * from trscard where cardcode=") + quoted(number)));
}

void DeleteCard(const QString& code, const QString& number) {
    Transaction t(conn());
    conn().executeOne(QStringLiteral("delete from trscard where cardcode=? and fcode=?"), {number, code});
    t.commit();
}

} // namespace zq
