// Every landed grid, filled with a demo company, shows each cell and caption whole: nothing is cut
// short with an ellipsis at the widths the field dictionary gives.
#include "Controls.h"
#include "TestDb.h"

#include "admin/Demo.h"
#include "assets/frmRs_Goods.h"
#include "assets/frmRs_House.h"
#include "assets/frmRs_Identify.h"
#include "documents/frmWd_DeptDict.h"
#include "documents/frmWd_dict.h"
#include "documents/frmWd_Filer.h"
#include "office/frmBg_Meeting.h"
#include "office/frmBg_News.h"
#include "office/frmBg_Report.h"
#include "organisation/frmRs_Dept.h"
#include "personnel/frmRs_Person.h"
#include "personnel/HomePage.h"
#include "services/ui/Grid.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Commands.h"
#include "shell/ui/LogViewerDialog.h"
#include "shell/ui/UserAdminDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStyle>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

using namespace zq;
using test::child;

namespace {

// Texts the view would cut: each cell and caption of the shown columns wider than its column less
// the margins the style keeps on both sides of an item's text.
QStringList cutTexts(QTableView* view, int maxRows = 400) {
    QStringList cut;
    QAbstractItemModel* m = view->model();
    const int cellMargin = 2 * (view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, view) + 1);
    QHeaderView* header = view->horizontalHeader();
    const int headMargin = 2 * view->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    for (int c = 0; c < m->columnCount(); ++c) {
        if (view->isColumnHidden(c)) continue;
        const int width = view->columnWidth(c);
        const QString caption = m->headerData(c, Qt::Horizontal).toString();
        if (header->isVisible() && header->fontMetrics().horizontalAdvance(caption) + headMargin > width)
            cut << QStringLiteral("caption %1 '%2' in %3px").arg(c).arg(caption).arg(width);
        for (int r = 0; r < std::min(m->rowCount(), maxRows); ++r) {
            const QModelIndex i = m->index(r, c);
            const QString text = i.data().toString();
            const QVariant f = i.data(Qt::FontRole);
            const QFontMetrics fm(f.isValid() ? f.value<QFont>() : view->font());
            if (fm.horizontalAdvance(text) + cellMargin > width)
                cut << QStringLiteral("row %1 col %2 '%3' in %4px").arg(r).arg(c).arg(text).arg(width);
        }
    }
    return cut;
}

// Names the first few cut texts when there are any.
#define expectWhole(cut)                                                                                     \
    do {                                                                                                     \
        const QStringList c_ = (cut);                                                                        \
        QVERIFY2(c_.isEmpty(), qPrintable(QString::number(c_.size()) + QStringLiteral(" cut: ") +            \
                                          c_.mid(0, 8).join(QStringLiteral("; "))));                         \
    } while (false)

QTableView* viewOf(QWidget* w) {
    auto* v = w->findChild<QTableView*>();
    if (!v) qFatal("no table in %s", qPrintable(w->objectName()));
    return v;
}
} // namespace

class TestColumnFit : public QObject {
    Q_OBJECT

private slots:
    void init() {
        test::freshDatabase();
        scriptPrompts();
        test::actAsSupervisor();
        G().CompName = QStringLiteral("演示公司");
        demo::Options o;
        o.persons = 300;
        o.seed = 7;
        demo::fill(conn(), o);
        demo::addDemoUsers(conn());
    }

    void unitsHoldDatesPhonesAndNames() {
        ZqGrid grid;
        grid.setMaxCols(4);
        grid.setMaxRows(1);
        grid.setColWidth(1, 10);
        grid.setColWidth(2, 12);
        grid.setColWidth(3, 8);
        grid.setColWidth(4, 6);
        grid.setText(1, 1, QStringLiteral("2002-12-28"));
        grid.setText(1, 2, QStringLiteral("13908765432"));
        grid.setText(1, 3, QStringLiteral("欧阳明"));
        grid.setText(1, 4, QStringLiteral("维吾尔"));
        grid.show();
        expectWhole(cutTexts(viewOf(&grid)));
    }

    void registerShowsEveryCellWhole() {
        for (int state : {1, 2}) {
            frmRs_Person w;
            w.setRsState(state);
            w.resize(1200, 800);
            w.show();
            auto* grid = child<ZqGrid>(w, QStringLiteral("Grid1"));
            QVERIFY(grid->maxRows() > 0);
            test::saveShot(w, QStringLiteral("register%1").arg(state));
            expectWhole(cutTexts(viewOf(grid)));
        }
    }

    void departmentListShowsEveryCellWhole() {
        frmRs_Dept w;
        w.resize(1200, 800);
        w.show();
        child<QCheckBox>(w, QStringLiteral("chkList"))->click();
        auto* grid = child<ZqGrid>(w, QStringLiteral("Grid1"));
        QVERIFY(grid->maxRows() > 0);
        test::saveShot(w, QStringLiteral("departments"));
        expectWhole(cutTexts(viewOf(grid)));
    }

