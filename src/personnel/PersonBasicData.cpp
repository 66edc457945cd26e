#include "PersonBasicData.h"

#include "personnel/PersonCodeCascade.h"
#include "printing/Photos.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QCryptographicHash>
#include <QDate>
#include <QFile>
#include <QRegularExpression>
#include <QTime>

namespace zq {

namespace {
struct BasicField {
    const char* name;
    int max;
};

// Max 0 marks a combo box.
constexpr BasicField kFields[kBasicFields] = {
    {"fCode", 10},    {"fName", 10},        {"fSex", 0},          {"fBirthDay", 10},     {"fMz", 16},
    {"fHy", 0},       {"fHj", 20},          {"fSfz", 20},         {"fJg", 20},           {"fZz", 28},
    {"fXzz", 40},     {"fygxz", 0},         {"fPhone", 20},       {"fXl", 20},           {"fZy", 20},
    {"fXx", 45},      {"fWy", 20},          {"fWySp", 20},        {"fZc", 20},           {"fZcDay", 20},
    {"fRz", 0},       {"fTc", 45},          {"fother1", 30},      {"fother2", 0},        {"fGzName", 0},
    {"fSpday", 20},   {"fBmName", 0},       {"idlimt", 10},       {"bodycondition", 20}, {"staycode", 20},
    {"staytime", 10}, {"contracttime", 20}, {"contractlimt", 30}, {"fBp", 20},           {"mobilephone", 30},
    {"grudtime", 30}, {"worktime", 30},     {"funit", 0},         {"leavetime", 30},     {"leavereason", 30},
    {"worklimt", 30}, {"roadmny", 20},      {"seepnt", 20},       {"safeedu", 30},       {"lyunit", 40},
    {"trustman", 30}, {"bodyhigh", 10},     {"bodytype", 0},      {"neckline", 20},      {"waistline", 20},
    {"shoecode", 20}, {"unit", 40},
};

const char* const kCaptions[kBasicFields] = {
    "员工编号",     "姓名",         "性别",       "出生日期",     "民族",     "婚否",
    "户籍所在地",   "身份证号码",   "籍贯",       "政治面貌",     "现住址",   "职员类别",
    "家庭电话",     "文化程度",     "专业",       "毕业学校",     "外语",     "外语水平",
    "职称",         "职称评定时间", "现任职务",   "特长",         "银行帐号", "班组",
    "工资级别",     "受聘时间",     "现属部门",   "身份证有效期", "身体状况", "暂住证号码",
    "暂住证有效期", "合同签定时间", "合同有效期", "BP机号码",     "手机号码", "毕业时间",
    "参加工作时间", "分公司",       "辞退时间",   "辞退原因",     "聘期",     "来费发放时间",
    "探费发放时间", "经过安全教育", "联营单位",   "担保人",       "住宿条件", "住宿",
    "房号",         "体型",         "其他",       "单位"};

// The combo columns in the order the insert lists them after the text boxes.
constexpr int kComboOrder[] = {2, 11, 47, 26, -1, 20, 5, 24, 23, 37};

QString basicSelect(const QString& condition) {
    return QStringLiteral("select * from trsbasic where ") + condition;
}
} // namespace

const QStringList& BasicColumns() {
    static const QStringList names = [] {
        QStringList l;
        for (const BasicField& f : kFields)
            l << QLatin1String(f.name);
        return l;
    }();
    return names;
}

QString BasicCaption(int index) {
    return index >= 0 && index < kBasicFields ? QString::fromUtf8(kCaptions[index]) : QString();
}

int BasicFieldMax(int index) {
    return index >= 0 && index < kBasicFields ? kFields[index].max : 0;
}

bool IsBasicCombo(int index) {
    return BasicFieldMax(index) == 0;
}

bool IsRequiredBasicField(int index) {
    return index == 0 || index == 1 || index == 25;
}

QVector<int> BasicFieldOrder() {
    constexpr int kPost = 20;
    constexpr int kDept = 26;
    QVector<int> order;
    order.reserve(kBasicFields);
    for (int i = 0; i < kBasicFields; ++i) {
        if (i == kDept) continue;
        if (i == kPost) order << kDept;
        order << i;
    }
    return order;
}

QString SavedPersonText(const QString& code, const QString& name, const QString& dept, const QString& post) {
    QString where = dept;
    if (!post.isEmpty()) where += (where.isEmpty() ? QString() : QStringLiteral(" ")) + post;
    // The time tells one save from the next when the same clerk adds many.
    return QStringLiteral("%1 已存盘: 新员工 %2 %3%4。请录入下一位。")
        .arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")), code, name,
             where.isEmpty() ? QString() : QStringLiteral(" (") + where + QLatin1Char(')'));
}

bool LoadPersonBasic(const QString& code, PersonBasicRow& row) {
    Recordset rs(conn(), basicSelect(QStringLiteral("fcode=") + quoted(code)), Cursor::ForwardOnly,
                 Lock::Optimistic);
    if (rs.eof()) return false;
    for (int i = 0; i < kBasicFields; ++i)
        row.values[i] = rs.text(BasicColumns().at(i));
    row.bmCode = rs.text(QStringLiteral("fBmCode"));
    row.zt = int(rs.val(QStringLiteral("fzt")));
    return true;
}

QString IdCardOwner(const QString& idCard, const QString& ownCode, bool& taken) {
    taken = false;
    if (idCard.trimmed().isEmpty()) return {};
    Recordset rs(conn(), QStringLiteral("select fcode,fName from trsbasic where fSfz=") + quoted(idCard));
    if (rs.eof() || rs.text(0) == ownCode) return {};
    taken = true;
    return rs.text(1);
}

