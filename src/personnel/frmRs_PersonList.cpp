#include "frmRs_PersonList.h"

#include "PersonListData.h"
#include "printing/Print.h"
#include "services/ui/BriefDialog.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/Grid.h"
#include "services/ui/GridColumns.h"
#include "services/ui/GridExport.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/NamedWidgets.h"
#include "shell/Connection.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"
#include "shell/ui/Fonts.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHorizontalBarSeries>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPdfWriter>
#include <QPieSeries>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QValueAxis>
#include <QVBoxLayout>

#include <algorithm>

namespace zq {

namespace {

// Beyond this many values a chart groups the smallest as "其他": a bar per person code says nothing.
constexpr int kChartValues = 24;

} // namespace

frmRs_PersonList::frmRs_PersonList(QWidget* parent)
    : QDialog(parent)
    , m_cboZT(new QComboBox(this))
    , m_combo1(new QComboBox(this))
    , m_combo2(new QComboBox(this))
    , m_txtFilter(new QLineEdit(this))
    , m_txtQty(new QLabel(this))
    , m_views(new QStackedWidget(this))
    , m_grid1(new ZqGrid(this))
    , m_countPage(new QWidget(this))
    , m_grid2(new ZqGrid(m_countPage))
    , m_chartField(new QComboBox(m_countPage))
    , m_pie(new QCheckBox(QStringLiteral("饼图"), m_countPage))
    , m_chartView(new QChartView(m_countPage))
    , m_gridTotals(new ZqGrid(m_countPage))
    , m_lblStatus(new QLabel(this))
    , m_picture2(new QFrame(this))
    , m_lstAll(new QListWidget(m_picture2))
    , m_lstSelect(new QListWidget(m_picture2)) {
    setObjectName(QStringLiteral("frmRs_PersonList"));
    setWindowTitle(QStringLiteral("人事统计查询"));
    EnableGridExport(m_grid1, QStringLiteral("员工名单"));
    EnableGridExport(m_grid2, QStringLiteral("员工数据统计表"));
    resize(1100, 720);
    m_cboZT->setObjectName(QStringLiteral("cboZT"));
    m_combo1->setObjectName(QStringLiteral("Combo1"));
    m_combo2->setObjectName(QStringLiteral("Combo2"));
    m_txtFilter->setObjectName(QStringLiteral("txtFilter"));
    m_txtFilter->installEventFilter(this);
    m_txtQty->setObjectName(QStringLiteral("txtQty"));
    m_grid1->setObjectName(QStringLiteral("Grid1"));
    m_grid1->setReadOnly(true);
    m_grid1->installEventFilter(this);
    m_grid2->setObjectName(QStringLiteral("Grid2"));
    m_grid2->setReadOnly(true);
    m_chartField->setObjectName(QStringLiteral("cboChartField"));
    m_pie->setObjectName(QStringLiteral("chkPie"));
    m_chartView->setObjectName(QStringLiteral("ChartView"));
    m_chartView->setRenderHint(QPainter::Antialiasing);
    m_gridTotals->setObjectName(QStringLiteral("GridTotals"));
    m_gridTotals->setReadOnly(true);
    m_gridTotals->setMaxCols(3);
    m_gridTotals->setHeaderText(1, QStringLiteral("项目"));
    m_gridTotals->setHeaderText(2, QStringLiteral("人数"));
    m_gridTotals->setHeaderText(3, QStringLiteral("占比"));
    m_gridTotals->setColWidth(1, 16);
    m_gridTotals->setColWidth(2, 7);
    m_gridTotals->setColWidth(3, 7);
    EnableGridExport(m_gridTotals, [this] { return m_chartField->currentText(); });
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_combo1->setMinimumWidth(160);
    m_combo2->setMinimumWidth(110);

    auto* top = new QHBoxLayout;
    top->addWidget(m_cboZT);
    auto* deptLabel = new QLabel(QStringLiteral("部门:"), this);
    deptLabel->setObjectName(QStringLiteral("Label1(0)"));
    top->addWidget(deptLabel);
    top->addWidget(m_combo1);
    top->addWidget(m_combo2);
    top->addWidget(m_txtFilter, 1);
    auto* buttons = new QHBoxLayout;
    const auto wire = [&](const char* name, const QString& caption, void (frmRs_PersonList::*handler)()) {
        QPushButton* b = NamedButton(this, name, caption);
        connect(b, &QPushButton::clicked, this,
                [this, handler] { guarded([this, handler] { (this->*handler)(); }); });
        return b;
    };
    top->addWidget(wire("CmdQuiry", QStringLiteral("模糊查询"), &frmRs_PersonList::CmdQuiry_Click));
    buttons->addWidget(wire("cmdSeek", QStringLiteral("综合条件查询"), &frmRs_PersonList::cmdSeek_Click));
    buttons->addWidget(
        wire("cmdCompile", QStringLiteral("数据汇总统计"), &frmRs_PersonList::cmdCompile_Click));
    buttons->addWidget(
        wire("CmdListSelect", QStringLiteral("列表选项设置"), &frmRs_PersonList::CmdListSelect_Click));
    buttons->addWidget(wire("cmdPrint", QStringLiteral("打印(&P)"), &frmRs_PersonList::cmdPrint_Click));
    buttons->addWidget(wire("cmdCardPnt", QStringLiteral("职工卡打印"), &frmRs_PersonList::cmdCardPnt_Click));
    buttons->addStretch();
    buttons->addWidget(new QLabel(QStringLiteral("人数:"), this));
    buttons->addWidget(m_txtQty);
    QPushButton* quit = NamedButton(this, "cmdQuit", QStringLiteral("退出>>"));
    buttons->addWidget(quit);
    connect(quit, &QPushButton::clicked, this, &QDialog::reject);

    // The counts, and the chart of one counted field beside them.
    auto* chartBar = new QHBoxLayout;
    chartBar->addWidget(new QLabel(QStringLiteral("图表:"), m_countPage));
    chartBar->addWidget(m_chartField);
    chartBar->addWidget(m_pie);
    QPushButton* save = NamedButton(m_countPage, "cmdSaveChart", QStringLiteral("保存图片"));
    chartBar->addWidget(save);
    chartBar->addStretch();
    // The charted field read down beside its chart: its values with totals, the chart scrolled
    // when its bars need more height than the window has.
    auto* chartScroll = new QScrollArea(m_countPage);
    chartScroll->setObjectName(QStringLiteral("ChartScroll"));
    chartScroll->setWidgetResizable(true);
    chartScroll->setFrameShape(QFrame::NoFrame);
    chartScroll->setWidget(m_chartView);
    auto* split = new QSplitter(Qt::Horizontal, m_countPage);
    split->addWidget(m_gridTotals);
    split->addWidget(chartScroll);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 3);
    split->setSizes({300, 760});
    auto* countLayout = new QVBoxLayout(m_countPage);
    countLayout->setContentsMargins(0, 0, 0, 0);
    countLayout->addWidget(m_grid2, 2);
    countLayout->addLayout(chartBar);
    countLayout->addWidget(split, 4);
    m_views->addWidget(m_grid1);
    m_views->addWidget(m_countPage);
    connect(m_chartField, &QComboBox::currentIndexChanged, this, &frmRs_PersonList::drawChart);
    connect(m_pie, &QCheckBox::toggled, this, &frmRs_PersonList::drawChart);
    connect(save, &QPushButton::clicked, this, [this] {
        // A new file is written: the save dialog, which asks before it replaces one.
        FileRequest r;
        r.mode = FileRequest::Save;
        r.title = QStringLiteral("保存图片");
        r.filter = QStringLiteral("PNG 图片|*.png|PDF 文件|*.pdf");
        r.flags = cdlOFNOverwritePrompt | cdlOFNPathMustExist | cdlOFNHideReadOnly;
        r.fileName = m_chartField->currentText() + QStringLiteral(".png");
        const QString file = prompts().file(r);
        if (!file.isEmpty() && !saveChart(file))
            ShowMsg(QStringLiteral("图片保存失败: %1").arg(file), vbExclamation, windowTitle());
    });

