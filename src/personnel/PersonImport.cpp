#include "PersonImport.h"

#include "personnel/PersonBasicData.h"
#include "services/FieldDictionary.h"
#include "services/InputAids.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/Rights.h"
#include "shell/Schema.h"
#include "shell/SqlText.h"

#include <QDate>
#include <QRegularExpression>
#include <QSet>
#include <QSqlError>
#include <QSqlQuery>

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

// Fields whose digits are text: a spreadsheet program that takes them for numbers drops their
// leading zeros, or keeps only 15 digits and shows them in scientific notation.
bool isDigitText(const QString& field) {
    static const QStringList fields{kCode, kIdCard, QStringLiteral("fother1"), QStringLiteral("fPhone"),
                                    QStringLiteral("mobilephone"), QStringLiteral("fBp"), QStringLiteral("staycode")};
    return fields.contains(field);
}

// 1.10101E+17: what a spreadsheet program writes for a long number it keeps 15 digits of.
bool isScientific(const QString& text) {
    static const QRegularExpression re(QStringLiteral("^[+-]?\\d+(\\.\\d+)?[Ee][+-]?\\d+$"));
    return re.match(text).hasMatch();
}

bool isDigits(const QString& text) {
    static const QRegularExpression re(QStringLiteral("^\\d+$"));
    return re.match(text).hasMatch();
}

QString withoutLeadingZeros(const QString& digits) {
    qsizetype i = 0;
    while (i + 1 < digits.size() && digits.at(i) == QLatin1Char('0'))
        ++i;
    return digits.mid(i);
}

// `now` is `before` with its leading zeros lost.
bool lostZeros(const QString& before, const QString& now) {
    return before != now && before.startsWith(QLatin1Char('0')) && isDigits(before) && isDigits(now) &&
           withoutLeadingZeros(before) == now;
}

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

QString ImportPlan::headerPlace() const {
    return (sheet.isEmpty() ? QString() : QStringLiteral("工作表“%1”").arg(sheet)) +
           QStringLiteral("第 %1 行").arg(headerRow);
}

namespace {

// The index of the header row among the first rows, -1 when none names fields.
int headerIndex(const QVector<SheetRow>& rows, const QHash<QString, QString>& known) {
    for (int i = 0; i < rows.size() && i < kHeaderSearch; ++i) {
        int filled = 0, mapped = 0;
        for (const QString& cell : rows.at(i).texts) {
            if (cell.trimmed().isEmpty()) continue;
            ++filled;
            if (known.contains(headerKey(cell))) ++mapped;
        }
        if (mapped >= 2 || (mapped == 1 && filled == 1)) return i;
    }
    return -1;
}

QString noHeader(const QStringList& sheets) {
    const QString where = sheets.isEmpty()
                              ? QString()
                              : QStringLiteral("工作表“%1”的").arg(sheets.join(QStringLiteral("”、“")));
    return QStringLiteral("没有表头行: %1前 %2 行中没有一行的列名能对应员工字段 (如 员工编号、姓名)")
        .arg(where)
        .arg(kHeaderSearch);
}

ImportPlan prepare(SheetData sheet, const QHash<QString, QString>& known) {
    ImportPlan plan;
    plan.sheet = sheet.sheet;
    plan.typed = sheet.typed;
    if (sheet.noneAccepted) {
        plan.error = noHeader(sheet.sheets);
        return plan;
    }
    if (!sheet.error.isEmpty()) {
        plan.error = sheet.error;
        return plan;
    }
    const int i = headerIndex(sheet.rows, known);
    if (i < 0) {
        plan.error = noHeader(sheet.sheet.isEmpty() ? QStringList() : QStringList{sheet.sheet});
        return plan;
    }
    const SheetRow& row = sheet.rows.at(i);
    plan.headerRow = row.number;
    plan.headers = row.cells();
    for (const QString& h : plan.headers) {
        const QString f = known.value(headerKey(h));
        plan.fields << (plan.fields.contains(f) ? QString() : f);
    }
    sheet.rows.remove(0, i + 1);
    plan.rows = std::move(sheet.rows);
    if (plan.rows.isEmpty()) plan.error = QStringLiteral("表头行 (%1) 下没有数据").arg(plan.headerPlace());
    return plan;
}

} // namespace

