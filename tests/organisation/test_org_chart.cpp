#include "Controls.h"
#include "PdfTools.h"
#include "TestDb.h"

#include "organisation/OrgChart.h"
#include "organisation/OrgChartPrint.h"
#include "organisation/frmRs_OrgChart.h"
#include "printing/PrintOutput.h"
#include "shell/Globals.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QGraphicsView>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;
using test::exec;

namespace {

void dept(const QString& code, const QString& name, int limit = 0, int post = 0) {
    exec(QStringLiteral("insert into tRs_Bm (fCode,fName,fLimited,fYnxj) values ('%1','%2',%3,%4)")
             .arg(code, name)
             .arg(limit)
             .arg(post));
}

void person(const QString& code, const QString& dept, int state = 1) {
    exec(QStringLiteral("insert into tRsBasic (fCode,fName,fBmCode,fzt) values ('%1','某人','%2',%3)")
             .arg(code, dept)
             .arg(state));
}

// Every pair of laid-out boxes is apart.
bool apart(const OrgChart& c) {
    QVector<QRectF> boxes;
    for (const OrgNode& n : c.nodes())
        if (n.shown) boxes << n.box;
    for (int i = 0; i < boxes.size(); ++i)
        for (int j = i + 1; j < boxes.size(); ++j)
            if (boxes[i].intersects(boxes[j])) return false;
    return true;
}

int indexOf(const OrgChart& c, const QString& code) {
    for (int i = 0; i < c.nodes().size(); ++i)
        if (c.nodes()[i].code == code) return i;
    return -1;
}

} // namespace

class TestOrgChart : public QObject {
    Q_OBJECT

private slots:
    void init() {
        test::freshDatabase();
        test::actAsSupervisor();
        G().CompName = QStringLiteral("示范实业");
        G().UserDeptCode.clear();
        dept("01", "总经理办公室", 2);
        dept("0101", "秘书科");
        dept("0102", "接待科");
        dept("010201", "前台", 0, 1);
        dept("02", "生产部", 10);
        dept("0201", "一车间");
        dept("0202", "二车间");
        dept("03", "财务部");
        person("P1", "0101");
        person("P2", "0101");
        person("P3", "0102");
        person("P4", "0201");
        person("P5", "0201", 2); // left: not counted
    }

    void treeCountsAndLimits() {
        OrgChart c;
        c.load({}, false);
        QCOMPARE(c.nodes().size(), 8); // the company and seven departments; the post is left out
        QCOMPARE(c.nodes()[0].name, QStringLiteral("示范实业"));
        QCOMPARE(c.nodes()[0].count, qint64(4));
        const OrgNode& office = c.nodes()[indexOf(c, "01")];
        QCOMPARE(office.count, qint64(3)); // with its sections
        QCOMPARE(office.children.size(), 2);
        QCOMPARE(c.nodes()[indexOf(c, "0102")].parent, indexOf(c, "01"));
        QCOMPARE(c.nodes()[indexOf(c, "03")].parent, 0);
        c.load({}, true);
        QCOMPARE(c.nodes()[indexOf(c, "010201")].parent, indexOf(c, "0102"));
        QVERIFY(c.nodes()[indexOf(c, "010201")].post);
        QCOMPARE(c.departments(), 7);
    }

    void boxesNeverOverlap() {
        // A larger company too: 3 levels of 6 with two posts each.
        for (int a = 1; a <= 6; ++a)
            for (int b = 1; b <= 6; ++b) {
                const QString code = QStringLiteral("9%1%2").arg(a).arg(b);
                dept(code, QStringLiteral("分部%1%2").arg(a).arg(b));
                for (int p = 1; p <= 2; ++p)
                    dept(code + QString::number(p), QStringLiteral("岗位%1%2%3").arg(a).arg(b).arg(p), 0, 1);
            }
        for (int a = 1; a <= 6; ++a)
            dept(QStringLiteral("9%1").arg(a), QStringLiteral("分公司%1").arg(a));
        dept("9", "分公司");
        OrgChart c;
        c.load({}, true);
        for (auto dir : {OrgChart::Direction::TopDown, OrgChart::Direction::LeftRight}) {
            c.layout(dir);
            QVERIFY(apart(c));
            for (const OrgNode& n : c.nodes())
                QVERIFY(n.shown && c.bounds().contains(n.box));
        }
        // Folding hides a branch and gives the room back; unfolding brings it again.
        const int branch = indexOf(c, "91");
        const double wide = c.bounds().width();
        c.toggleFold(branch);
        QVERIFY(!c.nodes()[indexOf(c, "911")].shown);
        QVERIFY(c.nodes()[branch].shown);
        QVERIFY(apart(c));
        QVERIFY(c.bounds().width() < wide || c.bounds().height() < c.bounds().height() + 1);
        QCOMPARE(c.foldMarkAt(c.foldMark(branch).center()), branch);
        c.toggleFold(branch);
        QVERIFY(c.nodes()[indexOf(c, "911")].shown);
        c.foldBelow(1);
        QVERIFY(c.nodes()[indexOf(c, "9")].shown && !c.nodes()[indexOf(c, "91")].shown);
    }