CodeCheck CheckNewCode(const QString& code) {
    Recordset rs(conn(), basicSelect(QStringLiteral("fcode=") + quoted(code)));
    return rs.eof() ? CodeCheck::Ok : CodeCheck::Taken;
}

CodeCheck CheckChangedCode(const QString& oldCode, const QString& newCode) {
    Recordset rs(conn(),
                 basicSelect(QStringLiteral("fcode=") + quoted(oldCode) + QStringLiteral(" or fcode=") +
                             quoted(newCode)),
                 Cursor::Static, Lock::Optimistic);
    if (rs.eof()) return CodeCheck::Missing;
    if (rs.recordCount() >= 2) return CodeCheck::Taken;
    return rs.text(QStringLiteral("fcode")) == oldCode ? CodeCheck::Ok : CodeCheck::Missing;
}

QString InsertPersonSql(const PersonBasicRow& row) {
    QStringList names;
    QStringList values;
    for (int i = 0; i < kBasicFields; ++i) {
        if (IsBasicCombo(i)) continue;
        names << BasicColumns().at(i);
        values << quoted(row.values.at(i).trimmed());
    }
    names << QStringLiteral("fSex,fygxz,bodytype,fBmName,fBmCode,fRz,fHY,fgzname,FOther2,fUnit,fzt");
    for (int i : kComboOrder)
        values << quoted(i < 0 ? row.bmCode : row.values.at(i));
    values << num(row.zt);
    return QStringLiteral("Insert into trsBasic (") + names.join(QLatin1Char(',')) +
           QStringLiteral(") values (") + values.join(QLatin1Char(',')) + QLatin1Char(')');
}

BoundSql UpdatePersonSql(const PersonBasicRow& row, const QString& oldCode, const PersonBasicRow& loaded) {
    BoundSql b;
    QStringList sets{BasicColumns().at(0) + QLatin1Char('=') + quoted(row.values.at(0))};
    QString guard;
    const auto column = [&](const QString& name, const QString& now, const QString& before) {
        if (now == before) return;
        sets << name + QLatin1Char('=') + quoted(now);
        guard += stillHolds(name);
        b.binds << before;
    };
    for (int i = 1; i < kBasicFields; ++i)
        column(BasicColumns().at(i), row.values.at(i), loaded.values.at(i));
    column(QStringLiteral("fbmcode"), row.bmCode, loaded.bmCode);
    b.sql = QStringLiteral("Update trsBasic set ") + sets.join(QLatin1Char(',')) +
            QStringLiteral(" where fcode=") + quoted(oldCode) + guard;
    return b;
}

void SavePersonBasic(int mode, const PersonBasicRow& row, const QString& oldCode,
                     const PersonBasicRow& loaded) {
    Transaction tx(conn());
    if (mode == 1) {
        conn().execute(InsertPersonSql(row));
    } else {
        const BoundSql update = UpdatePersonSql(row, oldCode, loaded);
        // Any failure rolls the whole save back: the server needs no savepoint around it.
        conn().executeOne(update.sql, update.binds, Connection::OnFailure::EndTransaction);
        // Master and children change together or not at all.
        if (row.values.at(0) != oldCode) CascadePersonCode(oldCode, row.values.at(0));
    }
    tx.commit();
}

bool StorePersonPhoto(const QString& code, const QString& path, const std::optional<QByteArray>& loaded) {
    Recordset rs(conn(), QStringLiteral("Select fphoto,fcode from trsBasic where fcode=") + quoted(code),
                 Cursor::Keyset, Lock::Optimistic);
    if (rs.eof()) return true;
    // The write below changes the row only while it still holds the photo read here.
    if (loaded && PhotoDigest(rs.value(0).toByteArray()) != *loaded) throw ConflictError();
    if (path.isEmpty()) {
        // A save without a newly chosen picture clears the stored one.
        rs.setValue(0, QVariant(QMetaType(QMetaType::QByteArray)));
        rs.update();
        return true;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    if (file.size() == 0) return true;
    // Read in the same blocks the photo is exported in, so no picture needs one read of its size.
    QByteArray data;
    for (qint64 size : photoChunks(file.size()))
        data += file.read(size);
    if (data.size() != file.size()) return false;
    rs.setValue(0, data);
    rs.update();
    return true;
}

QByteArray PhotoDigest(const QByteArray& photo) {
    return QCryptographicHash::hash(photo, QCryptographicHash::Sha1);
}

QByteArray PersonPhoto(const QString& code) {
    Recordset rs(conn(), QStringLiteral("select fphoto from trsBasic where fcode=") + quoted(code));
    return rs.eof() ? QByteArray() : rs.value(0).toByteArray();
}

namespace {
QDate parseDate(const QString& text) {
    const QString t = text.trimmed();
    static const QRegularExpression sep(QStringLiteral("^(\\d{4})[-/.年](\\d{1,2})[-/.月](\\d{1,2})日?$"));
    static const QRegularExpression packed(QStringLiteral("^(\\d{4})(\\d{2})(\\d{2})$"));
    for (const QRegularExpression* re : {&sep, &packed}) {
        const QRegularExpressionMatch m = re->match(t);
        if (m.hasMatch()) return QDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    }
    return {};
}
} // namespace

bool IsDateText(const QString& text) {
    return parseDate(text).isValid();
}

QString FormatIsoDate(const QString& text) {
    const QDate d = parseDate(text);
    return d.isValid() ? d.toString(QStringLiteral("yyyy-MM-dd")) : text;
}

} // namespace zq