    // The choice of counted fields.
    m_picture2->setObjectName(QStringLiteral("Picture2"));
    m_picture2->setFrameShape(QFrame::StyledPanel);
    m_picture2->setAutoFillBackground(true);
    m_lstAll->setObjectName(QStringLiteral("lstAll"));
    m_lstSelect->setObjectName(QStringLiteral("lstSelect"));
    auto* panel = new QGridLayout(m_picture2);
    panel->addWidget(new QLabel(QStringLiteral("选择汇总项"), m_picture2), 0, 0, 1, 3);
    panel->addWidget(new QLabel(QStringLiteral("可选项:"), m_picture2), 1, 0);
    panel->addWidget(new QLabel(QStringLiteral("选入项:"), m_picture2), 1, 2);
    panel->addWidget(m_lstAll, 2, 0);
    panel->addWidget(m_lstSelect, 2, 2);
    auto* moves = new QVBoxLayout;
    const auto mover = [&](const char* name, const QString& caption, bool right, bool all) {
        QPushButton* b = NamedButton(m_picture2, name, caption);
        moves->addWidget(b);
        connect(b, &QPushButton::clicked, this, [this, right, all] { moveItems(right, all); });
    };
    mover("CmdRight", QStringLiteral(">"), true, false);
    mover("CmdAllRight", QStringLiteral(">>"), true, true);
    mover("CmdLeft", QStringLiteral("<"), false, false);
    mover("CmdAllLeft", QStringLiteral("<<"), false, true);
    panel->addLayout(moves, 2, 1);
    auto* panelButtons = new QHBoxLayout;
    panelButtons->addStretch();
    panelButtons->addWidget(
        wire("cmdCompileOK", QStringLiteral("确认(&O)"), &frmRs_PersonList::cmdCompileOK_Click));
    QPushButton* cancel = NamedButton(m_picture2, "cmdCompileCancel", QStringLiteral("取消>>"));
    panelButtons->addWidget(cancel);
    panel->addLayout(panelButtons, 3, 0, 1, 3);
    connect(cancel, &QPushButton::clicked, m_picture2, &QWidget::hide);
    connect(m_lstAll, &QListWidget::itemDoubleClicked, this, [this] { moveItems(true, false); });
    connect(m_lstSelect, &QListWidget::itemDoubleClicked, this, [this] { moveItems(false, false); });
    m_picture2->resize(460, 340);
    m_picture2->hide();

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(buttons);
    layout->addWidget(m_views, 1);
    layout->addWidget(m_lblStatus);