    // The files hold every department: the PDF as text, the drawing as text too.
    void savedChartHoldsEveryName() {
        QTemporaryDir dir;
        OrgChart c;
        c.load({}, true);
        const QString pdf = dir.filePath("chart.pdf");
        QString error;
        QVERIFY2(SaveOrgChart(c, "组织机构图", pdf, &error), qPrintable(error));
        const QString text = test::pdfText(pdf);
        for (const OrgNode& n : c.nodes())
            QVERIFY2(text.contains(n.name), qPrintable(n.name));
        QVERIFY(text.contains("限10人,共1人"));
        QCOMPARE(test::pdfImages(pdf), 0); // drawn, not a picture
        // Its fonts travel with it (the column "emb" of every font says yes).
        const QStringList fonts = test::run("pdffonts", {pdf}).split('\n', Qt::SkipEmptyParts).mid(2);
        QVERIFY(!fonts.isEmpty());
        for (const QString& f : fonts)
            QVERIFY2(QRegularExpression("\\s+yes\\s+(yes|no)\\s+(yes|no)\\s+\\d+\\s+\\d+\\s*$").match(f).hasMatch(),
                     qPrintable(f));
        QVERIFY(SaveOrgChart(c, "组织机构图", dir.filePath("chart.svg"), &error));
        QFile svg(dir.filePath("chart.svg"));
        QVERIFY(svg.open(QIODevice::ReadOnly));
        QVERIFY(QString::fromUtf8(svg.readAll()).contains("接待科"));
        QVERIFY(SaveOrgChart(c, "组织机构图", dir.filePath("chart.png"), &error));
        QImage png(dir.filePath("chart.png"));
        QCOMPARE(png.size(), c.bounds().size().toSize());
        QVERIFY(!SaveOrgChart(c, "组织机构图", dir.filePath("chart.doc"), &error));
    }

    // Over the limit shows in red: 总经理办公室 has 3 persons for 2.
    void overTheLimitIsRed() {
        OrgChart c;
        c.load({}, false);
        QImage image(c.bounds().size().toSize(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter p(&image);
        p.translate(-c.bounds().topLeft());
        c.paint(p);
        p.end();
        const auto redIn = [&](const QRectF& box) {
            const QRect r = box.translated(-c.bounds().topLeft()).toRect();
            for (int y = r.top(); y <= r.bottom(); ++y)
                for (int x = r.left(); x <= r.right(); ++x) {
                    const QColor px = image.pixelColor(x, y);
                    if (px.red() > 180 && px.green() < 60 && px.blue() < 60) return true;
                }
            return false;
        };
        QVERIFY(redIn(c.nodes()[indexOf(c, "01")].box));
        QVERIFY(!redIn(c.nodes()[indexOf(c, "02")].box));
    }

    void printedTiledOverPages() {
        OrgChart c;
        c.load({}, true);
        OrgChartDocument one(c, "组织机构图");
        QCOMPARE(one.pageCount(), 1);
        OrgChartDocument tiled(c, "组织机构图", 3);
        QCOMPARE(tiled.columns(), 3);
        QVERIFY(tiled.pageCount() >= 3);
        QTemporaryDir dir;
        const QString pdf = dir.filePath("tiled.pdf");
        QVERIFY(writePdf(tiled, pdf));
        QCOMPARE(test::pdfPages(pdf), tiled.pageCount());
        QVERIFY(test::pdfText(pdf, 1).contains("第1行第1列"));
    }

    // The screen: a restricted user sees his own branch and never above it; a node's branch is one
    // double click away.
    void screenShowsTheUsersBranch() {
        G().UserName = QStringLiteral("clerk");
        G().UserDeptCode = QStringLiteral("02");
        frmRs_OrgChart s;
        s.show();
        QVERIFY(QTest::qWaitForWindowExposed(&s));
        QCOMPARE(s.chart().nodes()[0].code, QStringLiteral("02"));
        QCOMPARE(s.chart().nodes().size(), 3);
        s.showBranch({});
        QCOMPARE(s.chart().nodes()[0].code, QStringLiteral("02"));
        test::actAsSupervisor();
        s.showBranch({});
        QCOMPARE(s.chart().nodes().size(), 8);
        test::saveShot(s, "orgchart");
        auto* dir = test::child<QComboBox>(s, "cboDirection");
        dir->setCurrentIndex(1);
        emit dir->activated(1);
        QCOMPARE(s.chart().direction(), OrgChart::Direction::LeftRight);
        test::saveShot(s, "orgchart_leftright");
        // A double click on a box.
        const QPointF at = s.chart().nodes()[indexOf(s.chart(), "01")].box.center();
        QTest::mouseDClick(s.view()->viewport(), Qt::LeftButton, {}, s.view()->mapFromScene(at));
        QCOMPARE(s.chart().nodes()[0].code, QStringLiteral("01"));
        // Printing goes to the print engine (a PDF here).
        QTemporaryDir tmp;
        PrintOutput::setPdfPath(tmp.filePath("p.pdf"));
        QVERIFY(s.print());
        PrintOutput::setPdfPath({});
        QVERIFY(test::pdfText(tmp.filePath("p.pdf")).contains("秘书科"));
    }
};

ZQ_DB_TEST_MAIN(TestOrgChart)
#include "test_org_chart.moc"
