#include "PersonSheetData.h"

#include "personnel/PersonBasicData.h"
#include "services/FieldDictionary.h"
#include "shell/Connection.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

namespace zq {

namespace {

// Up to `limit` rows of a block, each the given columns.
QVector<QStringList> blockRows(const QString& sql, const QStringList& columns, int limit) {
    QVector<QStringList> rows;
    for (Recordset rs(conn(), sql); !rs.eof() && rows.size() < limit; rs.moveNext()) {
        QStringList row;
        for (const QString& c : columns)
            row << rs.text(c);
        rows << row;
    }
    return rows;
}

QHash<QString, QString> wholeRow(Recordset& rs) {
    QHash<QString, QString> row;
    if (rs.eof()) return row;
    for (int i = 0; i < rs.fieldCount(); ++i)
        if (rs.fieldName(i).compare(QLatin1String("fphoto"), Qt::CaseInsensitive) != 0)
            row.insert(rs.fieldName(i).toLower(), rs.text(i));
    return row;
}

// The dictionary fields whose captions the blocks show, by table.
struct AskedFields {
    const char* table;
    QStringList fields;
};

const QVector<AskedFields>& askedFields() {
    static const QVector<AskedFields> asked = {
        {"tRsBasic", {"fName", "fSex", "fHY", "fBirthDayr", "fMz", "fZz"}},
        {"tRsStudy", {"fYear", "fXx", "fZy"}},
        {"tRsWork", {"fYear", "fBm", "fRz", "fWk"}},
        {"tRsFamily", {"fCh", "fName", "fNy", "fDw", "fZz"}},
        {"tRsBasic_P",
         {"fpName", "fpBirthday", "fpZz", "fpMz", "fpJg", "fpXl", "fpHj", "fpPhone", "fpDw", "fpRz"}},
        {"tRsResult", {"fYear", "fyj"}},
        {"tRsMeed", {"fYear", "fyy", "fjc"}},
    };
    return asked;
}

QString captionKey(const QString& table, const QString& field) {
    return (table + QLatin1Char('.') + field).toLower();
}

} // namespace

PersonSheet ReadPersonSheet(const QString& code) {
    PersonSheet s;
    s.code = code;
    if (code.isEmpty()) return s;
    const QString q = quoted(code);
    {
        Recordset rs(conn(), QStringLiteral("select * from tRsBasic where fcode=") + q);
        s.basic = wholeRow(rs);
        if (!rs.eof()) s.photo = rs.value(QStringLiteral("fphoto")).toByteArray();
    }
    {
        Recordset rs(conn(), QStringLiteral("select * from tRsBasic_P where fcode=") + q);
        s.spouse = wholeRow(rs);
    }
    s.study =
        blockRows(QStringLiteral("select * from trsstudy where fcode=%1 order by ftype").arg(q),
                  {QStringLiteral("fYear"), QStringLiteral("fXx"), QStringLiteral("fzy")}, kSheetStudyRows);
    s.work = blockRows(
        QStringLiteral("select * from trswork where fcode=%1 Order by ftype").arg(q),
        {QStringLiteral("fYear"), QStringLiteral("fbm"), QStringLiteral("fRz"), QStringLiteral("fWk")},
        kSheetWorkRows);
    s.family = blockRows(QStringLiteral("select * from trsfamily where fcode=") + q,
                         {QStringLiteral("fch"), QStringLiteral("fName"), QStringLiteral("fny"),
                          QStringLiteral("fdw"), QStringLiteral("fZz")},
                         kSheetFamilyRows);
    s.results = blockRows(QStringLiteral("select * from trsresult where fcode=") + q,
                          {QStringLiteral("fYear"), QStringLiteral("fyj")}, kSheetResultRows);
    s.awards =
        blockRows(QStringLiteral("select * from trsmeed where fcode=") + q,
                  {QStringLiteral("fYear"), QStringLiteral("Fyy"), QStringLiteral("fjc")}, kSheetAwardRows);
    return s;
}

QStringList SheetCodes(const QString& condition) {
    QString sql = QStringLiteral("select fCode from tRsBasic");
    if (!condition.trimmed().isEmpty()) sql += QStringLiteral(" where ") + condition;
    sql += QStringLiteral(" Order by fCode");
    QStringList codes;
    for (Recordset rs(conn(), sql); !rs.eof(); rs.moveNext())
        codes << rs.text(0);
    return codes;
}

SheetCaptions SheetCaptions::load() {
    SheetCaptions c;
    for (const AskedFields& a : askedFields())
        for (const QString& f : a.fields) {
            const QString caption = GetFieldCaption(QLatin1String(a.table), f);
            if (caption != QLatin1String("\t"))
                c.m_fields.insert(captionKey(QLatin1String(a.table), f), caption);
        }
    // The labels of the master record screen: its own captions, renamed by the dictionary.
    for (int i = 0; i < kBasicFields; ++i) {
        const QString caption = GetFieldCaption(QStringLiteral("tRsBasic"), BasicColumns().at(i));
        c.m_labels << (caption == QLatin1String("\t") ? BasicCaption(i) : caption);
    }
    return c;
}

QString SheetCaptions::of(const QString& table, const QString& field, const QString& literal) const {
    return m_fields.value(captionKey(table, field), literal);
}

} // namespace zq
