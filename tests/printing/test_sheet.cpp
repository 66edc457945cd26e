#include "PdfTools.h"
#include "TestDb.h"

#include "admin/Demo.h"
#include "printing/frmRs_PersonPnt.h"
#include "printing/PersonSheetData.h"
#include "printing/PrintOutput.h"
#include "printing/SheetDocument.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QSet>
#include <QTest>

using namespace zq;
using namespace zq::test;

namespace {

void addPerson(const QString& code, const QString& name, const QByteArray& photo = {}) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fSex,fBirthDay,fBmName,fXzz,fzt,fBmCode,fphoto) "
                        "values (?,?,?,?,?,?,1,'01',?)"),
         {code, name, QStringLiteral("男"), QStringLiteral("1985-03-09"), QStringLiteral("财务部"),
          QStringLiteral("上海市浦东新区世纪大道一百号"),
          photo.isEmpty() ? QVariant(QMetaType(QMetaType::QByteArray)) : QVariant(photo)});
}

// Eight study rows (types 1 to 8, entered backwards), ten results, a spouse, a family member.
void addRecords(const QString& code) {
    for (int t = 8; t >= 1; --t)
        exec(QStringLiteral("insert into tRsStudy (fCode,fYear,fXx,fZy,fType) values (?,?,?,?,?)"),
             {code, QStringLiteral("%1年").arg(1990 + t), QStringLiteral("第%1学校").arg(t),
              QStringLiteral("会计"), t});
    for (int i = 1; i <= 10; ++i)
        exec(QStringLiteral("insert into tRsResult (fCode,fYear,fyj) values (?,?,?)"),
             {code, QStringLiteral("20%1").arg(i, 2, 10, QLatin1Char('0')),
              QStringLiteral("业绩第%1项").arg(i)});
    exec(QStringLiteral("insert into tRsFamily (fCode,fCh,fName,fNy,fDw,fZz) values (?,?,?,?,?,?)"),
         {code, QStringLiteral("母亲"), QStringLiteral("周玉兰"), QStringLiteral("1960-01"),
          QStringLiteral("退休在家"), QStringLiteral("群众")});
    exec(QStringLiteral("insert into tRsMeed (fCode,fYear,fyy,fjc) values (?,?,?,?)"),
         {code, QStringLiteral("2021"), QStringLiteral("年度先进工作者"), QStringLiteral("嘉奖")});
    exec(QStringLiteral("update tRsBasic_P set fpName=?, fpDw=? where fCode=?"),
         {QStringLiteral("林慧"), QStringLiteral("市第一医院"), code});
    if (one(QStringLiteral("select count(*) from tRsBasic_P where fCode='%1'").arg(code)) ==
        QLatin1String("0"))
        exec(QStringLiteral("insert into tRsBasic_P (fCode,fpName,fpDw) values (?,?,?)"),
             {code, QStringLiteral("林慧"), QStringLiteral("市第一医院")});
}

} // namespace

class TestSheet : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_pdf;
    ScriptedPrompts* m_prompts = nullptr;