ImportPlan PrepareImport(const QString& path) {
    const QHash<QString, QString> known = headerFields();
    SheetReading how;
    how.maxRows = kMaxImportRows;
    how.probeRows = kHeaderSearch;
    how.accept = [&known](const SheetData& head) { return headerIndex(head.rows, known) >= 0; };
    return prepare(ReadSpreadsheet(path, how), known);
}

ImportPlan PrepareImport(const SheetData& sheet) {
    return prepare(sheet, headerFields());
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

namespace {

// How many values one lookup of the stored persons binds.
constexpr qsizetype kLookupBatch = 500;

// A .csv that a spreadsheet program saved again holds long numbers in scientific notation: their
// digits are gone, in every row. Said once for the file, with the first place and the count.
QString rewrittenCsv(const ImportPlan& plan, const QStringList& mapped, const QVector<int>& source) {
    if (plan.typed) return {};
    int count = 0;
    QString first;
    for (const SheetRow& row : plan.rows)
        for (int i = 0; i < mapped.size(); ++i) {
            if (!isDigitText(mapped.at(i))) continue;
            const QString v = row.cell(source.at(i)).trimmed();
            if (!isScientific(v)) continue;
            if (count++ == 0) first = QStringLiteral("第 %1 行“%2” %3").arg(row.number).arg(ImportCaption(mapped.at(i)), v);
        }
    if (count == 0) return {};
    return QStringLiteral("这个 .csv 文件被电子表格程序改写过: 长数字变成了科学计数法, 原来的数字已经丢失 (如%1, 共 %2 处)。"
                          "请重新导出为 .xlsx, 修改后导入; 或在电子表格程序中先把这些列设为文本再输入")
        .arg(first)
        .arg(count);
}

} // namespace

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
    check.error = rewrittenCsv(plan, mapped, source);
    if (!check.error.isEmpty()) return check;
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
    // Only the persons the file names are read: by their codes, by their cards, and by the codes a
    // spreadsheet program may have stripped of leading zeros. A company of a million is not held.
    const int codeAt = int(mapped.indexOf(kCode)), cardAt = int(mapped.indexOf(kIdCard));
    const int codeLimit = schema::columnSize(QStringLiteral("tRsBasic"), kCode);
    QSet<QString> fileCodes, fileCards;
    for (const SheetRow& sheetRow : plan.rows) {
        if (codeAt >= 0) {
            const QString code = sheetRow.cell(source.at(codeAt)).trimmed();
            if (code.isEmpty()) continue;
            fileCodes.insert(code);
            // The codes it may have had: the same digits after one zero or more, within the field.
            if (isDigits(code))
                for (QString padded = QLatin1Char('0') + withoutLeadingZeros(code); padded.size() <= codeLimit;
                     padded.prepend(QLatin1Char('0')))
                    fileCodes.insert(padded);
        }
        if (cardAt >= 0) {
            const QString card = sheetRow.cell(source.at(cardAt)).trimmed();
            if (!card.isEmpty()) fileCards.insert(card);
        }
    }
    QHash<QString, QStringList> stored;
    QHash<QString, QString> cardOwner;
    // The codes of digits with leading zeros by what is left without them, for a code that lost
    // them in a spreadsheet program; an empty value where two codes leave the same.
    QHash<QString, QString> paddedCodes;
    const auto keep = [&](const QSqlQuery& q) {
        QStringList values;
        for (int i = 0; i < columns.size(); ++i)
            values << q.value(i).toString();
        if (stored.contains(values.at(0))) return; // met by its code and by its card
        if (!values.at(1).trimmed().isEmpty()) cardOwner.insert(values.at(1).trimmed(), values.at(0));
        const QString& code = values.at(0);
        if (code.startsWith(QLatin1Char('0')) && isDigits(code)) {
            const QString bare = withoutLeadingZeros(code);
            paddedCodes.insert(bare, paddedCodes.contains(bare) ? QString() : code);
        }
        stored.insert(code, values);
    };
    const QString select = QStringLiteral("select ") + columns.join(QLatin1Char(',')) + QStringLiteral(" from tRsBasic where ");
    for (const auto& [column, values] : {std::pair{kCode, &fileCodes}, std::pair{kIdCard, &fileCards}}) {
        const QStringList all(values->cbegin(), values->cend());
        for (qsizetype at = 0; at < all.size(); at += kLookupBatch) {
            const QStringList part = all.mid(at, kLookupBatch);
            VisitRows(select + column + QStringLiteral(" in (") + placeholders(part.size()) + QLatin1Char(')'),
                      QVariantList(part.cbegin(), part.cend()), keep);
        }
    }
    const auto cap = [&](const QString& f) { return captions.value(f, f); };

    QHash<QString, int> codesInFile, cardsInFile;
    for (const SheetRow& sheetRow : plan.rows) {
        ImportRow row;
        row.row = sheetRow.number;
        row.values.reserve(mapped.size() + 2);
        QStringList refusals, warnings;
        QSet<QString> numberCells; // the mapped fields whose cell is a number in the file
        for (int i = 0; i < mapped.size(); ++i) {
            row.values.insert(mapped.at(i), sheetRow.cell(source.at(i)).trimmed());
            if (sheetRow.isNumber(source.at(i))) numberCells.insert(mapped.at(i));
        }
        QString code = row.values.value(kCode);
        if (!sheetRow.problem.isEmpty()) refusals << sheetRow.problem;
        bool any = false;
        for (const auto& item : row.values.items())
            any = any || !item.second.isEmpty();
        if (!any && sheetRow.problem.isEmpty()) refusals << QStringLiteral("对应的列都是空的, 没有可导入的内容");
        for (const QString& f : mapped) {
            const QString& v = row.values.value(f);
            if (v.contains(QLatin1Char('\''))) refusals << QStringLiteral("“%1”中有单引号").arg(cap(f));
            // Every field of the record is one line of text.
            if (BadCharacterAt(v) >= 0 || v.contains(QLatin1Char('\n')) || v.contains(QLatin1Char('\r')) ||
                v.contains(QLatin1Char('\t')))
                refusals << QStringLiteral("“%1”中有换行、制表符或控制字符").arg(cap(f));
        }

        // A code that a spreadsheet program took for a number lost its leading zeros: it is matched
        // to the one code that has them, else a number cell is refused (its zeros cannot be known).
        if (!code.isEmpty() && !stored.contains(code) && (numberCells.contains(kCode) || !plan.typed)) {
            const QString padded = isDigits(code) ? paddedCodes.value(withoutLeadingZeros(code)) : QString();
            if (!padded.isEmpty()) {
                warnings << QStringLiteral("“%1” %2 前面的 0 已丢失 (电子表格把它当成了数字), 按已有的 %3 对应")
                                .arg(cap(kCode), code, padded);
                code = padded;
                row.values.insert(kCode, code);
            } else if (numberCells.contains(kCode)) {
                refusals << QStringLiteral("“%1” %2 在文件中是数字而不是文字, 前面的 0 可能已丢失; "
                                           "请把该列设为文本后重新输入")
                                .arg(cap(kCode), code);
            }
        }
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

        const QStringList before = row.update ? stored.value(code) : QStringList();
        for (const QString& f : mapped) {
            QString& v = row.values[f];
            if (v.isEmpty()) continue;
            const int at = columns.indexOf(f);
            const QString old = row.update && at >= 0 ? before.value(at) : QString();
            // What a spreadsheet program does to texts it takes for numbers or dates, undone where
            // the stored value shows what it was; refused where nothing can.
            if (f != kCode && isDigitText(f)) {
                if (row.update && lostZeros(old, v) && (numberCells.contains(f) || !plan.typed)) {
                    warnings << QStringLiteral("“%1” %2 前面的 0 已丢失 (电子表格把它当成了数字), 保留原来的 %3")
                                    .arg(cap(f), v, old);
                    v = old;
                } else if (isScientific(v)) {
                    refusals << QStringLiteral("“%1” %2 是科学计数法, 原来的数字已经丢失; 请把该列设为文本后重新输入")
                                    .arg(cap(f), v);
                } else if (numberCells.contains(f) && v != old) {
                    refusals << QStringLiteral("“%1” %2 在文件中是数字而不是文字, 长数字和前面的 0 会丢失; "
                                               "请把该列设为文本后重新输入")
                                    .arg(cap(f), v);
                }
            }
            if (!isDateField(f) && row.update && old != v && ParseDateText(old) == old && !old.isEmpty() &&
                ParseDateText(v) == old)
                v = old; // the same day, written the spreadsheet program's way
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
            for (const auto& [field, value] : row.values.items()) {
                if (field == kCode) continue;
                const int at = columns.indexOf(field);
                const QString stored = at >= 0 ? before.value(at) : QString();
                if ((isDateField(field) ? stored.left(10) : stored) == value) continue;
                row.changed << field;
                row.checked << stored;
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
    // New persons go in many to a statement, compiled once for all full batches: a hundred
    // thousand of them are written in seconds, and the server counts each batch once. The
    // transaction is the guard: any failure rolls everything back.
    const int perBatch = qMax(1, 8000 / int(insertColumns.size()));
    const QString rowMarks = QLatin1Char('(') + placeholders(insertColumns.size()) + QLatin1Char(')');
    const auto insertOf = [&](int rows) {
        return QStringLiteral("insert into tRsBasic (") + insertColumns.join(QLatin1Char(',')) +
               QStringLiteral(") values ") + QStringList(rows, rowMarks).join(QLatin1Char(','));
    };
    QSqlQuery full(conn().database());
    const QString fullInsert = insertOf(perBatch);
    if (check.added >= perBatch && !full.prepare(fullInsert)) throw DbError(full.lastError().text(), fullInsert);
    QVector<bool> dates;
    for (const QString& f : insertColumns)
        dates << isDateField(f);
    const QVariant nullText(QMetaType(QMetaType::QString));
    QVector<const ImportRow*> pending;
    const auto flush = [&] {
        if (pending.isEmpty()) return;
        QSqlQuery partial(conn().database());
        const bool whole = pending.size() == perBatch;
        const QString sql = whole ? fullInsert : insertOf(int(pending.size()));
        QSqlQuery& q = whole ? full : partial;
        if (!whole && !q.prepare(sql)) throw DbError(q.lastError().text(), sql);
        int k = 0;
        for (const ImportRow* r : pending)
            for (int i = 0; i < insertColumns.size(); ++i, ++k) {
                const QString& f = insertColumns.at(i);
                const QString v = r->values.value(f);
                q.bindValue(k, f == QLatin1String("fzt") ? QVariant(1) : dates.at(i) && v.isEmpty() ? nullText : QVariant(v));
            }
        if (!q.exec()) throw DbError(q.lastError().text(), sql);
        if (q.numRowsAffected() != pending.size())
            throw DbError(QStringLiteral("新增 %1 人, 写入 %2 人").arg(pending.size()).arg(q.numRowsAffected()), sql);
        pending.clear();
    };
    for (const ImportRow& row : check.accepted) {
        QVariantList binds;
        if (!row.update) {
            pending << &row;
            if (pending.size() == perBatch) flush();
            continue;
        }
        // Each changed field is written only while it still holds what the check read: an edit by
        // another clerk in between is not overwritten, and the whole import is refused instead.
        QStringList sets;
        QString guard;
        QVariantList guardBinds;
        for (qsizetype i = 0; i < row.changed.size(); ++i) {
            const QString& f = row.changed.at(i);
            sets << f + QStringLiteral("=?");
            if (isDateField(f) && row.values.value(f).isEmpty()) binds << QVariant(QMetaType(QMetaType::QString));
            else binds << row.values.value(f);
            guard += stillHolds(f);
            guardBinds << row.checked.at(i);
        }
        binds << row.values.value(kCode) << guardBinds;
        const QString sql = QStringLiteral("update tRsBasic set ") + sets.join(QLatin1Char(',')) +
                            QStringLiteral(" where fCode=?") + guard;
        const int written = conn().execute(sql, binds);
        if (written == 0)
            throw ConflictError(QStringLiteral("第 %1 行的员工 %2 在检查之后已被他人修改或删除。\n"
                                               "请重新检查后再导入。")
                                    .arg(row.row)
                                    .arg(row.values.value(kCode)),
                                sql);
        RequireOneRow(written, sql);
    }
    flush();
    WriteLogRecord(QStringLiteral("导入员工: 新增 %1 人, 修改 %2 人, 未变 %3 人, 拒绝 %4 行")
                       .arg(check.added)
                       .arg(check.updated)
                       .arg(check.unchanged)
                       .arg(goodOnly ? check.refused : 0));
    tx.commit();
    return true;
}

} // namespace zq
