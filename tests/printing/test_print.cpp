#include "PdfTools.h"
#include "TestDb.h"

#include "admin/Demo.h"
#include "printing/CardDocument.h"
#include "printing/Photos.h"
#include "printing/PreviewDialog.h"
#include "printing/Print.h"
#include "printing/PrintOutput.h"
#include "resources/Texts.h"
#include "services/ui/Grid.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QBuffer>
#include <QDate>
#include <QFileInfo>
#include <QLabel>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace zq;
using namespace zq::test;

namespace {

void addPerson(const QString& code, const QString& name, int state, const QByteArray& picture = {}) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fSex,fBirthDay,fBmName,fRz,fSfz,fzt,fphoto) "
                        "values (?,?,?,?,?,?,?,?,?)"),
         {code, name, QStringLiteral("女"), QStringLiteral("1990-05-17"), QStringLiteral("研发部"),
          QStringLiteral("高级工程师"), QStringLiteral("1101011990051700") + code, state,
          picture.isEmpty() ? QVariant(QMetaType(QMetaType::QByteArray)) : QVariant(picture)});
}

void addReport(int id, const QDate& date, const QString& title) {
    exec(
        QStringLiteral("insert into tRs_RptFlow (fID,fDate,fTitle,fContent,fFootnote1,fChecker1,fChecker1Ok) "
                       "values (?,?,?,?,?,?,?)"),
        {id, date.toString(Qt::ISODate), title, QStringLiteral("关于第%1季度招聘计划的说明。").arg(id),
         QStringLiteral("王小明"), QStringLiteral("李经理"), id % 2});
}

// A progress that cancels at its first step.
class CancelAtOnce : public PrintProgress {
public:
    void begin(const QString&, int total) override { begun = total; }
    bool step(int, const QString&) override { return false; }
    void end() override {}
    int begun = -1;
};

} // namespace