    connect(m_cboZT, &QComboBox::activated, this, [this] { guarded([this] { CmdQuiry_Click(); }); });
    connect(m_combo1, &QComboBox::activated, this, [this] { guarded([this] { CmdQuiry_Click(); }); });
}

void frmRs_PersonList::guarded(const std::function<void()>& f) {
    try {
        f();
    } catch (const DbError& e) {
        m_grid1->setRedraw(true);
        ShowMsg(e.message(), vbExclamation, windowTitle());
    }
}

void frmRs_PersonList::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        guarded([this] { load(); });
    }
    QDialog::showEvent(event);
}

void frmRs_PersonList::load() {
    m_fields = SetGridColumns(QStringLiteral("tRsBasic"), m_grid1, -1, 1);
    m_cboZT->addItem(QStringLiteral("在职"));
    quint8 withCode = 0;
    FillBriefCombo(m_cboZT, QStringLiteral("rsstate"), withCode);
    m_cboZT->setCurrentIndex(0);
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_combo1, G().DeptScope, 0, 1);
    m_combo1->insertItem(0, QStringLiteral("(所有部门)"));
    m_combo1->setCurrentIndex(0);
    m_views->setCurrentWidget(m_grid1);
    for (const SeekField& f : SeekFields()) {
        m_combo2->addItem(f.caption);
        m_seekFields << f.field;
    }
    m_combo2->setCurrentIndex(-1);
    CenterForm(this);
    runQuery();
    CenterOnForm(m_picture2, this);
}

