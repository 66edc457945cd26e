#include "Schema.h"

#include "Recordset.h"
#include "SqlText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zq::schema {

namespace {

QString u(const char* s) {
    return QString::fromUtf8(s);
}

QJsonArray nums(std::initializer_list<double> v) {
    QJsonArray a;
    for (double d : v)
        a.append(d);
    return a;
}

// Builds one layout. Lengths are millimetres from the top left of a card, or of the page's writing
// area when a page holds one record. Texts in braces are filled in when printing.
class Layout {
public:
    Layout(const char* title, double fontSize) {
        m_root[u("title")] = u(title);
        m_root[u("font")] = QJsonObject{{u("family"), u("宋体")}, {u("size"), fontSize}};
    }

    void page(double width, double height, double margin) {
        m_root[u("page")] = QJsonObject{{u("width"), width},
                                        {u("height"), height},
                                        {u("margins"), nums({margin, margin, margin, margin})}};
    }
    void cards(double width, double height, int columns, int rows, double gapX, double gapY) {
        m_root[u("card")] = QJsonObject{{u("width"), width},
                                        {u("height"), height},
                                        {u("columns"), columns},
                                        {u("rows"), rows},
                                        {u("gap"), nums({gapX, gapY})}};
    }

    void box(double x, double y, double w, double h, double pen, const char* fill = nullptr) {
        QJsonObject o{{u("kind"), u("box")}, {u("rect"), nums({x, y, w, h})}, {u("pen"), pen}};
        if (fill) o[u("fill")] = u(fill);
        add(o);
    }
    void line(double x1, double y1, double x2, double y2, double pen, const char* color = nullptr) {
        QJsonObject o{
            {u("kind"), u("line")}, {u("from"), nums({x1, y1})}, {u("to"), nums({x2, y2})}, {u("pen"), pen}};
        if (color) o[u("color")] = u(color);
        add(o);
    }
    QJsonObject& text(double x, double y, double w, double h, const char* text, double size,
                      bool bold = false, const char* align = "center") {
        return add({{u("kind"), u("text")},
                    {u("rect"), nums({x, y, w, h})},
                    {u("text"), u(text)},
                    {u("size"), size},
                    {u("bold"), bold},
                    {u("align"), u(align)}});
    }
    // A caption: the field's caption in the field collection, else the literal.
    QJsonObject& label(double x, double y, double w, double h, const char* field, const char* literal,
                       const char* align = "center") {
        return add({{u("kind"), u("label")},
                    {u("rect"), nums({x, y, w, h})},
                    {u("field"), u(field)},
                    {u("text"), u(literal)},
                    {u("align"), u(align)}});
    }
    QJsonObject& value(double x, double y, double w, double h, const char* field,
                       const char* align = "left") {
        return add({{u("kind"), u("field")},
                    {u("rect"), nums({x, y, w, h})},
                    {u("field"), u(field)},
                    {u("align"), u(align)}});
    }
    void photo(double x, double y, double w, double h, const char* field) {
        add({{u("kind"), u("photo")},
             {u("rect"), nums({x, y, w, h})},
             {u("field"), u(field)},
             {u("pen"), 0.2}});
    }

    // One ruled cell pair of a form: a shaded caption from xs[c0] to xs[c1], the value on to xs[c2].
    // Gives the value, for options.
    QJsonObject& pair(const QVector<double>& xs, double y, double h, int c0, int c1, int c2,
                      const char* field, const char* literal) {
        cell(xs[c0], y, xs[c1] - xs[c0], h, true);
        label(xs[c0], y, xs[c1] - xs[c0], h, field, literal);
        cell(xs[c1], y, xs[c2] - xs[c1], h, false);
        return value(xs[c1], y, xs[c2] - xs[c1], h, field);
    }
    void cell(double x, double y, double w, double h, bool shaded) {
        box(x, y, w, h, 0.2, shaded ? "#eef1f5" : nullptr);
    }

    // One record to an A4 page: the company's name, the title spaced out, and a line with the key on
    // the left and the date on the right, over a writing area of 180 by 267 mm.
    static Layout onePerPage(const char* title, const char* spacedTitle, const char* key, double fontSize) {
        Layout l(title, fontSize);
        l.page(210, 297, 15);
        l.cards(180, 267, 1, 1, 0, 0);
        l.text(0, 0, 180, 7, "{公司单位|CompName}", 12);
        l.text(0, 8, 180, 11, spacedTitle, 20, true);
        l.text(0, 21, 90, 6, key, 9, false, "left");
        l.text(90, 21, 90, 6, "打印日期：{today}", 9, false, "right");
        return l;
    }