private slots:
    void init() {
        test::freshDatabase();
        actAsSupervisor();
        m_prompts = &scriptPrompts();
        m_pdf = m_dir.filePath(QStringLiteral("sheet.pdf"));
        QFile::remove(m_pdf);
        PrintOutput::setPdfPath(QString());
        installPrintProgress(nullptr);
        G().CompName = QStringLiteral("华东精密机械有限公司");
        G().CompanyItems.clear();
    }

    // The grid spends the usable width whatever the font measures, in eight growing boundaries.
    void gridFitsTheUsableWidth() {
        for (double w : {180.0, 200.0, 240.0}) {
            const SheetGrid g = SheetGrid::make(w, 200);
            for (int i = 0; i < 8; ++i)
                QVERIFY(g.c[i + 1] > g.c[i]);
            const double used = g.c[8] - g.c[0];
            QVERIFY2(qAbs(used - 10725) <= w, qPrintable(QString::number(used)));
        }
        QCOMPARE(SheetGrid::make(180, 200).gap, qRound((14459 / 28.0 - 200) * 0.8));
    }

    void sheetReadsBlocksWithinTheirLimits() {
        addPerson(QStringLiteral("P001"), QStringLiteral("王建华"));
        addRecords(QStringLiteral("P001"));
        const PersonSheet s = ReadPersonSheet(QStringLiteral("P001"));
        QCOMPARE(s.study.size(), 6);
        QCOMPARE(s.study.first().value(1), QStringLiteral("第1学校")); // by ftype, not as entered
        QCOMPARE(s.study.last().value(1), QStringLiteral("第6学校"));
        QCOMPARE(s.results.size(), 9);
        QCOMPARE(s.family.size(), 1);
        QCOMPARE(s.spouse.value(QStringLiteral("fpname")), QStringLiteral("林慧"));
        QCOMPARE(ReadPersonSheet(QString()).basic.size(), 0);
        QCOMPARE(SheetCodes(QStringLiteral("fName like '王%'")), QStringList{QStringLiteral("P001")});
    }

    // Both sides in the PDF as real text: the head, the blocks up to their limits, the captions the
    // dictionary renames, the birthday label that never is, and the photo once.
    void bothSidesPrintAsText() {
        addPerson(QStringLiteral("P001"), QStringLiteral("王建华"), demo::portraitJpeg(1));
        addRecords(QStringLiteral("P001"));
        exec(QStringLiteral("update RptListDetail set FieldName_0='员工姓名' where ftable='trsbasic' and "
                            "FieldName='fname'"));
        exec(QStringLiteral("update RptListDetail set FieldName_0='诞辰' where ftable='trsbasic' and "
                            "FieldName='fbirthday'"));
        QVERIFY(writePdf(SheetDocument({QStringLiteral("P001")}), m_pdf));
        QCOMPARE(pdfPages(m_pdf), 2);
        const QString front = pdfText(m_pdf, 1);
        for (const char* expected : {"华东精密机械有限公司", "P001", "员工姓名", "王建华", "出生日期",
                                     "1985-03-09", "起止年月", "第1学校", "第6学校", "所从事工作", "财务部"})
            QVERIFY2(front.contains(QString::fromUtf8(expected)), expected);
        QVERIFY(!front.contains(QStringLiteral("第7学校")));
        QVERIFY(!front.contains(QStringLiteral("诞辰")));
        const QString back = pdfText(m_pdf, 2);
        for (const char* expected : {"工作单位、职务或住址", "周玉兰", "退休在家", "林慧", "市第一医院",
                                     "业绩第1项", "业绩第9项", "奖励或处罚", "年度先进工作者"})
            QVERIFY2(back.contains(QString::fromUtf8(expected)), expected);
        QVERIFY(!back.contains(QStringLiteral("业绩第10项")));
        QCOMPARE(pdfImages(m_pdf), 1);
    }

    // A batch: code order, two pages a person, each photo once, a person without one has none.
    void batchPrintsEveryPersonInCodeOrder() {
        addPerson(QStringLiteral("B002"), QStringLiteral("欧阳建国"), demo::portraitJpeg(2));
        addPerson(QStringLiteral("B001"), QStringLiteral("张晓梅"), demo::portraitJpeg(3));
        addPerson(QStringLiteral("B003"), QStringLiteral("无照片"));
        QVERIFY(writePdf(SheetDocument(SheetCodes(QString())), m_pdf));
        QCOMPARE(pdfPages(m_pdf), 6);
        QVERIFY(pdfText(m_pdf, 1).contains(QStringLiteral("张晓梅")));
        QVERIFY(pdfText(m_pdf, 3).contains(QStringLiteral("欧阳建国")));
        QVERIFY(pdfText(m_pdf, 5).contains(QStringLiteral("无照片")));
        QCOMPARE(pdfImages(m_pdf), 2);
        // As pictures: the photo's cell (top right of the head block) is painted for the first person
        // and left white for the one without a photo.
        const auto photoInk = [&](int page) {
            const QString prefix = m_dir.filePath(QStringLiteral("pic%1").arg(page));
            run(QStringLiteral("pdftoppm"),
                {QStringLiteral("-r"), QStringLiteral("30"), QStringLiteral("-f"), QString::number(page),
                 QStringLiteral("-l"), QString::number(page), QStringLiteral("-singlefile"),
                 QStringLiteral("-png"), m_pdf, prefix});
            const QImage img(prefix + QStringLiteral(".png"));
            int ink = 0;
            for (int y = img.height() * 35 / 297; y < img.height() * 58 / 297; ++y)
                for (int x = img.width() * 168 / 210; x < img.width() * 188 / 210; ++x)
                    ink += qGray(img.pixel(x, y)) < 200;
            return ink;
        };
        const int with = photoInk(1), without = photoInk(5);
        QVERIFY2(with > 30 && without == 0, qPrintable(QStringLiteral("%1 %2").arg(with).arg(without)));
    }

    // Text wider than its cell: a result keeps its one line and is told when cut; a wrapped cell
    // shrinks into it.
    void longTextsStayOrShrink() {
        const QString longText =
            QStringLiteral("这是一段非常长的业绩说明文字需要在格子里缩小字号才能放得下的内容");
        addPerson(QStringLiteral("L001"), QStringLiteral("李长文"));
        exec(QStringLiteral("insert into tRsResult (fCode,fYear,fyj) values (?,?,?)"),
             {QStringLiteral("L001"), QStringLiteral("2020"), longText + longText + longText});
        const SheetDocument back({QStringLiteral("L001")}, SheetSides::Back);
        QVERIFY(writePdf(back, m_pdf));
        QVERIFY(pdfText(m_pdf, 1).contains(longText.left(10)));
        QCOMPARE(back.misfits().size(), 1);
        QVERIFY2(back.misfits().first().contains(QStringLiteral("李长文")), qPrintable(back.misfits().first()));
        // Its words stand on one line.
        QSet<int> lines;
        for (const PdfWord& w : pdfWords(m_pdf, 1))
            if (w.text.size() > 4 && (longText + longText + longText).contains(w.text)) lines.insert(qRound(w.mm.top()));
        QCOMPARE(lines.size(), 1);

        // A caption the dictionary made longer than its cell wraps and shrinks, and comes out whole.
        const QString caption = QStringLiteral("现在居住的详细地址包括省市区县街道及门牌号码");
        exec(QStringLiteral(
                 "update RptListDetail set FieldName_0='%1' where ftable='trsbasic' and FieldName='fxzz'")
                 .arg(caption));
        QVERIFY(writePdf(SheetDocument({QStringLiteral("L001")}, SheetSides::Front), m_pdf));
        const QString front = pdfText(m_pdf, 1);
        QVERIFY2(front.contains(caption.left(6)) && front.contains(caption.right(6)), qPrintable(front));

        // The wrapped cell on its own page: every character comes out, over more than one line.
        struct One : PrintDocument {
            QString text;
            QString title() const override { return QStringLiteral("t"); }
            QSizeF paperSize() const override { return {210, 297}; }
            int pageCount() const override { return 1; }
            void paintPage(Canvas& c, int) const override {
                double l = 600, r = 3000;
                PrintTextCell(c, text, l, r, 2000, 200, 250, -1);
            }
        } cell;
        cell.text = longText;
        QVERIFY(writePdf(cell, m_pdf));
        const QString out = run(QStringLiteral("pdftotext"), {m_pdf, QStringLiteral("-")});
        QString joined = out;
        joined.remove(QLatin1Char('\n')).remove(QLatin1Char(' ')).remove(QLatin1Char('\f'));
        QCOMPARE(joined, longText);
        QVERIFY(out.trimmed().count(QLatin1Char('\n')) >= 1);
    }

    // On paper every value lies within its cell's ruled edges: the 18-digit identity card whole on
    // one line, long posts, permit numbers and histories smaller or broken into lines. A value no
    // size can hold is cut at the cell's foot and told: whose, which side and which field.
    void valuesFitTheirCells() {
        const QString card = QStringLiteral("110101199003071234");
        addPerson(QStringLiteral("F001"), QStringLiteral("欧阳晓明"));
        exec(QStringLiteral(
                 "update tRsBasic set fSfz=?, fRz=?, staycode=?, fzy=?, fUnit=? where fCode='F001'"),
             {card, QStringLiteral("人力资源部副经理兼培训主管"), QStringLiteral("沪暂字第20231234567号"),
              QStringLiteral("计算机科学与技术"), QStringLiteral("华东精密机械有限公司苏州分公司")});
        exec(QStringLiteral("insert into tRsWork (fCode,fYear,fBm,fRz,fWk,fType) values (?,?,?,?,?,2)"),
             {QStringLiteral("F001"), QStringLiteral("2010.09-2015.06"),
              QStringLiteral("华东精密机械有限公司技术部"), QStringLiteral("技术部副主任兼质量工程师"),
              QStringLiteral("产品设计与工艺改进")});
        exec(QStringLiteral("insert into tRsStudy (fCode,fYear,fXx,fZy,fType) values (?,?,?,?,1)"),
             {QStringLiteral("F001"), QStringLiteral("2006-2010"), QStringLiteral("上海交通大学"),
              QStringLiteral("机械设计制造及其自动化专业（卓越工程师计划）")});
        const SheetDocument front({QStringLiteral("F001")}, SheetSides::Front);
        QVERIFY(writePdf(front, m_pdf));
        QVERIFY2(front.misfits().isEmpty(), qPrintable(front.misfits().join(QLatin1Char('\n'))));

        const QVector<PdfWord> words = pdfWords(m_pdf, 1);
        int cardWords = 0;
        for (const PdfWord& w : words)
            cardWords += w.text == card;
        QCOMPARE(cardWords, 1); // whole, on one line
        int checked = 0;
        for (const SheetCell& cell : front.cells()) {
            QString shown;
            const QRectF edges = cell.mm.adjusted(-0.2, -0.2, 0.2, 0.2);
            for (const PdfWord& w : words) {
                if (!cell.mm.contains(w.mm.center())) continue;
                QVERIFY2(edges.contains(w.mm),
                         qPrintable(QStringLiteral("%1 \"%2\" leaves its cell").arg(cell.caption, w.text)));
                shown += w.text;
            }
            QCOMPARE(shown, QString(cell.text).remove(QLatin1Char(' ')));
            ++checked;
        }
        QVERIFY2(checked >= 15, qPrintable(QString::number(checked)));

        // Sixty characters in the narrow cell of the body type: cut, and told on the screen and after
        // printing.
        exec(QStringLiteral("update tRsBasic set bodytype=? where fCode='F001'"),
             {QStringLiteral("偏瘦").repeated(30)});
        const SheetDocument told({QStringLiteral("F001")}, SheetSides::Front);
        QVERIFY(writePdf(told, m_pdf));
        QCOMPARE(told.misfits().size(), 1);
        QVERIFY(told.misfits().first().contains(QStringLiteral("欧阳晓明")));
        G().CurPersonCode = QStringLiteral("F001");
        frmRs_PersonPnt screen;
        screen.load();
        QCOMPARE(screen.status(), told.misfits().first());
        PrintOutput::setPdfPath(m_pdf);
        m_prompts->clear();
        QVERIFY(screen.cmdPrint_Click());
        QVERIFY(m_prompts->messages().join(QString()).contains(told.misfits().first()));
    }

    // The blank sheet: frame and labels, no one's values, the branch left open.
    void blankSheetHasLabelsOnly() {
        addPerson(QStringLiteral("P001"), QStringLiteral("王建华"));
        QVERIFY(writePdf(SheetDocument({}, SheetSides::Both, 1, true), m_pdf));
        QCOMPARE(pdfPages(m_pdf), 2);
        const QString front = pdfText(m_pdf, 1);
        QVERIFY(front.contains(QStringLiteral("姓名")));
        QVERIFY(front.contains(QStringLiteral("分公司:")));
        QVERIFY(!front.contains(QStringLiteral("王建华")));
        QCOMPARE(pdfImages(m_pdf), 0);
        // Looked at as a picture, the page is ruled: many dark pixels, none of them a photo.
        const QImage page = renderPage(SheetDocument({}, SheetSides::Front, 1, true), 0, 50);
        int dark = 0;
        for (int y = 0; y < page.height(); ++y)
            for (int x = 0; x < page.width(); ++x)
                dark += qGray(page.pixel(x, y)) < 128;
        QVERIFY2(dark > 3000, qPrintable(QString::number(dark)));
    }

    // The screen: "全部" previews the front, prints both sides as many times as asked, saves a PDF, and
    // says so when there is no printer.
    void screenPreviewsPrintsAndSaves() {
        addPerson(QStringLiteral("S001"), QStringLiteral("赵敏"), demo::portraitJpeg(4));
        G().CurPersonCode = QStringLiteral("S001");
        frmRs_PersonPnt screen;
        screen.load();
        QCOMPARE(screen.personCode(), QStringLiteral("S001"));
        // Dragging the page moves it by the distance dragged.
        auto* paper = screen.findChild<QLabel*>(QStringLiteral("picPaper"));
        QVERIFY(!paper->pixmap().isNull());
        const QPoint at = paper->pos();
        QTest::mousePress(paper, Qt::LeftButton, {}, QPoint(50, 50));
        QTest::mouseRelease(paper, Qt::LeftButton, {}, QPoint(20, 10));
        QCOMPARE(paper->pos(), at + QPoint(-30, -40));
        QVERIFY(screen.findChild<QRadioButton*>(QStringLiteral("optPaper1"))->isChecked());
        QCOMPARE(screen.PrintPage, 1);
        screen.findChild<QRadioButton*>(QStringLiteral("optPaper0"))->setChecked(true);
        screen.findChild<QLineEdit*>(QStringLiteral("TxtMany"))->setText(QStringLiteral("2"));
        PrintOutput::setPdfPath(m_pdf);
        QVERIFY(screen.cmdPrint_Click());
        QCOMPARE(pdfPages(m_pdf), 4);
        QCOMPARE(screen.PrintPage, 0);

        PrintOutput::setPdfPath(QString());
        const QString saved = m_dir.filePath(QStringLiteral("saved"));
        m_prompts->answerFile(saved);
        screen.findChild<QRadioButton*>(QStringLiteral("optPaper2"))->setChecked(true);
        QVERIFY(screen.cmdPdf_Click());
        QCOMPARE(pdfPages(saved + QStringLiteral(".pdf")), 1);
        QVERIFY(pdfText(saved + QStringLiteral(".pdf")).contains(QStringLiteral("工作单位、职务或住址")));

        // The blank form leaves the person out.
        screen.findChild<QCheckBox*>(QStringLiteral("ChkPai"))->setChecked(true);
        screen.findChild<QRadioButton*>(QStringLiteral("optPaper1"))->setChecked(true);
        m_prompts->answerFile(m_pdf);
        QVERIFY(screen.cmdPdf_Click());
        QVERIFY(!pdfText(m_pdf).contains(QStringLiteral("赵敏")));

        if (qEnvironmentVariableIsEmpty("PRINTER")) {
            m_prompts->clear();
            if (!screen.cmdPrint_Click())
                QVERIFY(m_prompts->messages().contains(
                    QStringLiteral("打印机出错,请检查打印机是否联结好或打印机自身故障!")));
        }
    }

    void browserMenuOpensTheSheet() { QVERIFY(hasForm(QStringLiteral("frmRs_PersonPnt"))); }
};

ZQ_DB_TEST_MAIN(TestSheet)
#include "test_sheet.moc"