int frmRs_PersonList::state() const {
    return m_cboZT->currentIndex() + 1;
}

QString frmRs_PersonList::composeFilter() {
    const int seek = m_combo2->currentIndex();
    const ListFilter f = ComposeFilter(
        {m_combo1->currentIndex(), m_combo1->currentText(), m_txtFilter->text(), m_seekFields.value(seek)});
    if (f.filterText != m_txtFilter->text()) m_txtFilter->setText(f.filterText);
    return f.filter;
}

void frmRs_PersonList::runQuery() {
    runList(composeFilter());
}

void frmRs_PersonList::CmdQuiry_Click() {
    // A value with no field to look in would list everyone as if found: the clerk hears of it.
    if (m_combo2->currentIndex() < 0 && !m_txtFilter->text().trimmed().isEmpty()) {
        composeFilter();
        m_lblStatus->setText(QStringLiteral("请先在查询项目中选择字段，再按“模糊查询”。"));
        ShowMsg(QStringLiteral("没有选择查询项目：请先在左边的列表中选择要查的字段（如姓名、身份证号），"
                               "再按“模糊查询”。"),
                vbInformation, windowTitle());
        m_combo2->setFocus();
        m_combo2->showPopup();
        return;
    }
    runQuery();
}

QString frmRs_PersonList::status() const {
    return m_lblStatus->text();
}

void frmRs_PersonList::runList(const QString& filter) {
    Hourglass wait;
    m_lblStatus->clear();
    m_views->setCurrentWidget(m_grid1);
    m_grid1->setRedraw(false);
    m_grid1->setMaxRows(0);
    if (m_grid1->maxCols() > 0) m_grid1->loadPaged(PersonListPaged(m_fields, state(), filter));
    const int rows = m_grid1->maxRows();
    m_txtQty->setText(QStringLiteral("%1人").arg(rows));
    if (rows > 0) m_grid1->sortRows({1, 2});
    m_grid1->setRedraw(true);
    if (rows == 0) ShowMsg(QStringLiteral("没有符合条件的记录！"), vbExclamation);
}

void frmRs_PersonList::cmdSeek_Click() {
    const QString condition = ShowBriefDialog(QStringLiteral("trsbasic"), QString(), 3);
    if (!condition.isEmpty()) runList(QStringLiteral(" And ") + condition);
}

void frmRs_PersonList::CmdListSelect_Click() {
    if (ShowBriefDialog(QStringLiteral("tRsBasic"), QString(), 5).isEmpty()) return;
    {
        // Fields without a caption cannot be columns.
        Transaction t(conn());
        conn().execute(conn().dialect().clearUncaptionedSelection());
        t.commit();
    }
    m_fields = SetGridColumns(QStringLiteral("tRsBasic"), m_grid1, -1, 1);
    runQuery();
}

void frmRs_PersonList::cmdCompile_Click() {
    const QStringList captions = CountableCaptions();
    m_lstAll->clear();
    QStringList chosen;
    for (int i = 0; i < m_lstSelect->count(); ++i)
        chosen << m_lstSelect->item(i)->text();
    // The choice of an earlier count stays.
    for (const QString& c : captions)
        if (!chosen.contains(c)) m_lstAll->addItem(c);
    CenterOnForm(m_picture2, this);
    m_picture2->show();
    m_picture2->raise();
    m_lstAll->setFocus();
}

