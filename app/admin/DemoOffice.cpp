// The office side (reports, meetings, notices) and the documents (archive and company dictionary).

#include "DemoKit.h"

#include "shell/TextSearch.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <algorithm>

namespace zq::demo::kit {

namespace {

struct Notice {
    QDate date;
    QString text;
    QString dept;
};

const QString kNewLine = QStringLiteral("\r\n");

// Dates over the last two years, oldest first: the numbers of the rows follow them.
std::vector<QDate> dates(Rng& r, const QDate& today, int n) {
    std::vector<QDate> d;
    for (int i = 0; i < n; ++i)
        d.push_back(r.date(today.addYears(-2), today));
    std::sort(d.begin(), d.end());
    return d;
}

// Meetings and notices keep their keys in 16 bits: a company leaves the board room to add more.
constexpr int kBoardRows = 30000;

int scaled(const Company& co, int per, int lo, int hi) {
    return std::clamp(int(co.persons.size()) / per, lo, hi);
}

// Who writes and checks: the heads of departments, and anyone when there are none.
QString someone(Rng& r, const Company& co) {
    if (!co.heads.empty() && r.chance(0.8)) return co.persons[size_t(r.pick(co.heads))].name;
    return co.persons[size_t(r.between(0, int(co.persons.size()) - 1))].name;
}

// Only top departments write reports and hold meetings.
QString topDeptName(Rng& r, const Company& co) {
    std::vector<int> tops;
    for (int i = 0; i < int(co.depts.size()); ++i)
        if (co.depts[size_t(i)].level == 1) tops.push_back(i);
    return co.depts[size_t(r.pick(tops))].name;
}

void writeReports(Context& x, std::vector<Notice>& notices) {
    Rng r = x.rng(sReports);
    Writer w(x.c, QStringLiteral("tRs_RptFlow"),
             "fID,fDate,fTitle,fContent,fFootnote1,fFootnote2,fChecker1,fChecker2,fChecker3,fChecker4,"
             "fChecker1Ok,fChecker2Ok,fChecker3Ok,fChecker4Ok,fFilePath,fNews,fBmName");
    const std::vector<QDate> when = dates(r, x.co.today, scaled(x.co, 200, 20, 500));
    for (int id = 1; id <= int(when.size()); ++id) {
        const QDate& date = when[size_t(id - 1)];
        const QString title = r.pick(reportTitles());
        const QString body = r.pick(reportBodies());
        const QString author = someone(r, x.co);
        const int checkers = r.weighted({20, 40, 30, 10}) + 1;
        QStringList names;
        for (int i = 0; i < 4; ++i)
            names << (i < checkers ? someone(r, x.co) : blank());
        // The first name always opens the list, the others follow when given.
        QString joined = names.at(0);
        for (int i = 1; i < 4; ++i)
            if (!names.at(i).isEmpty()) joined += QStringLiteral(", ") + names.at(i);
        // Older reports are mostly decided; the newest wait for their checkers.
        const bool recent = date.daysTo(x.co.today) < 30;
        const bool forward = r.chance(0.2);
        const QString dept = topDeptName(r, x.co);
        w << id << iso(date) << title << body << author << joined;
        for (const QString& n : names)
            w << n;
        for (int i = 0; i < 4; ++i)
            w << (i < checkers ? (recent ? r.weighted({70, 20, 5, 5}) : r.weighted({10, 75, 10, 5})) : 0);
        w << (r.chance(0.3) ? QStringLiteral("/srv/zqrs/docs/reports/%1.doc").arg(id) : blank())
          << (forward ? 1 : 0) << dept;
        w.row();
        if (forward)
            notices.push_back({date,
                               title + kNewLine + body + kNewLine + kNewLine + QStringLiteral("报告人:") +
                                   author + kNewLine + QStringLiteral("审核人:") + joined + kNewLine,
                               dept});
    }
    x.done(w);
}

void writeMeetings(Context& x, std::vector<Notice>& notices) {
    Rng r = x.rng(sMeetings);
    Writer w(x.c, QStringLiteral("tRs_meeting"),
             "fID,fDate,fTitle,fContent,fFoot1,fFoot2,fFootnote1,fFootnote2,fFilePath,fNews,fBmName");
    const QString foot1 = QStringLiteral("主办单位:"), foot2 = QStringLiteral("协办单位:");
    // One meeting for every five persons: 20,000 at 100,000.
    const std::vector<QDate> when = dates(r, x.co.today, scaled(x.co, 5, 10, kBoardRows));
    for (int id = 1; id <= int(when.size()); ++id) {
        const QDate& date = when[size_t(id - 1)];
        const QString title = date.toString(QStringLiteral("yyyy年M月")) + r.pick(meetingTitles());
        const QString body = r.pick(meetingBodies());
        const QString host = topDeptName(r, x.co);
        const QString cohost = r.chance(0.4) ? topDeptName(r, x.co) : blank();
        const bool forward = r.chance(0.5);
        w << id << iso(date) << title << body << foot1 << foot2 << host << cohost << blank()
          << (forward ? 1 : 0) << host;
        w.row();
        if (forward) {
            QString text = title + kNewLine + body + kNewLine + kNewLine + foot1 + host + kNewLine;
            if (!cohost.isEmpty()) text += foot2 + cohost + kNewLine;
            notices.push_back({date, text, host});
        }
    }
    x.done(w);
}

void writeNews(Context& x, std::vector<Notice>& notices) {
    Rng r = x.rng(sNews);
    // As many notices in all as persons, up to the board's room, most of them typed on the board.
    const int typed = std::max(15, std::min(int(x.co.persons.size()), kBoardRows) - int(notices.size()));
    for (const QDate& d : dates(r, x.co.today, typed))
        notices.push_back({d, r.pick(kit::notices()), r.chance(0.5) ? topDeptName(r, x.co) : blank()});
    std::stable_sort(notices.begin(), notices.end(),
                     [](const Notice& a, const Notice& b) { return a.date < b.date; });
    Writer w(x.c, QStringLiteral("tRs_News"), "fID,fDate,fContent,fBmName,fPosted");
    int id = 0;
    for (const Notice& n : notices) {
        w << ++id << iso(n.date) << n.text << n.dept << iso(n.date) + QStringLiteral(" 08:00:00.000");
        w.row();
    }
    x.done(w);
}

} // namespace

void writeOffice(Context& x) {
    std::vector<Notice> notices;
    writeReports(x, notices);
    writeMeetings(x, notices);
    writeNews(x, notices);
}

namespace {

struct DocClass {
    const char* name;
    const char* owner;    // the owning department, by its name
    const char* document; // name of a document: a number follows
    bool pictures;
    const char* content;
};

// Classes under classes: the first level has the code of two digits, the second four.
const std::vector<std::pair<const char*, std::vector<DocClass>>>& archive() {
    static const std::vector<std::pair<const char*, std::vector<DocClass>>> a = {
        {"公司制度",
         {{"人事制度", "人力资源部", "人事管理规定第", false,
           "规定员工招聘、考勤、请假、奖惩和离职的办理办法。"},
          {"财务制度", "财务部", "财务管理规定第", false, "规定费用报销、借款和资金审批的流程与权限。"},
          {"安全制度", "安全环保部", "安全管理规定第", false, "规定安全生产责任、操作规程和事故报告程序。"}}},
        {"技术文件",
         {{"产品图纸", "技术部", "产品图纸ZQ-", false, "产品总装图及零件图，按最新版本执行。"},
          {"工艺文件", "技术部", "工艺文件GY-", false, "工序作业指导书，含工艺参数和注意事项。"},
          {"检验标准", "质量管理部", "检验标准JY-", false, "来料、过程及成品检验的项目、方法和判定标准。"}}},
        {"合同文件",
         {{"销售合同", "销售部", "销售合同XS-", false, "与客户签订的销售合同，含价格、交期和付款条件。"},
          {"采购合同", "采购部", "采购合同CG-", false, "与供应商签订的采购合同及质量协议。"}}},
        {"会议纪要",
         {{"经营会议纪要", "总经理办公室", "经营会议纪要第", false, "会议议定事项及责任部门、完成时间。"}}},
        {"图片资料",
         {{"厂区照片", "行政部", "厂区照片", true, "厂区全景及主要车间照片。"},
          {"活动照片", "人力资源部", "活动照片", true, "员工文体活动照片。"}}},
    };
    return a;
}

// Sentences of the archive's texts: each document takes a few, so that its words differ from its
// neighbours' as real papers do.
const std::vector<const char*>& paperSentences() {
    static const std::vector<const char*> s = {
        "本文件自发布之日起执行，原有规定同时废止。",
        "各部门负责人对本部门的执行情况负责。",
        "员工试用期一般为三个月，试用期满考核合格后转正。",
        "加班须事先填写加班申请单，经部门经理批准。",
        "请假三天以内由部门经理审批，三天以上报人力资源部备案。",
        "费用报销须附原始发票，并经部门经理和财务部审核签字。",
        "设备操作人员须持证上岗，严禁违章作业。",
        "每月最后一个工作日进行安全检查，发现隐患及时整改。",
        "合同履行过程中的变更须以书面形式确认。",
        "产品出厂前须经质量管理部检验合格并出具合格证。",
        "来料检验按抽样标准执行，不合格品隔离存放并标识。",
        "文件的修订由原编制部门提出，经批准后发放新版本。",
        "会议决定的事项由责任部门在规定时间内完成并反馈。",
        "新员工入职培训包括公司简介、规章制度和安全教育。",
        "绩效考核结果作为调薪、晋升和评优的依据。",
        "档案资料应分类存放，借阅须办理登记手续。",
        "客户投诉须在二十四小时内答复，并记录处理结果。",
        "采购物资须货比三家，大宗采购实行招标。",
        "仓库实行先进先出，定期盘点，做到账物相符。",
        "消防器材由专人管理，每季度检查一次。",
    };
    return s;
}

// A picture for the demo's picture documents: a plain gradient with a frame.
bool writePicture(const QString& path, int seed) {
    QImage img(320, 200, QImage::Format_RGB32);
    const QColor a = QColor::fromHsv((seed * 47) % 360, 90, 230);
    const QColor b = QColor::fromHsv((seed * 47 + 60) % 360, 140, 150);
    for (int y = 0; y < img.height(); ++y) {
        const double t = double(y) / img.height();
        const QRgb c = qRgb(int(a.red() * (1 - t) + b.red() * t), int(a.green() * (1 - t) + b.green() * t),
                            int(a.blue() * (1 - t) + b.blue() * t));
        for (int x = 0; x < img.width(); ++x)
            img.setPixel(x, y,
                         (x < 4 || y < 4 || x >= img.width() - 4 || y >= img.height() - 4) ? qRgb(60, 60, 60)
                                                                                           : c);
    }
    return img.save(path, "PNG");
}

void writeArchive(Context& x) {
    Rng r = x.rng(sFiles);
    Writer w(x.c, QStringLiteral("tWd_File1"), "fCode,fName,fYnxj,fBz,fFilePath,fBmCode,fDetail1,fLimited");
    auto deptCode = [&](const QString& name) {
        for (const Dept& d : x.co.depts)
            if (d.name == name) return d.code;
        return blank();
    };
    // A company on a file gets its documents' files beside it; on a server there is no place that
    // every client reaches, so the documents there hold their texts only.
    QString folder;
    if (!x.c.dialect().isServer()) {
        folder = x.c.settings().userPath + QStringLiteral(".docs");
        if (!QDir().mkpath(folder)) folder.clear();
    }
    // A larger company keeps each kind of paper in one folder a department, up to 40; 10,000
    // papers at 100,000 persons.
    int kinds = 0;
    for (const auto& group : archive())
        kinds += int(group.second.size());
    const int folders = std::clamp(int(x.co.persons.size()) / 2500, 1, 40);
    const int perFolder =
        std::max(2, std::clamp(int(x.co.persons.size()) / 10, 30, 10000) / (kinds * folders));
    const QString& empty = blank();
    const auto number = [](int n, int width) {
        return QStringLiteral("%1").arg(n, width, 10, QLatin1Char('0'));
    };
    int top = 0;
    int files = 0;
    for (const auto& group : archive()) {
        const QString topCode = number(++top, 2);
        w << topCode << QString::fromUtf8(group.first) << 0 << 0 << empty << empty << empty << 0.0;
        w.row();
        int sub = 0;
        for (const DocClass& k : group.second) {
            const QString kindCode = topCode + number(++sub, 2);
            const QString kindName = QString::fromUtf8(k.name);
            const QString kindOwner = deptCode(QString::fromUtf8(k.owner));
            w << kindCode << kindName << 0 << 0 << empty << kindOwner << empty << 0.0;
            w.row();
            int paper = 0; // numbered through the kind, so that titles stay unique
            for (int f = 1; f <= folders; ++f) {
                QString code = kindCode;
                QString owner = kindOwner;
                if (folders > 1) {
                    // Folders go to departments in turn, the owning department's first.
                    const Dept& d =
                        x.co.depts[size_t((f - 1) * std::max<size_t>(1, x.co.depts.size() / folders)) %
                                   x.co.depts.size()];
                    code = kindCode + number(f, 2);
                    owner = d.code;
                    w << code << kindName + QStringLiteral("（") + d.name + QStringLiteral("）") << 0 << 0
                      << empty << owner << empty << 0.0;
                    w.row();
                }
                const int documents = perFolder / 2 + r.between(0, perFolder);
                for (int n = 1; n <= documents; ++n) {
                    ++paper;
                    const QString title =
                        QString::fromUtf8(k.document) +
                        (k.pictures || QString::fromUtf8(k.document).endsWith(QLatin1Char('-'))
                             ? number(paper, 3)
                             : QString::number(paper) + QStringLiteral("号"));
                    QString text = QString::fromUtf8(k.content);
                    for (int i = r.between(2, 5); i > 0; --i)
                        text += kNewLine + QString::fromUtf8(r.pick(paperSentences()));
                    const QString docCode = code + number(n, 3);
                    QString file;
                    // Every fourth paper has its file; every picture has one.
                    if (!folder.isEmpty() && (k.pictures || n % 4 == 1)) {
                        file = folder + QLatin1Char('/') + docCode +
                               (k.pictures ? QStringLiteral(".png") : QStringLiteral(".txt"));
                        QFile out(file);
                        const bool written = k.pictures
                                                 ? writePicture(file, ++files)
                                                 : out.open(QIODevice::WriteOnly) &&
                                                       out.write((title + kNewLine + text).toUtf8()) > 0;
                        if (!written) file.clear();
                    }
                    const bool picture = k.pictures && !file.isEmpty();
                    w << docCode << title << 1 << (picture ? 1 : 0) << file << owner << text << 0.0;
                    w.row();
                }
            }
        }
    }
    x.done(w);
    // The archive is found by its words from the start.
    IndexStoredTexts(x.c, QStringLiteral("tWd_File1"), QStringLiteral("fYnxj=1"));
}

void writeDictionary(Context& x) {
    struct Entry {
        const char* name;
        const char* text;
    };
    static const std::vector<std::pair<const char*, std::vector<Entry>>> dict = {
        {"企业简介",
         {{"公司概况", "公司成立于1995年，是一家集研发、生产和销售于一体的制造企业。"},
          {"企业文化", "诚信、务实、创新、共赢。"},
          {"发展历程", "1995年建厂；2003年通过质量体系认证；2012年建成新厂区。"}}},
        {"产品术语",
         {{"成品", "完成全部工序、检验合格并入库的产品。"},
          {"半成品", "已完成部分工序、尚需继续加工的在制品。"},
          {"首件检验", "每批生产开始或工艺变更后对第一件产品进行的检验。"},
          {"返工", "对不合格品重新加工使其符合要求。"}}},
        {"管理术语",
         {{"6S管理", "整理、整顿、清扫、清洁、素养、安全。"},
          {"绩效考核", "按月对员工的工作业绩、态度和能力进行评价。"},
          {"定岗定编", "确定各部门的岗位设置和人员编制。"},
          {"试用期", "新员工入职后的考察期，一般为三个月。"}}},
        {"常用缩写",
         {{"ERP", "企业资源计划系统。"},
          {"QC", "质量控制。"},
          {"PMC", "生产及物料控制。"},
          {"HR", "人力资源。"}}},
    };
    Writer w(x.c, QStringLiteral("tWd_File0"), "fCode,fName,fYnxj,fLimited,fColor,fDetail1");
    const int white = 0xffffff;
    int top = 0;
    for (const auto& group : dict) {
        const QString code = QStringLiteral("%1").arg(++top, 2, 10, QLatin1Char('0'));
        w << code << QString::fromUtf8(group.first) << 0 << 0.0 << white << blank();
        w.row();
        int n = 0;
        for (const Entry& e : group.second) {
            w << code + QStringLiteral("%1").arg(++n, 2, 10, QLatin1Char('0')) << QString::fromUtf8(e.name)
              << 1 << 0.0 << white << QString::fromUtf8(e.text);
            w.row();
        }
    }
    x.done(w);
}

} // namespace

void writeDocuments(Context& x) {
    writeArchive(x);
    writeDictionary(x);
}

} // namespace zq::demo::kit