    QString json() {
        QJsonArray items;
        for (const QJsonObject& o : m_items)
            items.append(o);
        m_root[u("items")] = items;
        return QString::fromUtf8(QJsonDocument(m_root).toJson(QJsonDocument::Indented));
    }

private:
    // The item just added, for options beyond the usual ones.
    QJsonObject& add(const QJsonObject& o) {
        m_items.append(o);
        return m_items.last();
    }

    QJsonObject m_root;
    QList<QJsonObject> m_items;
};

// The staff card: eight to an A4 sheet, in two columns, to be cut apart.
QString staffCard() {
    Layout l("职工卡", 8.5);
    l.page(210, 297, 12);
    l.cards(90, 64, 2, 4, 6, 4);
    l.box(0, 0, 90, 12, 0, "#e9eef5");
    l.text(2, 1.2, 86, 4.5, "{公司单位|CompName}", 8);
    l.text(2, 5.5, 86, 6, "职 工 卡", 12, true);
    l.line(0, 12, 90, 12, 0.3);
    const char* const fields[][2] = {{"fCode", "员工编号"},     {"fName", "姓名"},       {"fSex", "性别"},
                                     {"fBirthDay", "出生日期"}, {"fBmName", "现属部门"}, {"fRz", "现任职务"},
                                     {"fSfz", "身份证号码"}};
    double y = 14.5;
    for (const auto& f : fields) {
        l.label(2, y, 20, 6, f[0], f[1], "right")[u("suffix")] = u("：");
        l.value(22, y, 40, 6, f[0]);
        l.line(23, y + 5.6, 61, y + 5.6, 0.12, "#9aa3ad");
        y += 6.5;
    }
    l.photo(64.5, 15, 22.5, 30, "fPhoto");
    l.box(0, 0, 90, 64, 0.45);
    return l.json();
}

// The staff register form: one person to a page, the master record in ruled cells with the photo.
QString staffForm() {
    Layout l = Layout::onePerPage("职工登记表", "职 工 登 记 表", "编号：{fCode}", 9.5);
    const QVector<double> xs = {0, 22, 52, 74, 104, 126, 150, 180};
    struct Cell {
        const char* field;
        const char* literal;
        int c0, c1, c2;
    };
    const QVector<QVector<Cell>> rows = {
        {{"fName", "姓名", 0, 1, 2}, {"fSex", "性别", 2, 3, 4}, {"fBirthDay", "出生日期", 4, 5, 6}},
        {{"fMz", "民族", 0, 1, 2}, {"fHy", "婚否", 2, 3, 4}, {"fZz", "政治面貌", 4, 5, 6}},
        {{"fJg", "籍贯", 0, 1, 2}, {"fXl", "文化程度", 2, 3, 4}, {"bodycondition", "身体状况", 4, 5, 6}},
        {{"fSfz", "身份证号码", 0, 1, 4}, {"idlimt", "身份证有效期", 4, 5, 6}},
        {{"fHj", "户籍所在地", 0, 1, 4}, {"fygxz", "职员类别", 4, 5, 6}},
        {{"fXzz", "现住址", 0, 1, 4}, {"fPhone", "家庭电话", 4, 5, 7}},
        {{"fBmName", "现属部门", 0, 1, 2}, {"fRz", "现任职务", 2, 3, 4}, {"fSpday", "受聘时间", 4, 5, 7}},
        {{"fZc", "职称", 0, 1, 2}, {"fZcDay", "职称评定时间", 2, 3, 4}, {"fGzName", "工资级别", 4, 5, 7}},
        {{"fXx", "毕业学校", 0, 1, 4}, {"grudtime", "毕业时间", 4, 5, 7}},
        {{"fZy", "专业", 0, 1, 2}, {"fWy", "外语", 2, 3, 4}, {"fWySp", "外语水平", 4, 5, 7}},
        {{"worktime", "参加工作时间", 0, 1, 2},
         {"contracttime", "合同签定时间", 2, 3, 4},
         {"contractlimt", "合同有效期", 4, 5, 7}},
        {{"mobilephone", "手机号码", 0, 1, 2},
         {"fBp", "BP机号码", 2, 3, 4},
         {"fother1", "银行帐号", 4, 5, 7}},
        {{"funit", "分公司", 0, 1, 2}, {"fother2", "班组", 2, 3, 4}, {"staycode", "暂住证号码", 4, 5, 7}},
        {{"fTc", "特长", 0, 1, 4}, {"worklimt", "聘期", 4, 5, 7}},
        {{"lyunit", "联营单位", 0, 1, 4}, {"trustman", "担保人", 4, 5, 7}},
        {{"bodytype", "住宿", 0, 1, 2}, {"neckline", "房号", 2, 3, 4}, {"bodyhigh", "住宿条件", 4, 5, 7}},
    };
    const double top = 28, h = 9;
    double y = top;
    for (const QVector<Cell>& row : rows) {
        for (const Cell& c : row)
            l.pair(xs, y, h, c.c0, c.c1, c.c2, c.field, c.literal);
        y += h;
    }
    // The photo stands beside the first five rows.
    l.cell(xs[6], top, xs[7] - xs[6], 5 * h, false);
    l.photo(xs[6] + 2.5, top + 3, 25, 33, "fPhoto");
    // Remarks: the free field of the master record.
    l.cell(0, y, xs[1], 40, true);
    l.label(0, y, xs[1], 40, "shoecode", "其他");
    l.cell(xs[1], y, 180 - xs[1], 40, false);
    l.value(xs[1], y + 1, 180 - xs[1], 38, "shoecode")[u("wrap")] = true;
    y += 40;
    l.box(0, top, 180, y - top, 0.6);
    y += 12;
    l.text(0, y, 90, 6, "本人签字：", 10, false, "left");
    l.text(95, y, 85, 6, "人事部门审核（盖章）：", 10, false, "left");
    y += 14;
    l.text(0, y, 90, 6, "日期：        年    月    日", 10, false, "left");
    l.text(95, y, 85, 6, "日期：        年    月    日", 10, false, "left");
    return l.json();
}

// The other particulars: the person in brief with the photo, and the four free texts.
QString artLife() {
    Layout l = Layout::onePerPage("艺术人生", "艺 术 人 生", "编号：{fCode}", 10);
    const QVector<double> xs = {0, 24, 68, 92, 140, 180};
    const char* const rows[][4] = {{"fName", "姓名", "fSex", "性别"},
                                   {"fBirthDay", "出生日期", "fMz", "民族"},
                                   {"fBmName", "现属部门", "fRz", "现任职务"},
                                   {"fXl", "文化程度", "fXx", "毕业学校"}};
    const double top = 28, h = 10;
    double y = top;
    for (const auto& r : rows) {
        l.pair(xs, y, h, 0, 1, 2, r[0], r[1]);
        l.pair(xs, y, h, 2, 3, 4, r[2], r[3]);
        y += h;
    }
    l.cell(xs[4], top, xs[5] - xs[4], 4 * h, false);
    l.photo(xs[4] + 5, top + 2, 30, 36, "fPhoto");
    const char* const blocks[][2] = {{"fRsDetail1", "兴趣爱好"},
                                     {"fRsDetail2", "艺术特长"},
                                     {"fRsDetail3", "获奖情况"},
                                     {"fRsDetail4", "社会活动"}};
    for (const auto& b : blocks) {
        l.cell(0, y, xs[1], 46, true);
        l.label(0, y, xs[1], 46, b[0], b[1]);
        l.cell(xs[1], y, 180 - xs[1], 46, false);
        l.value(xs[1], y + 1.5, 180 - xs[1], 43, b[0])[u("wrap")] = true;
        y += 46;
    }
    l.box(0, top, 180, y - top, 0.6);
    return l.json();
}

// A report with its checkers' verdicts, one to a page.
QString reportSheet() {
    Layout l = Layout::onePerPage("报告审批单", "报 告 审 批 单", "编号：{fID}", 10);
    const QVector<double> xs = {0, 24, 100, 124, 180};
    const double top = 28, h = 10;
    double y = top;
    l.pair(xs, y, h, 0, 1, 4, "fTitle", "主题");
    y += h;
    // Older rows hold the date as mm/dd/yyyy.
    l.pair(xs, y, h, 0, 1, 2, "fDate", "日期")[u("format")] = u("date");
    l.pair(xs, y, h, 2, 3, 4, "fBmName", "所属部门");
    y += h;
    l.pair(xs, y, h, 0, 1, 2, "fFootnote1", "报告人");
    l.pair(xs, y, h, 2, 3, 4, "fFilePath", "参考文件");
    y += h;
    l.cell(0, y, xs[1], 118, true);
    l.label(0, y, xs[1], 118, "fContent", "报告内容");
    l.cell(xs[1], y, 180 - xs[1], 118, false);
    QJsonObject& content = l.value(xs[1], y + 1.5, 180 - xs[1], 115, "fContent");
    content[u("wrap")] = true;
    content[u("size")] = 10.5;
    y += 118;
    // The checkers: who, the verdict, the answer.
    const QVector<double> cs = {0, 24, 64, 96, 180};
    const double head = 8;
    l.cell(0, y, cs[1], head + 4 * h, true);
    l.text(0, y, cs[1], head + 4 * h, "审核情况", 10, true);
    const char* const captions[] = {"审核人", "审核结果", "批复意见"};
    for (int c = 1; c <= 3; ++c) {
        l.cell(cs[c], y, cs[c + 1] - cs[c], head, true);
        l.text(cs[c], y, cs[c + 1] - cs[c], head, captions[c - 1], 10, true);
    }
    const QJsonObject verdicts{
        {u("0"), u("未审核")}, {u("1"), u("审核通过")}, {u("2"), u("审核未通过")}, {u("3"), u("暂缓审核")}};
    y += head;
    for (int i = 1; i <= 4; ++i) {
        for (int c = 1; c <= 3; ++c)
            l.cell(cs[c], y, cs[c + 1] - cs[c], h, false);
        const QByteArray n = QByteArray::number(i);
        l.value(cs[1], y, cs[2] - cs[1], h, QByteArray("fChecker" + n).constData(), "center");
        l.value(cs[2], y, cs[3] - cs[2], h, QByteArray("fChecker" + n + "Ok").constData(),
                "center")[u("map")] = verdicts;
        l.value(cs[3], y, cs[4] - cs[3], h, QByteArray("fChecker" + n + "_").constData())[u("wrap")] = true;
        y += h;
    }
    l.box(0, top, 180, y - top, 0.6);
    return l.json();
}

} // namespace