void frmRs_PersonList::moveItems(bool toSelected, bool all) {
    QListWidget* from = toSelected ? m_lstAll : m_lstSelect;
    QListWidget* to = toSelected ? m_lstSelect : m_lstAll;
    const QList<QListWidgetItem*> items = all ? from->findItems(QStringLiteral("*"), Qt::MatchWildcard)
                                          : from->selectedItems().isEmpty() && from->currentItem()
                                              ? QList<QListWidgetItem*>{from->currentItem()}
                                              : from->selectedItems();
    for (QListWidgetItem* item : items)
        to->addItem(from->takeItem(from->row(item)));
}

void frmRs_PersonList::cmdCompileOK_Click() {
    if (m_lstSelect->count() == 0) return;
    QStringList chosen;
    for (int i = 0; i < m_lstSelect->count(); ++i)
        chosen << m_lstSelect->item(i)->text();
    Hourglass wait;
    m_picture2->hide();
    const QString base = QStringLiteral(" fzt= ") + num(state()) + QLatin1Char(' ') + composeFilter();
    m_counts.clear();
    m_counts = CountTable(chosen, base);
    DecodeCountHeadings(m_counts);
    m_grid2->setRedraw(false);
    m_grid2->setMaxRows(0);
    m_grid2->setMaxCols(m_counts.isEmpty() ? 1 : int(m_counts.first().size()));
    m_grid2->setColWidth(-1, 8);
    m_grid2->loadRows(m_counts);
    m_grid2->setRedraw(true);
    m_views->setCurrentWidget(m_countPage);
    // The chart follows the count: one entry a counted field that has values.
    m_chartField->blockSignals(true);
    m_chartField->clear();
    for (int r = 0; r + 1 < m_counts.size(); r += 2)
        if (m_counts.at(r).size() > 1 && !m_counts.at(r).value(0).isEmpty())
            m_chartField->addItem(m_counts.at(r).value(0), r);
    m_chartField->blockSignals(false);
    drawChart();
}

void frmRs_PersonList::drawChart() {
    auto* chart = new QChart;
    chart->setFont(uiFont(9));
    chart->setTitleFont(uiFont(11));
    chart->legend()->setFont(uiFont(9));
    int minimumHeight = 0;
    const int r = m_chartField->currentData().toInt();
    const QVector<CountedValue> values =
        m_chartField->count() > 0 ? CountedValues(m_counts, r, kChartValues) : QVector<CountedValue>();
    const QVector<QStringList> totals = CountTotalsRows(values);
    m_gridTotals->setMaxRows(0);
    if (!values.isEmpty()) {
        m_gridTotals->loadRows(totals);
        chart->setTitle(
            QStringLiteral("%1（合计 %2 人）").arg(m_counts.at(r).value(0), totals.last().value(1)));
        if (m_pie->isChecked()) {
            auto* pie = new QPieSeries;
            for (const CountedValue& v : values)
                pie->append(QStringLiteral("%1 (%2)").arg(v.value).arg(v.persons), double(v.persons));
            for (QPieSlice* s : pie->slices())
                s->setLabelFont(uiFont(9));
            pie->setLabelsVisible(values.size() <= 8);
            chart->addSeries(pie);
            // Named entries down the right: a row of colour squares across the top leaves no room for
            // their names.
            chart->legend()->setAlignment(Qt::AlignRight);
            chart->legend()->setShowToolTips(true);
            minimumHeight = int(values.size()) * (QFontMetrics(uiFont(9)).height() + 8) + 90;
        } else {
            qsizetype longest = 0;
            for (const CountedValue& v : values)
                longest = qMax(longest, v.value.size());
            // Long or many labels stand down the side, one to a bar, where they read whole; a few
            // short ones stand under upright bars.
            const bool across = longest > 4 || values.size() > 8;
            // Bars across are drawn from the foot up: reversed, the largest stands at the top.
            QVector<CountedValue> shown = values;
            if (across) std::reverse(shown.begin(), shown.end());
            auto* set = new QBarSet(QStringLiteral("人数"));
            QStringList labels;
            for (const CountedValue& v : shown) {
                *set << double(v.persons);
                labels << v.value;
            }
            QAbstractBarSeries* bars = across ? static_cast<QAbstractBarSeries*>(new QHorizontalBarSeries)
                                              : static_cast<QAbstractBarSeries*>(new QBarSeries);
            bars->append(set);
            bars->setLabelsVisible(true);
            chart->addSeries(bars);
            auto* names = new QBarCategoryAxis;
            names->append(labels);
            names->setLabelsFont(uiFont(9));
            chart->addAxis(names, across ? Qt::AlignLeft : Qt::AlignBottom);
            bars->attachAxis(names);
            auto* y = new QValueAxis;
            y->setLabelFormat(QStringLiteral("%d"));
            y->setLabelsFont(uiFont(9));
            chart->addAxis(y, across ? Qt::AlignBottom : Qt::AlignLeft);
            bars->attachAxis(y);
            chart->legend()->hide();
            // A label keeps its name only while its bar's share of the height holds a line of text.
            if (across) minimumHeight = int(values.size()) * (QFontMetrics(uiFont(9)).height() + 16) + 120;
        }
    }
    m_chartView->setMinimumHeight(qMax(260, minimumHeight));
    QChart* old = m_chartView->chart();
    m_chartView->setChart(chart);
    delete old;
}