    void assetScreensShowEveryCellWhole() {
        for (int state : {1, 2}) {
            frmRs_Goods w;
            w.setState(state);
            w.resize(1200, 800);
            w.show();
            scriptPrompts().answer(vbNo); // every loan, past the question
            w.cmdSeek_Click();
            QVERIFY(w.grid()->maxRows() > 0);
            test::saveShot(w, QStringLiteral("loans%1").arg(state));
            expectWhole(cutTexts(viewOf(w.grid())));
        }
        frmRs_Identify cards;
        cards.resize(1200, 800);
        cards.show();
        scriptPrompts().answer(vbNo);
        cards.cmdSeek_Click();
        QVERIFY(cards.grid()->maxRows() > 0);
        expectWhole(cutTexts(viewOf(cards.grid())));
        frmRs_House house;
        house.setScreenState(2);
        house.resize(1200, 800);
        house.show();
        auto* tree = child<QTreeWidget>(house, QStringLiteral("Tree1"));
        house.Tree1_NodeClick(tree->topLevelItem(0));
        QVERIFY(house.grid()->maxRows() > 0);
        test::saveShot(house, QStringLiteral("residents"));
        expectWhole(cutTexts(viewOf(house.grid())));
    }

    void homePageOnTheDemoCompany() {
        HomePage page;
        page.resize(700, 480);
        page.reload(QDate(2026, 11, 23));
        page.show();
        test::saveShot(page, QStringLiteral("home"));
        QVERIFY(page.summary().lines.size() >= 7);
        QCOMPARE(QString::number(page.summary().lines.first().count),
                 test::one("select count(*) from tRsBasic where fzt=1"));
    }

    void recordScreensShowEveryCellWhole() {
        // The person with the most family rows, who has some of everything.
        G().CurPersonCode =
            test::one("select fCode from tRsFamily group by fCode order by count(*) desc, fCode");
        G().CurPersonName =
            test::one(QStringLiteral("select fName from tRsBasic where fCode='%1'").arg(G().CurPersonCode));
        G().PersonEditMode = 2;
        QStringList cut;
        for (const char* name :
             {"frmRs_PersonFamily", "frmRs_PersonResume", "frmRs_PersonTrain", "frmRs_PersonResult",
              "frmRs_PersonReward", "frmRs_PersonWork", "frmRs_PersonDetail"}) {
            setModalRunner([name, &cut](QDialog& d) {
                d.resize(900, 640);
                d.show();
                QCoreApplication::processEvents();
                test::saveShot(d, QLatin1String(name));
                for (ZqGrid* g : d.findChildren<ZqGrid*>())
                    if (g->isVisible())
                        for (const QString& c : cutTexts(viewOf(g)))
                            cut << QLatin1String(name) + QLatin1Char(' ') + c;
                return int(QDialog::Rejected);
            });
            QVERIFY(openForm(QLatin1String(name), nullptr) >= 0);
        }
        setModalRunner({});
        expectWhole(cut);
    }

    void officeScreensShowTheirLabelsWhole() {
        // The office screens have no grids; the meeting's label boxes are the texts they could cut.
        frmBg_Report report;
        report.show();
        QApplication::processEvents();
        test::saveShot(report, QStringLiteral("report"));
        frmBg_News board;
        board.show();
        QApplication::processEvents();
        test::saveShot(board, QStringLiteral("news"));
        frmBg_Meeting w;
        w.show();
        QApplication::processEvents();
        test::saveShot(w, QStringLiteral("meeting"));
        QVERIFY(!child<QLineEdit>(w, QStringLiteral("txtTitle"))->text().isEmpty());
        for (const char* name : {"txtFoot1", "txtFoot2"}) {
            auto* box = child<QLineEdit>(w, QLatin1String(name));
            QVERIFY2(box->fontMetrics().horizontalAdvance(box->text()) + 8 <= box->width(),
                     qPrintable(box->text()));
        }
    }

    void archiveScreensShowTheDemoPapers() {
        // Every paper of the demo archive opens without a complaint: its files and pictures exist
        // beside a file company, and a server company's papers hold their texts only.
        auto& prompts = scriptPrompts();
        frmWd_Filer filer;
        filer.show();
        auto* tree = child<QTreeWidget>(filer, QStringLiteral("Tree1"));
        int papers = 0;
        for (QTreeWidgetItemIterator it(tree); *it; ++it)
            if ((*it)->childCount() == 0 && (*it)->parent()) {
                filer.Tree1_NodeClick(*it);
                ++papers;
                if (child<QLabel>(filer, QStringLiteral("imgPath"))->isVisible() && papers > 1 &&
                    !QFile::exists(QString::fromUtf8(qgetenv("ZQRS_SHOT_DIR")) +
                                   QStringLiteral("/archive.png")))
                    test::saveShot(filer, QStringLiteral("archive"));
            }
        QVERIFY(papers > 10);
        QVERIFY2(prompts.messages().isEmpty(), qPrintable(prompts.messages().join(QLatin1Char('\n'))));
        QVERIFY(!child<QPlainTextEdit>(filer, QStringLiteral("Text1"))->toPlainText().isEmpty());
        frmWd_DeptDict byDept;
        byDept.show();
        QApplication::processEvents();
        test::saveShot(byDept, QStringLiteral("archive_by_department"));
        frmWd_dict dict;
        dict.show();
        QApplication::processEvents();
        test::saveShot(dict, QStringLiteral("dictionary"));
        QVERIFY(prompts.messages().isEmpty());
    }

    void adminGridsShowEveryCellWhole() {
        UserAdminDialog users(conn());
        users.show();
        for (QTableView* v : users.findChildren<QTableView*>())
            expectWhole(cutTexts(v));
        LogViewerDialog log(conn());
        log.show();
        log.seek();
        for (QTableView* v : log.findChildren<QTableView*>())
            expectWhole(cutTexts(v));
    }
};

ZQ_DB_TEST_MAIN(TestColumnFit)
#include "test_column_fit.moc"