void createPrintTemplates(Connection& c) {
    // One row a layout, found by template and sheet key; fLayout holds the layout as JSON.
    createTable(c, {QStringLiteral("zq_PrintTemplate"),
                    {{QStringLiteral("fTemplate"), Type::Text, 30},
                     {QStringLiteral("fSheet"), Type::Text, 40},
                     {QStringLiteral("fTitle"), Type::Text, 60},
                     {QStringLiteral("fOrder"), Type::SmallInt, 0},
                     {QStringLiteral("fLayout"), Type::Memo, 0}},
                    {{QStringLiteral("fTemplate"), QStringLiteral("fSheet")}}});
    struct Default {
        const char* templ;
        const char* sheet;
        const char* title;
        QString (*layout)();
    };
    const Default defaults[] = {
        {"RsCard", "RsCard_01", "职工卡", staffCard},
        {"RsCard2", "RsCard2_01", "职工登记表", staffForm},
        {"RsCardOther", "艺术人生", "艺术人生", artLife},
        {"RsReport", "RsReport_01", "报告审批单", reportSheet},
    };
    int order = 0;
    for (const Default& d : defaults) {
        ++order;
        Recordset rs(c,
                     QStringLiteral("select * from zq_PrintTemplate where fTemplate=%1 and fSheet=%2")
                         .arg(quoted(u(d.templ)), quoted(u(d.sheet))),
                     Cursor::Keyset, Lock::Optimistic);
        if (!rs.eof()) continue; // kept as the office may have changed it
        rs.addNew();
        rs.setValue(QStringLiteral("fTemplate"), u(d.templ));
        rs.setValue(QStringLiteral("fSheet"), u(d.sheet));
        rs.setValue(QStringLiteral("fTitle"), u(d.title));
        rs.setValue(QStringLiteral("fOrder"), order);
        rs.setValue(QStringLiteral("fLayout"), d.layout());
        rs.update();
    }
}

} // namespace zq::schema