bool frmRs_PersonList::saveChart(const QString& file) {
    if (file.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) {
        QPdfWriter pdf(file);
        pdf.setTitle(m_chartView->chart()->title());
        pdf.setPageSize(QPageSize(QPageSize::A4));
        pdf.setPageOrientation(QPageLayout::Landscape);
        QPainter p;
        if (!p.begin(&pdf)) return false;
        // Drawn as vectors, so that the labels stay text in the file.
        m_chartView->render(&p);
        return p.end();
    }
    return m_chartView->grab().save(file, "PNG");
}

void frmRs_PersonList::cmdPrint_Click() {
    const QString dept = m_combo1->currentIndex() >= 1 ? m_combo1->currentText() : QString();
    const int tab = dept.indexOf(QLatin1Char('\t'));
    const QStringList items{QStringLiteral("总人数"),   m_txtQty->text(),
                            QStringLiteral("部门编号"), tab >= 0 ? dept.left(tab) : QString(),
                            QStringLiteral("部门名称"), tab >= 0 ? dept.mid(tab + 1) : dept};
    G().showmode = 1;
    if (m_views->currentWidget() == m_grid1)
        PrintGrid(items, m_grid1, QStringLiteral("员工名单"), QString());
    else
        PrintGrid(items, m_grid2, QStringLiteral("员工数据统计表"), QString(), false);
}

void frmRs_PersonList::cmdCardPnt_Click() {
    PrintPersonCard(1, QStringLiteral("RsCard"), QStringLiteral("RsCard_01"),
                    QStringLiteral("fzt = ") + num(state()) + composeFilter());
}

bool frmRs_PersonList::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_txtFilter && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (m_txtFilter->text().contains(QLatin1Char('\''))) {
                ShowMsg(QStringLiteral("不能有单引号输入,请删除!"), vbExclamation);
                m_txtFilter->selectAll();
            } else {
                guarded([this] { CmdQuiry_Click(); });
            }
            return true;
        }
    }
    if (watched == m_txtFilter && event->type() == QEvent::FocusIn) m_txtFilter->selectAll();
    // "," narrows the active column by half a character and "." widens it by two; narrowed past
    // nothing, the column hides.
    if (watched == m_grid1 && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const int col = m_grid1->activeCol();
        if (col > 0 && (key == Qt::Key_Comma || key == Qt::Key_Period)) {
            const double w = m_grid1->colWidth(col) + (key == Qt::Key_Comma ? -0.5 : 2);
            m_grid1->setColWidth(col, std::max(0.0, w));
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmRs_PersonList::reject() {
    // Esc closes the panel first.
    if (m_picture2->isVisible()) {
        m_picture2->hide();
        return;
    }
    QDialog::reject();
}

} // namespace zq
