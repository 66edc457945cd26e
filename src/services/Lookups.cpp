#include "Lookups.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <cmath>
#include <limits>

namespace zq {

namespace {

// A number read into a narrow variable overflows, as the old conversions did, instead of wrapping.
template <typename T> T narrow(double v) {
    const double r = std::nearbyint(v);
    if (r < double(std::numeric_limits<T>::min()) || r > double(std::numeric_limits<T>::max()))
        throw OverflowError();
    return T(r);
}

// First column of the first row as text, or nothing when there is no row.
bool firstText(const QString& sql, QString& out) {
    Recordset rs(conn(), sql);
    if (rs.eof()) return false;
    out = rs.text(0);
    return true;
}

QString byCode(const QString& code) {
    return QStringLiteral(" where fCode=") + quoted(code);
}

} // namespace

QString GetUserDeptCode(const QString& userName) {
    QString code = QStringLiteral("false-false");
    if (userName.isEmpty()) return code;
    firstText(QStringLiteral("select fbmcode from trsbasic where fname=") + quoted(userName), code);
    return code;
}

QString CodeFromName(const QString& table, const QString& name) {
    QString code;
    if (table.isEmpty()) return code;
    firstText(QStringLiteral("select fcode from ") + table + QStringLiteral(" where fname=") + quoted(name),
              code);
    return code;
}

QString NameFromCode(const QString& table, const QString& code) {
    QString name;
    if (table.isEmpty()) return name;
    firstText(QStringLiteral("select fName from ") + table + byCode(code), name);
    return name;
}

QString GetDetailPair(const QString& table, const QString& code, QString& detail1, QString& detail2) {
    if (table.isEmpty()) return {};
    Recordset rs(conn(), QStringLiteral("select fDetail1,fDetail2 from ") + table + byCode(code));
    if (!rs.eof()) {
        detail1 = rs.text(0);
        detail2 = rs.text(1);
    }
    return {};
}

QString GetDetail1(const QString& table, const QString& code, QString& detail1) {
    firstText(QStringLiteral("select fDetail1 from ") + table + byCode(code), detail1);
    return {};
}

qint32 GetDeptLimit(const QString& table, const QString& code, qint16& level) {
    level = 0;
    if (code.isEmpty()) return 0;
    Recordset rs(conn(), QStringLiteral("Select fLimited,fYnxj from ") + table +
                             QStringLiteral(" Where fCode=") + quoted(code));
    if (rs.eof()) return 0;
    level = narrow<qint16>(rs.val(1));
    return narrow<qint32>(rs.val(0));
}

int GetDeptPost(const QString& code, qint32& limit, quint8& level, QString& post, QString& trade) {
    if (code.isEmpty()) return 0;
    Recordset rs(conn(),
                 QStringLiteral("Select fLimited,fYnxj,fRz,fGzName from tRs_bm Where fCode=") + quoted(code));
    if (rs.eof()) return 0;
    limit = narrow<qint32>(rs.val(0));
    level = narrow<quint8>(rs.val(1));
    post = rs.text(2);
    trade = rs.text(3);
    return -1;
}

QString NextCode(const QString& table, const QString& field, const QString& tail) {
    QString max;
    firstText(QStringLiteral("select max(") + field + QStringLiteral(") as maxcode from ") + table +
                  QLatin1Char(' ') + tail,
              max);
    return max;
}

qint16 CountRows(const QString& table, const QString& condition) {
    QString sql = QStringLiteral("select count(*) from ") + table;
    if (!condition.isEmpty()) sql += QStringLiteral(" Where ") + condition;
    try {
        // The recordset runs its statement under a savepoint inside a transaction, so a failure
        // here leaves the caller's transaction as it was.
        Recordset rs(conn(), sql);
        if (rs.eof()) return 0;
        const double n = rs.val(0);
        return n > 32767 ? qint16(32767) : qint16(n);
    } catch (const DbError&) {
        return -1;
    }
}

bool GetPersonState(const QString& code) {
    Recordset rs(conn(), QStringLiteral("select fzt from trsbasic where fcode=") + quoted(code));
    return !rs.eof() && rs.val(0) == 1;
}

QString GetActivePerson(const QString& code) {
    // Bound, and matched through the lower-cased codes: it runs for every person a clerk picks.
    const QVector<QStringList> rows =
        ReadRows(QStringLiteral("Select fCode,fName,fBmCode,fBmName,fother2,fGzCode,fKqCardID from tRsBasic "
                                "where fzt=1 and ") +
                     conn().dialect().caselessEqual(QStringLiteral("fCode"), QStringLiteral("?")),
                 {checked(code)});
    Globals& g = G();
    QString* const targets[] = {&g.CurPersonCode,     &g.CurPersonName,   &g.CurPersonDeptCode,
                                &g.CurPersonDeptName, &g.CurPersonOther2, &g.CurPersonGzCode,
                                &g.CurPersonKqCardID};
    for (int i = 0; i < 7; ++i)
        *targets[i] = rows.isEmpty() ? QString() : rows.first().value(i);
    const QString name = g.CurPersonName;
    // DeptScope is never set and an empty text occurs in every code, so this guard stays quiet;
    // it is where a department limit of the user would act.
    if (!g.CurPersonDeptCode.isEmpty() && !g.CurPersonDeptCode.contains(g.DeptScope)) {
        ShowMsg(QStringLiteral("此人不属于你单位,无权操作!"), vbInformation);
        g.CurPersonCode.clear();
    }
    return name;
}

QString TrimBlanks(const QString& text) {
    int from = 0, to = int(text.size());
    while (from < to && text[from] == QLatin1Char(' '))
        ++from;
    while (to > from && text[to - 1] == QLatin1Char(' '))
        --to;
    return text.mid(from, to - from);
}

QString WildcardToLike(const QString& pattern) {
    QString s = TrimBlanks(pattern);
    if (s.isEmpty()) return s;
    auto convert = [&s](int i) {
        if (s[i] == QLatin1Char('*'))
            s[i] = QLatin1Char('%');
        else if (s[i] == QLatin1Char('#'))
            s[i] = QLatin1Char('_');
    };
    convert(0);
    convert(int(s.size()) - 1);
    if (!s.contains(QLatin1Char('%')) && !s.contains(QLatin1Char('_')))
        s = QLatin1Char('%') + s + QLatin1Char('%');
    return s;
}

} // namespace zq
