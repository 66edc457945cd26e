#include "DbError.h"
#include "Schema.h"
#include "SqlText.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace zq::schema {

namespace {

// One prepared insert, run once a row with bound values.
class Insert {
public:
    Insert(Connection& c, const QString& table, const QStringList& columns)
        : m_q(c.database()) {
        m_sql = QStringLiteral("insert into %1 (%2) values (%3)")
                    .arg(table, columns.join(QLatin1Char(',')),
                         placeholders(columns.size()));
        if (!m_q.prepare(m_sql)) throw DbError(m_q.lastError().text(), m_sql);
    }
    void row(const QVariantList& values) {
        for (int i = 0; i < values.size(); ++i)
            m_q.bindValue(i, values.at(i));
        if (!m_q.exec()) throw DbError(m_q.lastError().text(), m_sql);
    }

private:
    QSqlQuery m_q;
    QString m_sql;
};

QString u(const char* s) {
    return QString::fromUtf8(s);
}

// ---- Field dictionary ------------------------------------------------------------------------

enum Flag { Sel = 1, Seek = 2, NoPrint = 4, Fixed = 8 };
enum DataType { Txt = 0, Dec = 2, Whole = 3 };
constexpr int Auto = -1000;

struct Field {
    const char* name;
    const char* cap0; // simplified
    const char* cap1; // traditional
    double width;
    int flags = 0;
    const char* brief = "";
    int dataType = Txt;
    int deci = 0;
    int fieldId = Auto; // grid order; by default the OrderID
    int orderId = Auto; // list order; by default the place in the table's list
};

// The brief lists the fields draw their values from.
const char* const kMarital = "hy";
const char* const kNation = "mz";
const char* const kPolitics = "zzmm";
const char* const kCategory = "ygxz";
const char* const kEducation = "xl";
const char* const kLanguage = "wy";
const char* const kLanguageLevel = "wysp";
const char* const kTitle = "zc";
const char* const kTeam = "bz";
const char* const kWage = "gzjb";
const char* const kUnit = "funit";
const char* const kLodging = "zs";
const char* const kHealth = "jkzk";
const char* const kUseKind = "lyxz";
const char* const kCardName = "zjmc";
const char* const kFeeKind = "fyxz";

// tRsBasic in the order of the record screen's labels; the spouse columns follow from OrderID 69, which
// is the mark the one-time split moves them by.
const QVector<Field>& personFields() {
    static const QVector<Field> f = {
        {"fCode", "员工编号", "員工編號", 8, Sel | Seek | Fixed},
        {"fName", "姓名", "姓名", 8, Sel | Seek | Fixed},
        {"fSex", "性别", "性別", 4, Sel | Seek},
        {"fBirthDay", "出生日期", "出生日期", 10, Sel | Seek},
        {"fMz", "民族", "民族", 6, Seek, kNation},
        {"fHy", "婚否", "婚否", 5, Sel | Seek, kMarital},
        {"fHj", "户籍所在地", "戶籍所在地", 14, Seek},
        {"fSfz", "身份证号码", "身份證號碼", 18, Seek},
        {"fJg", "籍贯", "籍貫", 10, Seek},
        {"fZz", "政治面貌", "政治面貌", 9, Seek, kPolitics},
        {"fXzz", "现住址", "現住址", 20, Seek},
        {"fygxz", "职员类别", "職員類別", 9, Seek, kCategory},
        {"fPhone", "家庭电话", "家庭電話", 12},
        {"fXl", "文化程度", "文化程度", 9, Sel | Seek, kEducation},
        {"fZy", "专业", "專業", 12, Seek},
        {"fXx", "毕业学校", "畢業學校", 16, Seek},
        {"fWy", "外语", "外語", 6, Seek, kLanguage},
        {"fWySp", "外语水平", "外語水平", 9, Seek, kLanguageLevel},
        {"fZc", "职称", "職稱", 10, Sel | Seek, kTitle},
        {"fZcDay", "职称评定时间", "職稱評定時間", 12},
        {"fRz", "现任职务", "現任職務", 12, Sel | Seek},
        {"fTc", "特长", "特長", 16, Seek},
        {"fother1", "银行帐号", "銀行帳號", 18},
        {"fother2", "班组", "班組", 8, Seek, kTeam},
        {"fGzName", "工资级别", "工資級別", 9, Seek, kWage},
        {"fSpday", "受聘时间", "受聘時間", 10, Sel | Seek},
        {"fBmName", "现属部门", "現屬部門", 12, Sel | Seek},
        {"idlimt", "身份证有效期", "身份證有效期", 12},
        {"bodycondition", "身体状况", "身體狀況", 9, Seek, kHealth},
        {"staycode", "暂住证号码", "暫住證號碼", 14},
        {"staytime", "暂住证有效期", "暫住證有效期", 12},
        {"contracttime", "合同签定时间", "合同簽定時間", 12, Seek},
        {"contractlimt", "合同有效期", "合同有效期", 12, Seek},
        {"fBp", "BP机号码", "BP機號碼", 12},
        {"mobilephone", "手机号码", "手機號碼", 12, Sel},
        {"grudtime", "毕业时间", "畢業時間", 10, Seek},
        {"worktime", "参加工作时间", "參加工作時間", 12, Seek},
        {"funit", "分公司", "分公司", 12, Sel | Seek, kUnit},
        {"leavetime", "辞退时间", "辭退時間", 10, Seek},
        {"leavereason", "辞退原因", "辭退原因", 16, Seek},
        {"worklimt", "聘期", "聘期", 8, Seek},
        {"roadmny", "来费发放时间", "來費發放時間", 12},
        {"seepnt", "探费发放时间", "探費發放時間", 12},
        {"safeedu", "经过安全教育", "經過安全教育", 12, Seek},
        {"lyunit", "联营单位", "聯營單位", 16, Seek},
        {"trustman", "担保人", "擔保人", 8},
        {"bodyhigh", "住宿条件", "住宿條件", 9},
        {"bodytype", "住宿", "住宿", 8, Seek, kLodging},
        {"neckline", "房号", "房號", 8, Seek},
        {"waistline", "体型", "體型", 6},
        {"shoecode", "其他", "其他", 10},
        {"unit", "单位", "單位", 16, Seek},
        {"fpName", "姓名", "姓名", 8, NoPrint, "", Txt, 0, 69, 69},
        {"fpBirthday", "出生日期", "出生日期", 10, NoPrint, "", Txt, 0, 70, 70},
        {"fpZz", "政治面貌", "政治面貌", 9, NoPrint, kPolitics, Txt, 0, 71, 71},
        {"fpMz", "民族", "民族", 6, NoPrint, kNation, Txt, 0, 72, 72},
        {"fpJg", "籍贯", "籍貫", 10, NoPrint, "", Txt, 0, 73, 73},
        {"fpPhone", "电话", "電話", 12, NoPrint, "", Txt, 0, 74, 74},
        {"fpXl", "文化程度", "文化程度", 9, NoPrint, kEducation, Txt, 0, 75, 75},
        {"fpHj", "户籍所在地", "戶籍所在地", 14, NoPrint, "", Txt, 0, 76, 76},
        {"fpRz", "职务", "職務", 10, NoPrint, "", Txt, 0, 77, 77},
        {"fpDw", "工作单位", "工作單位", 20, NoPrint, "", Txt, 0, 78, 78},
    };
    return f;
}

struct DictTable {
    const char* table;
    QVector<Field> fields;
};

const QVector<DictTable>& dictionary() {
    // The loan tables: the key comes first in the grid (its row header holds it) and last in the label
    // order, so that the twelve labels line up with the twelve rows after it.
    const QVector<Field> loans = {
        {"fcode", "工号", "工號", 8, Sel | Fixed},
        {"fName", "姓名", "姓名", 8, Sel | Fixed},
        {"goodsname", "物品名称", "物品名稱", 16, Sel},
        {"Model", "规格型号", "規格型號", 12, Sel},
        {"geshu", "数量", "數量", 6, Sel, "", Whole},
        {"price", "单价", "單價", 10, Sel, "", Dec, 2},
        {"Total", "小计", "小計", 12, Sel, "", Dec, 2},
        {"useyear", "使用年限", "使用年限", 8, Sel, "", Whole},
        {"lyxz", "领用性质", "領用性質", 9, Sel, kUseKind},
        {"loantime", "领取时间", "領取時間", 10, Sel},
        {"backtime", "归还日期", "歸還日期", 10, Sel},
        {"demo", "备注", "備註", 16, Sel},
        {"fID", "序号", "序號", 6, Sel | NoPrint | Fixed, "", Whole, 0, 0},
    };
    static const QVector<DictTable> d = {
        {"tRsBasic", personFields()},
        {"tRsDetail",
         {
             {"fCode", "员工编号", "員工編號", 8, NoPrint | Fixed, "", Txt, 0, 0},
             {"fRsDetail1", "兴趣爱好", "興趣愛好", 30, Sel},
             {"fRsDetail2", "艺术特长", "藝術特長", 30, Sel},
             {"fRsDetail3", "获奖情况", "獲獎情況", 30, Sel},
             {"fRsDetail4", "社会活动", "社會活動", 30, Sel},
         }},
        {"tRsFamily",
         {
             {"fCh", "称呼", "稱呼", 5, Sel},
             {"fName", "姓名", "姓名", 11, Sel},
             {"fNy", "出生年月", "出生年月", 10, Sel},
             {"fDw", "工作单位、职务或住址", "工作單位、職務或住址", 20.85, Sel},
             {"fZz", "政治面貌", "政治面貌", 9, Sel, kPolitics},
         }},
        // fBm of the work history and fZy of the study rows have no row: each has two default headers,
        // one per grid, and a dictionary caption would replace both.
        {"tRsWork",
         {
             {"fYear", "起止年月", "起止年月", 17, Sel},
             {"fRz", "任职", "任職", 11, Sel},
             {"fWk", "所从事工作", "所從事工作", 17, Sel},
             {"newbm", "调往部门", "調往部門", 11, Sel},
         }},
        {"tRsStudy",
         {
             {"fYear", "起止年月", "起止年月", 17, Sel},
             {"fXx", "学校", "學校", 19, Sel},
         }},
        {"tRs_WorkState",
         {
             {"fYear", "年度", "年度", 15, Sel},
             {"YTotal", "全年应出勤", "全年應出勤", 12, Sel},
             {"Ydays", "实出勤天数", "實出勤天數", 12, Sel},
             {"ADay", "缺勤天数", "缺勤天數", 12, Sel},
         }},
        {"tRsResult",
         {
             {"fYear", "年月", "年月", 17, Sel},
             {"fyj", "业绩", "業績", 39.4, Sel},
         }},
        {"tRsTech",
         {
             {"fJs", "调薪日期", "調薪日期", 12, Sel},
             {"fJn", "原 薪", "原 薪", 16, Sel},
             {"fBz", "新  薪", "新  薪", 16, Sel},
             {"fSm", "调薪率", "調薪率", 12.1, Sel},
         }},
        {"tRsMeed",
         {
             {"fYear", "时间", "時間", 15, Sel},
             {"fYy", "事件", "事件", 26, Sel},
             {"fjc", "奖励或处罚", "獎勵或處罰", 15.25, Sel},
         }},
        {"tRs_Bm",
         {
             {"fCode", "编码", "編碼", 10, Sel | Fixed},
             {"fName", "名称", "名稱", 16, Sel | Fixed},
             {"fLimited", "限定人数", "限定人數", 8, Sel, "", Whole},
             {"fYnxj", "岗位职务", "崗位職務", 8, 0, "", Whole},
             {"fRz", "职员类别", "職員類別", 10, Sel, kCategory},
             {"fgzname", "工资级别", "工資級別", 10, Sel, kWage},
             {"fDetail1", "部门职能", "部門職能", 30},
             {"fDetail2", "备注", "備註", 30},
         }},
        // The housing list shows persons: these rows name columns of tRsBasic.
        {"tRs_House",
         {
             {"fCode", "员工编号", "員工編號", 8, Sel | Fixed},
             {"fName", "姓名", "姓名", 8, Sel | Fixed},
             {"fSex", "性别", "性別", 4, Sel},
             {"fBmName", "现属部门", "現屬部門", 12, Sel},
             {"fRz", "现任职务", "現任職務", 12, Sel},
             {"bodytype", "住宿", "住宿", 8, Sel, kLodging},
             {"neckline", "房号", "房號", 8, Sel},
             {"bodyhigh", "住宿条件", "住宿條件", 9},
             {"mobilephone", "手机号码", "手機號碼", 12, Sel},
         }},
        {"trsLoanTools", loans},
        {"tRsLoanGoods", loans},
        {"trscard",
         {
             {"fcode", "工号", "工號", 8, Sel | Fixed},
             {"fName", "姓名", "姓名", 8, Sel | Fixed},
             {"cardname", "证件名", "證件名", 14, Sel, kCardName},
             {"cardcode", "证件号", "證件號", 14, Sel},
             {"cardjg", "发证机关", "發證機關", 14, Sel},
             {"cardtime", "发证时间", "發證時間", 10, Sel},
             {"usetime", "有效时间", "有效時間", 10, Sel},
             {"fyxz", "费用性质", "費用性質", 9, Sel, kFeeKind},
             {"pxfy", "培训费用", "培訓費用", 10, Sel, "", Dec, 2},
         }},
    };
    return d;
}

void seedDictionary(Connection& c) {
    Insert ins(c, QStringLiteral("RptListDetail"),
               {"fTable", "FieldID", "OrderID", "FieldName", "FieldName_0", "FieldName_1", "FieldSelected",
                "FieldSeek", "FieldType", "FieldBriefType", "FieldGridWidth", "FieldDataType",
                "FieldDataDeci", "FEnabled"});
    for (const DictTable& t : dictionary()) {
        int order = 0;
        for (const Field& f : t.fields) {
            ++order;
            const int orderId = f.orderId == Auto ? order : f.orderId;
            const int fieldId = f.fieldId == Auto ? orderId : f.fieldId;
            ins.row({u(t.table), fieldId, orderId, u(f.name), u(f.cap0), u(f.cap1), (f.flags & Sel) ? 1 : 0,
                     (f.flags & Seek) ? 1 : 0, (f.flags & NoPrint) ? -1 : 0, u(f.brief), f.width, f.dataType,
                     f.deci, (f.flags & Fixed) ? 0 : 1});
        }
    }
}

// ---- Modules ---------------------------------------------------------------------------------

struct Module {
    const char* key;
    const char* cap0;
    const char* cap1;
};

// Every menu key of the command table; each owns five positions of the rights string (enter, add,
// change, delete, audit), in this order from position 1.
const Module kModules[] = {
    {"mnuRsManIn", "在职员工档案", "在職員工檔案"},
    {"mnuRsManOut", "离职员工档案", "離職員工檔案"},
    {"mnuRsTotal", "人事统计查询", "人事統計查詢"},
    {"mnuRsbm", "部门管理", "部門管理"},
    {"mnuRsSysBm", "部门与组织架构", "部門與組織架構"},
    {"mnuRsOthMove", "调令管理", "調令管理"},
    {"mnuRsOthHoldCard", "持证管理", "持證管理"},
    {"mnuRsOthLoanGoods", "借领用工具设备", "借領用工具設備"},
    {"mnuRsOthTools", "借领用行政物品", "借領用行政物品"},
    {"mnuRsHouseSet", "房间号设置", "房間號設置"},
    {"mnuRsHouseLook", "住宿查询统计", "住宿查詢統計"},
    {"mnuRsCard", "职工卡打印", "職工卡打印"},
    {"mnuRsCard2", "职工卡打印(二)", "職工卡打印(二)"},
    {"mnuOffice1", "报告审批", "報告審批"},
    {"mnuOA_Report", "办公报告审批", "辦公報告審批"},
    {"mnuOffice2", "会议管理", "會議管理"},
    {"mnuOA_Meeting", "办公会议管理", "辦公會議管理"},
    {"mnuOffice3", "新闻公告", "新聞公告"},
    {"mnuOA_News", "办公新闻公告", "辦公新聞公告"},
    {"mnuWdFiler", "文档管理", "文檔管理"},
    {"mnuWdDept", "文档查询", "文檔查詢"},
    {"mnuWdDict", "企业辞典", "企業辭典"},
};

void seedModules(Connection& c) {
    Insert ins(
        c, QStringLiteral("tSysFunc"),
        {"SerialNo", "Model_Name", "Model_Name_0", "Model_Name_1", "SecondPass", "Password", "NoUse_"});
    int serial = 1;
    for (const Module& m : kModules) {
        ins.row({serial, u(m.key), u(m.cap0), u(m.cap1), 0, QString(), 0});
        serial += 5;
    }
}

// ---- Brief lists -----------------------------------------------------------------------------

struct BriefList {
    const char* type;
    const char* name;
    QVector<const char*> entries;
};

const QVector<BriefList>& briefLists() {
    static const QVector<BriefList> b = {
        // The leaving reasons: entry n is person state n + 1.
        {"rsstate", "离职原因", {"辞职", "解聘", "退休", "离休", "调出", "其他"}},
        {kMarital, "婚姻状况", {"未婚", "已婚", "离异", "丧偶"}},
        {kNation,
         "民族",
         {"汉族", "回族", "满族", "蒙古族", "壮族", "藏族", "维吾尔族", "苗族", "彝族", "土家族", "朝鲜族"}},
        {kPolitics, "政治面貌", {"中共党员", "共青团员", "民主党派", "群众"}},
        {kCategory, "职员类别", {"管理人员", "技术人员", "生产工人", "后勤人员", "临时工"}},
        {kEducation, "文化程度", {"博士", "硕士", "本科", "大专", "中专", "高中", "初中", "小学"}},
        {kLanguage, "外语", {"英语", "日语", "德语", "法语", "俄语"}},
        {kLanguageLevel, "外语水平", {"四级", "六级", "八级", "熟练", "一般"}},
        {kTitle,
         "职称",
         {"高级工程师", "工程师", "助理工程师", "技术员", "高级会计师", "会计师", "助理会计师", "经济师"}},
        {kTeam, "班组", {"甲班", "乙班", "丙班", "丁班"}},
        {kWage, "工资级别", {"一级", "二级", "三级", "四级", "五级", "六级"}},
        {kUnit, "分公司", {"总公司", "北京分公司", "上海分公司", "广州分公司"}},
        {kLodging, "住宿", {"住宿舍", "自租房", "自有住房", "不住宿"}},
        {kHealth, "身体状况", {"健康", "良好", "一般", "较差"}},
        {kUseKind, "领用性质", {"借用", "领用", "租用"}},
        {kCardName, "证件名称", {"上岗证", "电工证", "焊工证", "驾驶证", "会计证", "职称证书"}},
        {kFeeKind, "费用性质", {"公司承担", "个人承担", "共同承担"}},
    };
    return b;
}

void seedBriefs(Connection& c) {
    Insert lists(c, QStringLiteral("brief"), {"briefType", "BriefName"});
    Insert entries(c, QStringLiteral("briefDetail"), {"briefType", "BriefCode", "BriefName"});
    for (const BriefList& l : briefLists()) {
        lists.row({u(l.type), u(l.name)});
        int n = 0;
        for (const char* e : l.entries)
            entries.row({u(l.type), QStringLiteral("%1").arg(++n, 2, 10, QLatin1Char('0')), u(e)});
    }
}

void seedCompany(Connection& c) {
    Insert ins(c, QStringLiteral("myCompany"),
               {"CompCode", "FullName", "CompName", "compadd", "Province", "cityname", "Telphone", "fax",
                "PostCode", "http", "E_Mail", "CompTax", "CompAcnt"});
    ins.row({u("001"), u("示范实业有限公司"), u("示范实业"), u("人民路100号"), u("广东省"), u("深圳市"),
             u("0755-12345678"), u("0755-12345679"), u("518000"), u("www.example.com"), u("info@example.com"),
             u("440300123456789"), u("4000 0231 0900 1234 567")});
}

} // namespace

void seed(Connection& c) {
    seedDictionary(c);
    seedModules(c);
    seedBriefs(c);
    seedCompany(c);
}

} // namespace zq::schema
