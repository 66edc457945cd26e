#include "PersonImport.h"

#include "personnel/PersonBasicData.h"
#include "services/FieldDictionary.h"
#include "services/InputAids.h"
#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QDate>
#include <QRegularExpression>
#include <QSet>

namespace zq {

namespace {

const QString kTable = QStringLiteral("trsbasic");
const QString kCode = QStringLiteral("fCode");
const QString kName = QStringLiteral("fName");
const QString kSex = QStringLiteral("fSex");
const QString kBirth = QStringLiteral("fBirthDay");
const QString kIdCard = QStringLiteral("fSfz");
const QString kHired = QStringLiteral("fSpday");
const QString kDeptName = QStringLiteral("fBmName");
const QString kDeptCode = QStringLiteral("fBmCode");
const QString kPost = QStringLiteral("fRz");
constexpr int kHeaderSearch = 10;

QString headerKey(QString text) {
    text.remove(QRegularExpression(QStringLiteral("[\\s*＊:：]")));
    return text.toLower();
}

// header key -> field, from the dictionary's captions in both languages, the field names and the
// record screen's own captions. Read once per check (the dictionary may change between imports).
QHash<QString, QString> headerFields() {
    QHash<QString, QString> out;
    QHash<QString, QString> byLower;
    for (const ImportField& f : ImportFields())
        byLower.insert(f.field.toLower(), f.field);
    for (int i = 0; i < kBasicFields; ++i)
        out.insert(headerKey(BasicCaption(i)), BasicColumns().at(i));
    out.insert(headerKey(QStringLiteral("部门编号")), kDeptCode);
    for (Recordset rs(conn(), QStringLiteral("select FieldName,FieldName_0,FieldName_1 from RptListDetail "
                                             "where ftable=") +
                                  quoted(kTable));
         !rs.eof(); rs.moveNext()) {
        const QString field = byLower.value(rs.text(0).toLower());
        if (field.isEmpty()) continue;
        for (int c = 1; c <= 2; ++c)
            if (!rs.text(c).trimmed().isEmpty()) out.insert(headerKey(rs.text(c)), field);
    }
    for (const QString& f : byLower)
        out.insert(f.toLower(), f);
    return out;
}

const schema::Column* columnOf(const QString& field) {
    static const schema::Table* t = schema::findTable(QStringLiteral("tRsBasic"));
    if (!t) return nullptr;
    for (const schema::Column& c : t->columns)
        if (c.name.compare(field, Qt::CaseInsensitive) == 0) return &c;
    return nullptr;
}

bool isDateField(const QString& field) {
    const schema::Column* c = columnOf(field);
    return c && c->type == schema::Type::Date;
}

// The byte limit of a field: the record screen's entry limit, else the column's size.
int byteLimit(const QString& field) {
    const int i = BasicColumns().indexOf(field);
    if (i >= 0 && BasicFieldMax(i) > 0) return BasicFieldMax(i);
    const schema::Column* c = columnOf(field);
    return c ? c->size : 0;
}

// The brief lists of the record's combo boxes: field -> (name or code -> name).
QHash<QString, QHash<QString, QString>> briefLists() {
    QHash<QString, QHash<QString, QString>> out;
    QHash<QString, QString> types;
    for (Recordset rs(conn(), QStringLiteral("select FieldName,FieldBriefType from RptListDetail where ftable=") +
                                  quoted(kTable));
         !rs.eof(); rs.moveNext())
        types.insert(rs.text(0).toLower(), rs.text(1));
    for (int i = 0; i < kBasicFields; ++i) {
        const QString field = BasicColumns().at(i);
        if (!IsBasicCombo(i) || field == kSex || field == kPost || field == kDeptName) continue;
        const QString type = types.value(field.toLower());
        if (type.isEmpty()) continue;
        QHash<QString, QString> entries;
        for (Recordset rs(conn(), QStringLiteral("select BriefCode,BriefName from briefDetail where briefType=") +
                                      quoted(type));
             !rs.eof(); rs.moveNext()) {
            entries.insert(rs.text(1), rs.text(1));
            if (!rs.text(0).isEmpty()) entries.insert(rs.text(0), rs.text(1));
        }
        // An empty list checks nothing, as the screen's empty combo box takes any text.
        if (!entries.isEmpty()) out.insert(field, entries);
    }
    return out;
}

struct Register {
    QHash<QString, QString> nameOfCode; // departments and posts
    QHash<QString, QString> codeOfName;
};

Register readRegister() {
    Register r;
    for (Recordset rs(conn(), QStringLiteral("select fCode,fName from tRs_Bm order by fCode")); !rs.eof();
         rs.moveNext()) {
        r.nameOfCode.insert(rs.text(0), rs.text(1));
        if (!r.codeOfName.contains(rs.text(1))) r.codeOfName.insert(rs.text(1), rs.text(0));
    }
    return r;
}

} // namespace

const QVector<ImportField>& ImportFields() {
    static const QVector<ImportField> fields = [] {
        QVector<ImportField> out;
        for (int i = 0; i < kBasicFields; ++i)
            out << ImportField{BasicColumns().at(i), BasicCaption(i)};
        out << ImportField{kDeptCode, QStringLiteral("部门编号")};
        return out;
    }();
    return fields;
}

QString ImportCaption(const QString& field) {
    for (const ImportField& f : ImportFields())
        if (f.field == field) {
            const QString dict = GetFieldCaption(kTable, field);
            return dict == QLatin1String("\t") || dict.isEmpty() ? f.caption : dict;
        }
    return field;
}

QString FieldOfHeader(const QString& header) {
    return headerFields().value(headerKey(header));
}

QStringList ImportPlan::unmapped() const {
    QStringList out;
    for (int c = 0; c < headers.size(); ++c)
        if (fields.value(c).isEmpty() && !headers.at(c).trimmed().isEmpty()) out << headers.at(c);
    return out;
}

ImportPlan PrepareImport(const QString& path) {
    return PrepareImport(ReadSpreadsheet(path));
}

ImportPlan PrepareImport(const SheetData& sheet) {
    ImportPlan plan;
    if (!sheet.error.isEmpty()) {
        plan.error = sheet.error;
        return plan;
    }
    const QHash<QString, QString> known = headerFields();
    for (int i = 0; i < sheet.rows.size() && i < kHeaderSearch; ++i) {
        const SheetRow& row = sheet.rows.at(i);
        int filled = 0, mapped = 0;
        for (const QString& cell : row.cells) {
            if (cell.trimmed().isEmpty()) continue;
            ++filled;
            if (known.contains(headerKey(cell))) ++mapped;
        }
        if (mapped >= 2 || (mapped == 1 && filled == 1)) {
            plan.headerRow = row.number;
            plan.headers = row.cells;
            for (const QString& h : row.cells) {
                const QString f = known.value(headerKey(h));
                plan.fields << (plan.fields.contains(f) ? QString() : f);
            }
            plan.rows = sheet.rows.mid(i + 1);
            if (plan.rows.isEmpty()) plan.error = QStringLiteral("表头行 (第 %1 行) 下没有数据").arg(row.number);
            return plan;
        }
    }
    plan.error = QStringLiteral("没有表头行: 前 %1 行中没有一行的列名能对应员工字段 (如 员工编号、姓名)")
                     .arg(kHeaderSearch);
    return plan;
}

QString CheckMapping(const ImportPlan& plan) {
    if (!plan.fields.contains(kCode)) return QStringLiteral("没有对应“%1”的列").arg(ImportCaption(kCode));
    QSet<QString> seen;
    for (const QString& f : plan.fields) {
        if (f.isEmpty()) continue;
        if (seen.contains(f)) return QStringLiteral("“%1”对应了不止一列").arg(ImportCaption(f));
        seen.insert(f);
    }
    return {};
}

bool IdCardCheckDigitOk(const QString& id) {
    static const int weights[17] = {7, 9, 10, 5, 8, 4, 2, 1, 6, 3, 7, 9, 10, 5, 8, 4, 2};
    static const char checks[] = "10X98765432";
    if (id.size() != 18) return false;
    int sum = 0;
    for (int i = 0; i < 17; ++i) {
        if (!id.at(i).isDigit()) return false;
        sum += id.at(i).digitValue() * weights[i];
    }
    return id.at(17).toUpper() == QLatin1Char(checks[sum % 11]);
}

QString BirthDateOfIdCard(const QString& id) {
    QDate d;
    if (id.size() == 18) d = QDate::fromString(id.mid(6, 8), QStringLiteral("yyyyMMdd"));
    else if (id.size() == 15) d = QDate::fromString(QStringLiteral("19") + id.mid(6, 6), QStringLiteral("yyyyMMdd"));
    return d.isValid() ? d.toString(QStringLiteral("yyyy-MM-dd")) : QString();
}

ImportCheck CheckImport(const ImportPlan& plan, bool update) {
    ImportCheck check;
    check.error = plan.error.isEmpty() ? CheckMapping(plan) : plan.error;
    if (!check.error.isEmpty()) return check;

    QStringList mapped; // the mapped fields, and the columns they come from
    QVector<int> source;
    for (int c = 0; c < plan.fields.size(); ++c)
        if (!plan.fields.at(c).isEmpty()) {
            mapped << plan.fields.at(c);
            source << c;
        }
    QHash<QString, QString> captions;
    for (const QString& f : mapped)
        captions.insert(f, ImportCaption(f));
    for (const QString& f : {kName, kHired, kDeptCode, kDeptName})
        captions.insert(f, ImportCaption(f));
    const auto briefs = briefLists();
    const Register reg = readRegister();
    const bool deptMapped = mapped.contains(kDeptName) || mapped.contains(kDeptCode);

    // What the database holds of the persons: the codes with the mapped fields, and whose card is whose.
    QStringList columns{kCode, kIdCard};
    for (const QString& f : mapped)
        if (!columns.contains(f)) columns << f;
    if (deptMapped) columns << kDeptName << kDeptCode;
    columns.removeDuplicates();
    QHash<QString, QStringList> stored;
    QHash<QString, QString> cardOwner;
    for (Recordset rs(conn(), QStringLiteral("select ") + columns.join(QLatin1Char(',')) +
                                  QStringLiteral(" from tRsBasic"));
         !rs.eof(); rs.moveNext()) {
        QStringList values;
        for (int i = 0; i < columns.size(); ++i)
            values << rs.text(i);
        if (!values.at(1).trimmed().isEmpty()) cardOwner.insert(values.at(1).trimmed(), values.at(0));
        stored.insert(values.at(0), values);
    }

    QHash<QString, int> codesInFile, cardsInFile;
    for (const SheetRow& sheetRow : plan.rows) {
        ImportRow row;
        row.row = sheetRow.number;
        QStringList refusals, warnings;
        QString code;
        for (int i = 0; i < mapped.size(); ++i) {
            QString v = sheetRow.cells.value(source.at(i)).trimmed();
            row.values.insert(mapped.at(i), v);
        }
        code = row.values.value(kCode);
        if (!sheetRow.problem.isEmpty()) refusals << sheetRow.problem;
        bool any = false;
        for (const QString& v : row.values)
            any = any || !v.isEmpty();
        if (!any && sheetRow.problem.isEmpty()) refusals << QStringLiteral("对应的列都是空的, 没有可导入的内容");
        for (const QString& f : mapped)
            if (row.values.value(f).contains(QLatin1Char('\'')))
                refusals << QStringLiteral("“%1”中有单引号").arg(captions.value(f));

        const auto cap = [&](const QString& f) { return captions.value(f, f); };
        if (code.isEmpty()) {
            refusals << QStringLiteral("“%1”不能为空").arg(cap(kCode));
        } else if (codesInFile.contains(code)) {
            refusals << QStringLiteral("“%1” %2 与第 %3 行重复").arg(cap(kCode), code).arg(codesInFile.value(code));
        } else {
            codesInFile.insert(code, row.row);
        }
        row.update = !code.isEmpty() && stored.contains(code);
        if (row.update && !update)
            refusals << QStringLiteral("“%1” %2 已有此人 (未选择更新)").arg(cap(kCode), code);
        // A new person needs what the record screen requires; an update only what it changes.
        for (const QString& f : {kName, kHired})
            if ((!row.update && row.values.value(f).isEmpty()) ||
                (row.update && row.values.contains(f) && row.values.value(f).isEmpty()))
                refusals << QStringLiteral("“%1”不能为空").arg(cap(f));

        for (const QString& f : mapped) {
            QString& v = row.values[f];
            if (v.isEmpty()) continue;
            if (isDateField(f)) {
                const QString iso = ParseDateText(v);
                if (iso.isEmpty()) refusals << QStringLiteral("“%1” %2 不是日期 (应如 2024-01-05)").arg(cap(f), v);
                else v = iso;
            }
            const int limit = byteLimit(f);
            if (limit > 0 && ByteLen(v) > limit)
                refusals << QStringLiteral("“%1”长 %2 字节, 超过 %3").arg(cap(f)).arg(ByteLen(v)).arg(limit);
            if (f == kSex && v != QStringLiteral("男") && v != QStringLiteral("女"))
                refusals << QStringLiteral("“%1” %2 应为 男 或 女").arg(cap(f), v);
            const auto brief = briefs.constFind(f);
            if (brief != briefs.constEnd()) {
                if (!brief->contains(v)) refusals << QStringLiteral("“%1” %2 不在简表中").arg(cap(f), v);
                else v = brief->value(v);
            }
            if (f == kPost) {
                if (reg.nameOfCode.contains(v)) v = reg.nameOfCode.value(v);
                else if (!reg.codeOfName.contains(v))
                    refusals << QStringLiteral("“%1” %2 在部门职务中找不到").arg(cap(f), v);
            }
        }
        // The department, by code or by name, gives both.
        if (deptMapped) {
            const QString byName = row.values.value(kDeptName), byCode = row.values.value(kDeptCode);
            QString deptCode;
            if (!byCode.isEmpty()) {
                if (!reg.nameOfCode.contains(byCode))
                    refusals << QStringLiteral("“%1” %2 找不到").arg(cap(kDeptCode), byCode);
                else deptCode = byCode;
            }
            if (!byName.isEmpty()) {
                const QString c = reg.nameOfCode.contains(byName) ? byName : reg.codeOfName.value(byName);
                if (c.isEmpty()) refusals << QStringLiteral("“%1” %2 找不到").arg(cap(kDeptName), byName);
                else if (!deptCode.isEmpty() && c != deptCode)
                    refusals << QStringLiteral("“%1”与“%2”不符").arg(cap(kDeptName), cap(kDeptCode));
                else deptCode = c;
            }
            if (!deptCode.isEmpty()) {
                row.values.insert(kDeptCode, deptCode);
                row.values.insert(kDeptName, reg.nameOfCode.value(deptCode));
            } else if (byName.isEmpty() && byCode.isEmpty()) {
                row.values.insert(kDeptCode, QString());
                row.values.insert(kDeptName, QString());
            }
        }

        const QString card = row.values.value(kIdCard);
        if (!card.isEmpty()) {
            const QString owner = cardOwner.value(card);
            if (cardsInFile.contains(card))
                refusals << QStringLiteral("“%1” %2 与第 %3 行重复").arg(ImportCaption(kIdCard), card).arg(cardsInFile.value(card));
            else if (!owner.isEmpty() && owner != code)
                refusals << QStringLiteral("“%1” %2 已属于员工 %3").arg(ImportCaption(kIdCard), card, owner);
            cardsInFile.insert(card, row.row);
            if (card.size() == 18 && !IdCardCheckDigitOk(card))
                warnings << QStringLiteral("“%1” %2 的校验位不对").arg(ImportCaption(kIdCard), card);
            const QString born = BirthDateOfIdCard(card);
            QString birth = row.values.value(kBirth);
            if (!row.values.contains(kBirth) && row.update) birth.clear();
            if (!born.isEmpty() && !birth.isEmpty() && ParseDateText(birth) != born)
                warnings << QStringLiteral("出生日期 %1 与身份证号的 %2 不符").arg(birth, born);
        }

        for (const QString& w : warnings)
            check.issues << RowIssue{row.row, code, w, false};
        check.warnings += warnings.isEmpty() ? 0 : 1;
        if (!refusals.isEmpty()) {
            check.issues << RowIssue{row.row, code, refusals.join(QStringLiteral("; ")), true};
            ++check.refused;
            continue;
        }
        if (row.update) {
            const QStringList& before = stored.value(code);
            for (auto it = row.values.cbegin(); it != row.values.cend(); ++it) {
                if (it.key() == kCode) continue;
                const int at = columns.indexOf(it.key());
                QString old = at >= 0 ? before.value(at) : QString();
                if (isDateField(it.key())) old = old.left(10);
                if (old != it.value()) row.changed << it.key();
            }
            if (row.changed.isEmpty()) {
                ++check.unchanged;
                continue;
            }
            ++check.updated;
        } else {
            ++check.added;
        }
        check.accepted << row;
    }
    return check;
}

ListRowSource IssueRows(const ImportCheck& check) {
    QVector<QStringList> rows;
    for (const RowIssue& i : check.issues)
        rows << QStringList{QString::number(i.row), i.code, i.refused ? QStringLiteral("拒绝") : QStringLiteral("警告"),
                            i.reason};
    return ListRowSource({{QStringLiteral("行号"), CellKind::Number, 0, 6},
                          {QStringLiteral("员工编号"), CellKind::Text, 0, 12},
                          {QStringLiteral("类别"), CellKind::Text, 0, 6},
                          {QStringLiteral("原因"), CellKind::Text, 0, 80}},
                         std::move(rows));
}

bool WriteImport(const ImportCheck& check, bool goodOnly) {
    if (!check.error.isEmpty() || (check.refused > 0 && !goodOnly)) return false;
    Transaction tx(conn());
    // A new person gets every column of the record, as the record screen writes it.
    QStringList insertColumns = BasicColumns();
    insertColumns << kDeptCode << QStringLiteral("fzt");
    QStringList marks;
    for (int i = 0; i < insertColumns.size(); ++i)
        marks << QStringLiteral("?");
    const QString insert = QStringLiteral("insert into tRsBasic (") + insertColumns.join(QLatin1Char(',')) +
                           QStringLiteral(") values (") + marks.join(QLatin1Char(',')) + QLatin1Char(')');
    for (const ImportRow& row : check.accepted) {
        QVariantList binds;
        if (!row.update) {
            for (const QString& f : insertColumns) {
                if (f == QLatin1String("fzt")) binds << 1;
                else if (isDateField(f) && row.values.value(f).isEmpty()) binds << QVariant(QMetaType(QMetaType::QString));
                else binds << row.values.value(f);
            }
            conn().execute(insert, binds);
            continue;
        }
        QStringList sets;
        for (const QString& f : row.changed) {
            sets << f + QStringLiteral("=?");
            if (isDateField(f) && row.values.value(f).isEmpty()) binds << QVariant(QMetaType(QMetaType::QString));
            else binds << row.values.value(f);
        }
        binds << row.values.value(kCode);
        conn().executeOne(QStringLiteral("update tRsBasic set ") + sets.join(QLatin1Char(',')) +
                              QStringLiteral(" where fCode=?"),
                          binds);
    }
    WriteLogRecord(QStringLiteral("导入员工: 新增 %1 人, 修改 %2 人, 未变 %3 人, 拒绝 %4 行")
                       .arg(check.added)
                       .arg(check.updated)
                       .arg(check.unchanged)
                       .arg(goodOnly ? check.refused : 0));
    tx.commit();
    return true;
}

} // namespace zq