class TestPrint : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_pdf;
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void init() {
        test::freshDatabase();
        m_prompts = &scriptPrompts();
        m_pdf = m_dir.filePath(QStringLiteral("out.pdf"));
        QFile::remove(m_pdf);
        PrintOutput::setPdfPath(m_pdf);
        installPrintProgress(nullptr);
        G().Language = 0;
        G().CompName = QStringLiteral("示例");
        G().UserName = QStringLiteral("管理员");
        G().CompanyItems = {LoadText(9) + LoadText(160), QStringLiteral("华东精密机械有限公司"),
                            LoadText(9) + LoadText(163), QStringLiteral("021-5555 1234")};
    }

    void personCardsCarryCaptionsValuesAndPhotos() {
        addPerson(QStringLiteral("A001"), QStringLiteral("张晓梅"), 1, demo::portraitJpeg(1));
        addPerson(QStringLiteral("A002"), QStringLiteral("欧阳建国"), 1, demo::portraitJpeg(2));
        addPerson(QStringLiteral("A003"), QStringLiteral("离职者"), 2, demo::portraitJpeg(3));
        addPerson(QStringLiteral("A004"), QStringLiteral("无照片"), 1);
        PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QStringLiteral("fZt=1"));
        QVERIFY(m_prompts->messages().isEmpty());
        const QString text = pdfText(m_pdf);
        for (const char* expected :
             {"华东精密机械有限公司", "职工卡", "员工编号：", "姓名：", "身份证号码：", "张晓梅", "欧阳建国",
              "无照片", "A002", "研发部", "高级工程师", "1101011990051700A002"})
            QVERIFY2(text.contains(QString::fromUtf8(expected)), expected);
        QVERIFY(!text.contains(QStringLiteral("离职者")));
        // Cards in code order, eight to a page; the person without a photo gets an empty box.
        QVERIFY(text.indexOf(QStringLiteral("张晓梅")) < text.indexOf(QStringLiteral("欧阳建国")));
        QCOMPARE(pdfPages(m_pdf), 1);
        QCOMPARE(pdfImages(m_pdf), 2);
        QVERIFY(text.contains(QStringLiteral("照片")));
    }

    void fullPageTemplatesPrintOneRecordAPage() {
        addPerson(QStringLiteral("B001"), QStringLiteral("陈静"), 1, demo::portraitJpeg(4));
        addPerson(QStringLiteral("B002"), QStringLiteral("刘洋"), 1);
        exec(QStringLiteral("insert into tRsDetail (fCode,fRsDetail1,fRsDetail2) values (?,?,?)"),
             {QStringLiteral("B001"), QStringLiteral("书法、围棋和长跑"), QStringLiteral("二胡演奏")});
        PrintPersonCard(1, QStringLiteral("RsCard2"), QStringLiteral("RsCard2_01"), QString());
        QCOMPARE(pdfPages(m_pdf), 2);
        QString page = pdfText(m_pdf, 1);
        for (const char* expected :
             {"职工登记表", "身份证号码", "出生日期", "陈静", "1990-05-17", "本人签字"})
            QVERIFY2(page.contains(QString::fromUtf8(expected)), expected);
        QVERIFY(pdfText(m_pdf, 2).contains(QStringLiteral("刘洋")));

        // The person screen hands over its own statement with the join.
        QFile::remove(m_pdf);
        PrintPersonCardDetail(
            1, QStringLiteral("RsCardOther"), QStringLiteral("艺术人生"),
            QStringLiteral("Select a.*,b.fRsDetail1,b.fRsDetail2,b.fRsDetail3,b.fRsDetail4 from "
                           "trsbasic a  Left Join tRsDetail b On a.fCode=b.fCode  Where a.fzt=1 "
                           "order by a.fcode"));
        page = pdfText(m_pdf, 1);
        for (const char* expected :
             {"艺术人生", "兴趣爱好", "艺术特长", "社会活动", "书法、围棋和长跑", "二胡演奏", "陈静"})
            QVERIFY2(page.contains(QString::fromUtf8(expected)), expected);
        // A bare condition gets the same join.
        QFile::remove(m_pdf);
        PrintPersonCardDetail(1, QStringLiteral("RsCardOther"), QStringLiteral("艺术人生"),
                              QStringLiteral("a.fCode='B001'"));
        QCOMPARE(pdfPages(m_pdf), 1);
        QVERIFY(pdfText(m_pdf).contains(QStringLiteral("二胡演奏")));
    }

    void nothingToPrintShowsMessage148() {
        addPerson(QStringLiteral("C001"), QStringLiteral("赵六"), 1);
        PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QStringLiteral("fZt=7"));
        QCOMPARE(m_prompts->messages(), QStringList{LoadText(148)});
        QVERIFY(!QFile::exists(m_pdf));
        m_prompts->clear();
        PrintReportFlow(1, QStringLiteral("RsReport"), QStringLiteral("RsReport_01"), QString());
        QCOMPARE(m_prompts->messages(), QStringList{LoadText(148)});
        QVERIFY(!QFile::exists(m_pdf));
    }

    void reportFlowPrintsThirtyNewestFirst() {
        const QDate start(2023, 11, 20);
        for (int i = 1; i <= 35; ++i)
            addReport(i, start.addDays(i * 3), QStringLiteral("报告第%1号").arg(i));
        PrintReportFlow(1, QStringLiteral("RsReport"), QStringLiteral("RsReport_01"), QString());
        QCOMPARE(pdfPages(m_pdf), 30);
        const QString first = pdfText(m_pdf, 1);
        for (const char* expected : {"报告审批单", "报告第35号", "报告内容", "关于第35季度招聘计划的说明。",
                                     "王小明", "李经理", "审核通过"})
            QVERIFY2(first.contains(QString::fromUtf8(expected)), expected);
        QVERIFY(first.contains(start.addDays(105).toString(Qt::ISODate)));
        QVERIFY(pdfText(m_pdf, 2).contains(QStringLiteral("报告第34号")));
        QVERIFY(pdfText(m_pdf, 2).contains(QStringLiteral("未审核")));
        QVERIFY(pdfText(m_pdf, 30).contains(QStringLiteral("报告第6号")));
        QVERIFY(!pdfText(m_pdf).contains(QStringLiteral("报告第5号")));
    }

    void photosLeaveInChunksRemainderFirst() {
        QCOMPARE(photoChunks(102400), (QVector<qint64>{0, 102400}));
        QCOMPARE(photoChunks(250000), (QVector<qint64>{45200, 102400, 102400}));
        QCOMPARE(photoChunks(1), (QVector<qint64>{1}));

        QByteArray exact(102400, '\0');
        for (int i = 0; i < exact.size(); ++i)
            exact[i] = char(i * 7 % 251);
        addPerson(QStringLiteral("D001"), QStringLiteral("孙七"), 1, exact);
        addPerson(QStringLiteral("D002"), QStringLiteral("周八"), 1);
        const QString file = m_dir.filePath(QStringLiteral("chunk.bin"));
        {
            Recordset rs(conn(), QStringLiteral("select fphoto from tRsBasic where fCode='D001'"));
            QCOMPARE(SaveChunksToFile(rs, file), -1);
        }
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), exact);
        f.close();
        Recordset none(conn(), QStringLiteral("select fphoto from tRsBasic where fCode='D002'"));
        QCOMPARE(SaveChunksToFile(none, file), 0);
        QVERIFY(QFile::exists(file)); // an empty field leaves the file alone

        // ExportPhotos: PowerPath with its final slash, the box emptied first, then loaded.
        G().PowerPath = m_dir.path() + QLatin1Char('/');
        QStringList box;
        setPhotoBox([&](const QString& name) { box << name; });
        G().CurPersonCode = QStringLiteral("D001");
        ExportPhotos();
        const QString work = m_dir.path() + QStringLiteral("/tmpPhoto");
        QCOMPARE(box, (QStringList{QString(), work}));
        QCOMPARE(QFileInfo(work).size(), qint64(102400));
        box.clear();
        G().CurPersonCode = QStringLiteral("D002");
        ExportPhotos();
        QCOMPARE(box, QStringList{QString()});
        setPhotoBox({});
    }

    void gridPrintsAsPagedList() {
        PrintGrid({}, nullptr, QStringLiteral("员工名单"), QString());
        QVERIFY(!QFile::exists(m_pdf));

        ZqGrid grid;
        grid.setMaxCols(4);
        grid.setMaxRows(130);
        const QStringList captions = {QStringLiteral("员工编号"), QStringLiteral("姓名"),
                                      QStringLiteral("内部备注"), QStringLiteral("基本工资")};
        for (int c = 1; c <= 4; ++c)
            grid.setHeaderText(c, captions[c - 1]);
        grid.setColWidth(1, 8);
        grid.setColWidth(2, 10);
        grid.setColHidden(3, true);
        grid.setColType(4, ZqGrid::CellDecimal, 2);
        for (int r = 1; r <= 120; ++r) {
            grid.setText(r, 1, QStringLiteral("E%1").arg(r, 4, 10, QLatin1Char('0')));
            grid.setText(r, 2, QStringLiteral("职员%1号").arg(r));
            grid.setText(r, 3, QStringLiteral("不打印"));
            grid.setText(r, 4, QString::number(3000 + r));
        }
        PrintGrid({QStringLiteral("状态"), QStringLiteral("在职"), QStringLiteral("部门编号"), QString()},
                  &grid, QStringLiteral("员工名单"), QStringLiteral("本名单仅供内部使用"));
        const int pages = pdfPages(m_pdf);
        QVERIFY(pages >= 3);
        for (int p = 1; p <= pages; ++p) {
            const QString page = pdfText(m_pdf, p);
            for (const QString& c : {captions[0], captions[1], captions[3]})
                QVERIFY2(page.contains(c), qPrintable(QStringLiteral("page %1 lacks %2").arg(p).arg(c)));
            QVERIFY(page.contains(QStringLiteral("第%1页共%2页").arg(p).arg(pages)));
            QVERIFY(!page.contains(QStringLiteral("不打印")));
        }
        const QString first = pdfText(m_pdf, 1);
        for (const char* expected : {"员工名单", "华东精密机械有限公司", "状态：在职", "本名单仅供内部使用",
                                     "E0001", "职员1号", "3001.00"})
            QVERIFY2(first.contains(QString::fromUtf8(expected)), expected);
        QVERIFY(!first.contains(QStringLiteral("部门编号"))); // an item without a value
        QVERIFY(pdfText(m_pdf, pages).contains(QStringLiteral("职员120号")));
        // Every row once, none lost at a page break.
        const QString all = pdfText(m_pdf);
        for (int r = 1; r <= 120; ++r)
            QCOMPARE(all.count(QStringLiteral("职员%1号").arg(r)), 1);
        QVERIFY(!pdfLandscape(m_pdf));

        // Without the list heading the items go, the title stays.
        QFile::remove(m_pdf);
        PrintGrid({QStringLiteral("状态"), QStringLiteral("在职")}, &grid, QStringLiteral("员工数据统计表"),
                  QString(), false);
        QVERIFY(pdfText(m_pdf, 1).contains(QStringLiteral("员工数据统计表")));
        QVERIFY(!pdfText(m_pdf, 1).contains(QStringLiteral("状态：在职")));
    }

    void wideListsTurnThePaper() {
        TableData wide;
        for (int c = 0; c < 16; ++c)
            wide.columns << TableColumn{QStringLiteral("列%1").arg(c), 14};
        wide.rows << TableRow{QStringList(16, QStringLiteral("值")), 0};
        const TableDocument doc(wide, {QStringLiteral("宽表"), {}, {}});
        QVERIFY(doc.landscape());
        double sum = 0;
        for (double w : doc.columnWidths())
            sum += w;
        QVERIFY(qAbs(sum - 267) < 0.01);
        QVERIFY(writePdf(doc, m_pdf));
        QVERIFY(pdfLandscape(m_pdf));

        TableData narrow;
        narrow.columns << TableColumn{QStringLiteral("姓名"), 8} << TableColumn{QStringLiteral("部门"), 24};
        const TableDocument upright(narrow, {QStringLiteral("窄表"), {}, {}});
        QVERIFY(!upright.landscape());
        // Widths keep their proportions across the page.
        QVERIFY(qAbs(upright.columnWidths()[1] / upright.columnWidths()[0] - 2.6) < 0.4);
    }

    // A list of many columns: each 18-digit identity card stays whole on one line, inside its column,
    // the room it needs taken from the columns that can spare it.
    void identityCardsStayOnOneLine() {
        TableData list;
        list.columns << TableColumn{QStringLiteral("工号"), 6} << TableColumn{QStringLiteral("姓名"), 8}
                     << TableColumn{QStringLiteral("身份证号"), 10}
                     << TableColumn{QStringLiteral("现住址"), 30}
                     << TableColumn{QStringLiteral("现任职务"), 14} << TableColumn{QStringLiteral("部门"), 14}
                     << TableColumn{QStringLiteral("电话"), 12} << TableColumn{QStringLiteral("备注"), 20}
                     << TableColumn{QStringLiteral("籍贯"), 12} << TableColumn{QStringLiteral("学历"), 8}
                     << TableColumn{QStringLiteral("专业"), 14}
                     << TableColumn{QStringLiteral("毕业学校"), 16};
        QStringList cards;
        for (int r = 0; r < 30; ++r) {
            cards << QStringLiteral("3101011990030%1").arg(r + 1000, 5, 10, QLatin1Char('0')).left(17) +
                         QLatin1Char(r % 2 ? 'X' : '7');
            list.rows << TableRow{{QStringLiteral("A%1").arg(r), QStringLiteral("欧阳晓明"), cards.last(),
                                   QStringLiteral("上海市浦东新区世纪大道一百号二十三楼"),
                                   QStringLiteral("副经理"), QStringLiteral("人力资源部"),
                                   QStringLiteral("13912345678"), QString(), QStringLiteral("江苏南京"),
                                   QStringLiteral("本科"), QStringLiteral("会计"),
                                   QStringLiteral("上海财经大学")},
                                  0};
        }
        const TableDocument doc(list, {QStringLiteral("员工名单"), {}, {}});
        QVERIFY(writePdf(doc, m_pdf));
        double left = 15;
        for (int c = 0; c < 2; ++c)
            left += doc.columnWidths()[c];
        const double right = left + doc.columnWidths()[2];
        int found = 0;
        for (int p = 1; p <= doc.pageCount(); ++p)
            for (const PdfWord& w : pdfWords(m_pdf, p)) {
                if (!cards.contains(w.text)) continue;
                ++found;
                QVERIFY2(w.mm.left() >= left - 0.1 && w.mm.right() <= right + 0.1,
                         qPrintable(QStringLiteral("%1 at %2-%3, column %4-%5")
                                        .arg(w.text)
                                        .arg(w.mm.left())
                                        .arg(w.mm.right())
                                        .arg(left)
                                        .arg(right)));
            }
        QCOMPARE(found, cards.size());
    }

    void treePrintsAsOutline() {
        QTreeWidget tree;
        auto* root = new QTreeWidgetItem(&tree, {QStringLiteral("华东精密机械有限公司")});
        auto* dept = new QTreeWidgetItem(root, {QStringLiteral("01\t生产部\t(限20人,共12人)")});
        new QTreeWidgetItem(dept, {QStringLiteral("0101\t装配车间")});
        new QTreeWidgetItem(root, {QStringLiteral("02\t财务部")});
        PrintTreeView(nullptr, QStringLiteral("部门列表打印"));
        QVERIFY(!QFile::exists(m_pdf));
        PrintTreeView(&tree, QStringLiteral("部门列表打印"));
        const QString text = pdfText(m_pdf);
        QVERIFY(text.contains(QStringLiteral("部门列表打印")));
        const int a = text.indexOf(QStringLiteral("生产部")), b = text.indexOf(QStringLiteral("装配车间")),
                  c = text.indexOf(QStringLiteral("财务部"));
        QVERIFY(a > 0 && a < b && b < c);
        QVERIFY(text.contains(QStringLiteral("(限20人,共12人)")));
    }

    void cancelledJobPrintsNothing() {
        for (int i = 1; i <= 30; ++i)
            addPerson(QStringLiteral("F%1").arg(i, 3, 10, QLatin1Char('0')), QStringLiteral("员工%1").arg(i),
                      1);
        auto progress = std::make_shared<CancelAtOnce>();
        installPrintProgress(progress);
        PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QStringLiteral("fZt=1"));
        QCOMPARE(progress->begun, 30);
        QVERIFY(!QFile::exists(m_pdf));
        // The file is written beside its name and renamed when whole: an older one under the name
        // stays as it was, and nothing half-written is left in the folder.
        QFile older(m_pdf);
        QVERIFY(older.open(QIODevice::WriteOnly));
        older.write("older");
        older.close();
        PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QStringLiteral("fZt=1"));
        QVERIFY(older.open(QIODevice::ReadOnly));
        QCOMPARE(older.readAll(), QByteArray("older"));
        QCOMPARE(QDir(m_dir.path()).entryList({QStringLiteral("out.pdf*")}, QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("out.pdf")});
        installPrintProgress(nullptr);
    }

    void previewPagesAndSaves() {
        for (int i = 1; i <= 20; ++i)
            addPerson(QStringLiteral("G%1").arg(i, 3, 10, QLatin1Char('0')), QStringLiteral("预览%1").arg(i),
                      1);
        PrintOutput::setPdfPath(QString());
        const QString saved = m_dir.filePath(QStringLiteral("saved"));
        m_prompts->answerFile(saved);
        QStringList seen;
        setModalRunner([&](QDialog& d) {
            auto* label = d.findChild<QLabel*>(QStringLiteral("lblPage"));
            seen << label->text();
            d.findChild<QPushButton*>(QStringLiteral("cmdNext"))->click();
            d.findChild<QPushButton*>(QStringLiteral("cmdLast"))->click();
            seen << label->text();
            auto* preview = qobject_cast<PreviewDialog*>(&d);
            preview->setZoom(1.5);
            seen << QString::number(d.findChild<QLabel*>(QStringLiteral("picPage"))->pixmap().width() > 1000);
            d.findChild<QPushButton*>(QStringLiteral("cmdSave"))->click();
            return 0;
        });
        PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QString());
        setModalRunner({});
        QCOMPARE(seen, (QStringList{QStringLiteral("第 1 页 共 3 页"), QStringLiteral("第 3 页 共 3 页"),
                                    QStringLiteral("1")}));
        QCOMPARE(pdfPages(saved + QStringLiteral(".pdf")), 3);
        QVERIFY(pdfText(saved + QStringLiteral(".pdf"), 3).contains(QStringLiteral("预览20")));
    }

    void captionsFollowTheLanguage() {
        G().Language = 1;
        G().CompanyItems = {textOf(9, 1) + textOf(160, 1), QStringLiteral("華東精密機械有限公司")};
        addPerson(QStringLiteral("K001"), QStringLiteral("鄭十"), 1);
        PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QString());
        const QString text = pdfText(m_pdf);
        QVERIFY(text.contains(QStringLiteral("員工編號：")));
        QVERIFY(text.contains(QStringLiteral("華東精密機械有限公司")));
        G().Language = 0;
    }

    void storedLayoutsCanBeChanged() {
        // The office's own layout replaces the default under the same keys.
        exec(QStringLiteral(
                 "update zq_PrintTemplate set fLayout=? where fTemplate='RsCard' and fSheet='RsCard_01'"),
             {QStringLiteral(R"({"title":"简卡","card":{"width":80,"height":20,"columns":2,"rows":10},
                 "items":[{"kind":"text","rect":[0,0,80,8],"text":"{fName} / {fSex}"},
                          {"kind":"field","rect":[0,8,80,8],"field":"fBirthDay","format":"date"}]})")});
        addPerson(QStringLiteral("H001"), QStringLiteral("吴九"), 1);
        exec(QStringLiteral("update tRsBasic set fBirthDay='07/04/1985' where fCode='H001'"), {});
        PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"), QString());
        const QString text = pdfText(m_pdf);
        QVERIFY(text.contains(QStringLiteral("吴九/女")));
        QVERIFY(text.contains(QStringLiteral("1985-07-04")));
        // A key the store does not hold fails the job.
        QVERIFY_THROWS_EXCEPTION(
            DbError, PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("无此版式"), QString()));
    }
};

ZQ_DB_TEST_MAIN(TestPrint)
#include "test_print.moc"
