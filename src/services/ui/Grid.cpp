#include "Grid.h"

#include "GridView.h"

#include "shell/ui/Fonts.h"

#include <QAbstractTableModel>
#include <QEvent>
#include <QFontMetricsF>
#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMetaObject>
#include <QPlainTextEdit>
#include <QRegularExpressionValidator>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>
namespace zq {

using namespace gridcells;

ZqGrid::ZqGrid(QWidget* parent)
    : QWidget(parent)
    , m_model(new GridModel(this))
    , m_view(new GridView(this)) {
    m_view->setModel(m_model);
    m_view->setItemDelegate(new GridDelegate(this));
    m_view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::AnyKeyPressed);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setWordWrap(true);
    QHeaderView* rows = m_view->verticalHeader();
    rows->setSectionResizeMode(QHeaderView::Fixed); // uniform heights keep 100,000 rows cheap
    rows->setMinimumSectionSize(1);
    rows->setDefaultAlignment(Qt::AlignCenter);
    QHeaderView* cols = m_view->horizontalHeader();
    cols->setSectionResizeMode(QHeaderView::Interactive);
    cols->setMinimumSectionSize(1);
    cols->setDefaultAlignment(Qt::AlignCenter);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    setFocusProxy(m_view);
    setFont(uiFont(9));

    connect(m_view, &QAbstractItemView::clicked, this,
            [this](const QModelIndex& i) { emit clicked(i.column() + 1, i.row() + 1); });
    connect(m_view, &QAbstractItemView::doubleClicked, this,
            [this](const QModelIndex& i) { emit dblClick(i.column() + 1, i.row() + 1); });
    connect(cols, &QHeaderView::sectionClicked, this, [this](int s) { emit clicked(s + 1, 0); });
    connect(cols, &QHeaderView::sectionDoubleClicked, this, [this](int s) { emit dblClick(s + 1, 0); });
    connect(rows, &QHeaderView::sectionClicked, this, [this](int s) { emit clicked(0, s + 1); });
    connect(rows, &QHeaderView::sectionDoubleClicked, this, [this](int s) { emit dblClick(0, s + 1); });
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& now, const QModelIndex& before) {
                emit leaveCell(before.isValid() ? before.column() + 1 : 0,
                               before.isValid() ? before.row() + 1 : 0, now.isValid() ? now.column() + 1 : 0,
                               now.isValid() ? now.row() + 1 : 0);
            });
    connect(cols, &QHeaderView::sectionResized, this, [this](int s, int, int px) {
        if (m_settingGeometry || px <= 0) return;
        const double width = std::round(std::max(0, px - cellPadding()) / charWidth() * 100) / 100;
        m_model->m_cols[s + 1].width = width;
        emit colWidthChanged(s + 1, width);
    });
    // A reset rebuilds the header sections: they take the grid's sizes again.
    connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this, [this] { m_settingGeometry = true; });
    connect(m_model, &QAbstractItemModel::modelReset, this, &ZqGrid::applyGeometry);
    // The grid's width changes what room the columns have.
    m_view->viewport()->installEventFilter(this);
    applyGeometry();
}

bool ZqGrid::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_view->viewport() && event->type() == QEvent::Resize) scheduleSpread();
    return QWidget::eventFilter(watched, event);
}

ZqGrid::~ZqGrid() {
    // Closed while a cell is being edited, the window would move the focus on as it goes and the
    // editor would commit into this grid, and signal its change, after this destructor: the editor
    // is let go first, without committing.
    m_view->reset();
}

QTableView* ZqGrid::view() const {
    return m_view;
}

int ZqGrid::maxRows() const {
    return m_model->rowCount();
}

void ZqGrid::setMaxRows(int rows) {
    m_model->setRows(rows);
}

int ZqGrid::maxCols() const {
    return m_model->columnCount();
}

void ZqGrid::setMaxCols(int cols) {
    const int old = maxCols();
    m_settingGeometry = true;
    m_model->setCols(cols);
    m_settingGeometry = false;
    for (int c = old + 1; c <= maxCols(); ++c)
        applyColumn(c);
}

QString ZqGrid::text(int row, int col) const {
    return m_model->read(row, col);
}

QString ZqGrid::value(int row, int col) const {
    const QString t = m_model->read(row, col);
    return row >= 1 && col >= 1 && colType(col) != CellText ? withoutTrailingZeros(t) : t;
}

bool ZqGrid::setText(int row, int col, const QString& text) {
    if (!m_model->write(row, col, text)) return false;
    if (row == 0 && col > 0) applyColumn(col); // a caption is never cut
    return true;
}

QStringList ZqGrid::rowTexts(int row) const {
    QStringList l;
    if (!m_model->inRows(row)) return l;
    l.reserve(maxCols());
    for (int c = 1; c <= maxCols(); ++c)
        l << m_model->cell(row, c);
    return l;
}

int ZqGrid::activeRow() const {
    const QModelIndex i = m_view->currentIndex();
    return i.isValid() ? i.row() + 1 : 0;
}

int ZqGrid::activeCol() const {
    const QModelIndex i = m_view->currentIndex();
    return i.isValid() ? i.column() + 1 : 0;
}

void ZqGrid::setActiveCell(int row, int col) {
    if (m_model->inRows(row) && m_model->inCols(col)) {
        const QModelIndex i = m_model->index(row - 1, col - 1);
        m_view->setCurrentIndex(i);
        m_view->scrollTo(i);
    } else {
        m_view->selectionModel()->clearCurrentIndex();
        m_view->clearSelection();
    }
}

void ZqGrid::action(int code) {
    switch (code) {
    case ActionGoToCell:
        goToCell();
        break;
    case ActionDeleteRow:
        deleteRow();
        break;
    case ActionInsertRow:
        insertRow();
        break;
    default:
        break;
    }
}

void ZqGrid::goToCell() {
    setActiveCell(m_row, m_col);
}

void ZqGrid::insertRow() {
    if (!m_model->inRows(m_row) || isPaged()) return;
    m_model->removeAt(maxRows() - 1);
    m_model->insertBlank(m_row - 1);
}

void ZqGrid::deleteRow() {
    if (!m_model->inRows(m_row)) return;
    m_model->removeAt(m_row - 1);
    m_model->insertBlank(maxRows());
}

void ZqGrid::removeRow(int row) {
    if (m_model->inRows(row)) m_model->removeAt(row - 1);
}

void ZqGrid::appendRow() {
    if (isPaged()) return;
    setMaxRows(maxRows() + 1);
    setActiveCell(maxRows(), firstVisibleCol());
}

void ZqGrid::onDownKey() {
    const int col = activeCol();
    setMaxRows(maxRows() + 1);
    setActiveCell(maxRows(), col);
}

void ZqGrid::onEnterKey() {
    const int row = activeRow();
    const int col = activeCol();
    emit enterPressed(col, row);
    if (row < 1) return;
    if (const int next = nextVisibleCol(col); next > 0)
        setActiveCell(row, next);
    else if (row < maxRows())
        setActiveCell(row + 1, firstVisibleCol());
    else if (m_appendOnEnter)
        appendRow();
}

int ZqGrid::nextVisibleCol(int col) const {
    for (int c = col + 1; c <= maxCols(); ++c)
        if (!isColHidden(c)) return c;
    return 0;
}

int ZqGrid::firstVisibleCol() const {
    const int c = nextVisibleCol(0);
    return c > 0 ? c : 1;
}

void ZqGrid::clear() {
    m_model->clearCells();
}

void ZqGrid::loadRows(QVector<QStringList> rows) {
    m_model->load(rows);
}

void ZqGrid::sortRows(const QVector<int>& keyCols) {
    m_model->sort(keyCols);
}

void ZqGrid::loadPaged(PagedQuery query) {
    m_model->loadPaged(std::move(query));
}

void ZqGrid::loadPaged(std::unique_ptr<PagedRows> rows) {
    m_model->loadPaged(std::move(rows));
}

bool ZqGrid::isPaged() const {
    return m_model->paged();
}

int ZqGrid::findRow(int col, const QString& text, int from) const {
    if (!m_model->inCols(col)) return 0;
    if (isPaged()) return m_model->findPaged(col, text, from);
    for (int r = std::max(from, 1); r <= maxRows(); ++r)
        if (m_model->cell(r, col) == text) return r;
    return 0;
}

double ZqGrid::charWidth() const {
    // A character of the widths is a digit, and a Chinese character is two: a width of 10 holds a
    // whole date, one of 6 three Chinese characters, whatever the font makes of its average.
    const QFontMetricsF fm(m_view->font());
    double w = fm.horizontalAdvance(QChar(0x4E2D)) / 2;
    for (const QChar ch : QStringLiteral("0123456789-:."))
        w = std::max(w, fm.horizontalAdvance(ch));
    return w > 0 ? w : 7;
}

int ZqGrid::cellPadding() const {
    // The margins the style keeps on both sides of an item's text, and one pixel of the grid line.
    return 2 * (m_view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, m_view) + 1) + 1;
}

int ZqGrid::colWidthPixels(double width) const {
    return width <= 0 ? 0 : int(std::ceil(width * charWidth())) + cellPadding();
}

int ZqGrid::fitPixels(int col, bool capped) const {
    const GridModel::Column& c = m_model->m_cols[col];
    int px = colWidthPixels(c.width);
    QHeaderView* header = m_view->horizontalHeader();
    const int headMargin = 2 * header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    if (!c.header.isEmpty())
        px = std::max(px, header->fontMetrics().horizontalAdvance(c.header) + headMargin + 1);
    // Digits and Chinese characters within the width fit by the unit's making: measuring them all
    // would cost a grid of many columns (a count by person code) more than its loading.
    const auto fitsByUnits = [&c] {
        if (textUnits(c.widest) > c.width) return false;
        for (const QChar ch : c.widest)
            if (!ch.isDigit() && ch.unicode() < 0x2E80 && !QStringLiteral("-:. ").contains(ch)) return false;
        return true;
    };
    if (!c.widest.isEmpty() && !fitsByUnits()) {
        const QString line = c.widest.section(QLatin1Char('\n'), 0, 0);
        const int text = m_view->fontMetrics().horizontalAdvance(line) + cellPadding();
        px = std::max(px, capped ? std::min(text, colWidthPixels(std::max(c.width, kMaxFitWidth))) : text);
    }
    return px;
}

void ZqGrid::scheduleSpread() {
    if (m_spreadPending) return;
    m_spreadPending = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_spreadPending = false;
            spreadColumns();
        },
        Qt::QueuedConnection);
}

void ZqGrid::spreadColumns() {
    const int room = m_view->viewport()->width();
    struct Shown {
        int col;
        int own;  // the column's own width
        int want; // what its longest text and caption need
    };
    std::vector<Shown> shown;
    long total = 0;
    for (int c = 1; c <= maxCols() && total < room; ++c) {
        if (isColHidden(c) || m_model->m_cols[c].width <= 0) continue;
        const int own = fitPixels(c);
        shown.push_back({c, own, fitPixels(c, false)});
        total += own;
    }
    const bool wasSpread = std::exchange(m_spread, false);
    m_settingGeometry = true;
    if (total >= room || shown.empty()) {
        // No room: every column at its own width again (a grid of a thousand columns stops early).
        if (wasSpread)
            for (int c = 1; c <= maxCols(); ++c)
                applyColumn(c);
        m_settingGeometry = false;
        return;
    }
    long spare = room - total;
    std::vector<int> px;
    px.reserve(shown.size());
    long cut = 0;
    for (const Shown& s : shown)
        cut += s.want - s.own;
    // Cut texts first, in proportion to what each lacks; then what is left to all, by their widths.
    for (const Shown& s : shown) {
        const long lacks = s.want - s.own;
        px.push_back(s.own + int(cut > 0 ? std::min(lacks, lacks * spare / cut) : 0));
    }
    long used = 0;
    for (size_t i = 0; i < shown.size(); ++i)
        used += px[i];
    spare = room - used;
    long base = used;
    for (size_t i = 0; i < shown.size() && spare > 0 && base > 0; ++i) {
        const int more = int(spare * px[i] / base);
        base -= px[i];
        px[i] += more;
        spare -= more;
    }
    for (size_t i = 0; i < shown.size(); ++i)
        if (m_view->columnWidth(shown[i].col - 1) != px[i]) m_view->setColumnWidth(shown[i].col - 1, px[i]);
    m_spread = true;
    m_settingGeometry = false;
}

int ZqGrid::rowHeightPixels(double height) const {
    if (height <= 0) return 0;
    // Points to pixels, but never so low that a line of the font is cut.
    const int px = int(std::lround(height * logicalDpiY() / 72.0));
    return std::max(px, QFontMetrics(m_view->font()).height() + 2);
}

double ZqGrid::colWidth(int col) const {
    if (col == 0 && m_model->m_cols[0].width < 0)
        return std::max(0, m_view->verticalHeader()->sizeHint().width() - cellPadding()) / charWidth();
    if (col < 0) return m_model->m_template.width;
    return col <= maxCols() ? m_model->m_cols[col].width : 0;
}

void ZqGrid::setColWidth(int col, double width) {
    if (col == -1) {
        m_model->m_template.width = width;
        for (int c = 1; c <= maxCols(); ++c) {
            m_model->m_cols[c].width = width;
            applyColumn(c);
        }
    } else if (col >= 0 && col <= maxCols()) {
        m_model->m_cols[col].width = width;
        applyColumn(col);
    }
}

bool ZqGrid::isColHidden(int col) const {
    if (col < 0 || col > maxCols()) return false;
    const GridModel::Column& c = m_model->m_cols[col];
    return c.hidden || (col > 0 && c.width <= 0) || (col == 0 && c.width == 0);
}

void ZqGrid::setColHidden(int col, bool hidden) {
    if (col < 0 || col > maxCols()) return;
    m_model->m_cols[col].hidden = hidden;
    applyColumn(col);
}

double ZqGrid::rowHeight(int row) const {
    if (row == 0) return m_headerHeight;
    if (const GridModel::Row* r = m_model->heldRow(row); r && r->height != 0) return r->height;
    return m_rowHeight;
}

void ZqGrid::setRowHeight(int row, double height) {
    QHeaderView* rows = m_view->verticalHeader();
    if (row == 0) {
        m_headerHeight = height;
        m_view->horizontalHeader()->setVisible(height > 0);
        if (height > 0) m_view->horizontalHeader()->setFixedHeight(rowHeightPixels(height));
    } else if (row == -1) {
        m_rowHeight = height;
        for (GridModel::Row& r : m_model->m_rows)
            r.height = 0;
        rows->setDefaultSectionSize(std::max(1, rowHeightPixels(height)));
    } else if (GridModel::Row* r = m_model->heldRow(row)) {
        r->height = height;
        rows->resizeSection(row - 1, rowHeightPixels(height));
    }
}

ZqGrid::CellType ZqGrid::colType(int col) const {
    return col >= 1 && col <= maxCols() ? m_model->m_cols[col].type : CellText;
}

int ZqGrid::colDecimals(int col) const {
    return col >= 1 && col <= maxCols() ? m_model->m_cols[col].decimals : 0;
}

bool ZqGrid::isColMultiLine(int col) const {
    return col >= 1 && col <= maxCols() && m_model->m_cols[col].multiLine;
}

int ZqGrid::colMaxLength(int col) const {
    return col >= 1 && col <= maxCols() ? m_model->m_cols[col].maxLength : 0;
}

void ZqGrid::setColType(int col, CellType type, int decimals) {
    auto set = [&](GridModel::Column& c) {
        c.type = type;
        c.decimals = type == CellDecimal ? std::clamp(decimals, 0, 15) : 0;
    };
    if (col == -1) set(m_model->m_template);
    for (int c = 1; c <= maxCols(); ++c) {
        if (col != -1 && c != col) continue;
        set(m_model->m_cols[c]);
        m_model->renormalise(c);
    }
}

void ZqGrid::setColMultiLine(int col, bool multiLine) {
    if (col == -1) m_model->m_template.multiLine = multiLine;
    for (int c = 1; c <= maxCols(); ++c)
        if (col == -1 || c == col) m_model->m_cols[c].multiLine = multiLine;
    m_view->viewport()->update();
}

void ZqGrid::setColMaxLength(int col, int length) {
    if (col == -1) m_model->m_template.maxLength = length;
    for (int c = 1; c <= maxCols(); ++c)
        if (col == -1 || c == col) m_model->m_cols[c].maxLength = length;
}

void ZqGrid::lockBlock(int row1, int col1, int row2, int col2, bool locked) {
    m_model->lockBlock(row1, col1, row2, col2, locked);
}

bool ZqGrid::isLocked(int row, int col) const {
    return m_model->locked(row, col);
}

bool ZqGrid::isReadOnly() const {
    return m_model->m_readOnly;
}

void ZqGrid::setReadOnly(bool readOnly) {
    m_model->m_readOnly = readOnly;
}

bool ZqGrid::numberedRows() const {
    return m_model->m_numbered;
}

QString ZqGrid::rowHeaderText(int row) const {
    return m_model->headerData(row - 1, Qt::Vertical, Qt::DisplayRole).toString();
}

void ZqGrid::setNumberedRows(bool on) {
    m_model->m_numbered = on;
    if (maxRows() > 0) emit m_model->headerDataChanged(Qt::Vertical, 0, maxRows() - 1);
}

bool ZqGrid::rowSelection() const {
    return m_view->selectionBehavior() == QAbstractItemView::SelectRows;
}

void ZqGrid::setRowSelection(bool rows) {
    m_view->setSelectionBehavior(rows ? QAbstractItemView::SelectRows : QAbstractItemView::SelectItems);
}

void ZqGrid::setRedraw(bool on) {
    if (on == m_redraw) return;
    m_redraw = on;
    m_model->m_quiet = !on;
    m_view->setUpdatesEnabled(on);
    if (on) m_model->refreshAll();
}

void ZqGrid::applyColumn(int col) {
    const bool was = m_settingGeometry;
    m_settingGeometry = true;
    const GridModel::Column& c = m_model->m_cols[col];
    if (col == 0) {
        QHeaderView* rows = m_view->verticalHeader();
        rows->setVisible(!isColHidden(0));
        if (c.width > 0) {
            rows->setFixedWidth(colWidthPixels(c.width));
        } else {
            rows->setMinimumWidth(0);
            rows->setMaximumWidth(QWIDGETSIZE_MAX);
        }
    } else {
        m_view->setColumnHidden(col - 1, isColHidden(col));
        // The dictionary's width, or more when the caption or the rows loaded need it.
        if (c.width > 0) {
            const int px = fitPixels(col);
            if (m_view->columnWidth(col - 1) != px) m_view->setColumnWidth(col - 1, px);
        }
        scheduleSpread();
    }
    m_settingGeometry = was;
}

void ZqGrid::applyGeometry() {
    m_settingGeometry = true;
    // New sections take the common width; only the columns that differ are set one by one.
    m_view->horizontalHeader()->setDefaultSectionSize(std::max(1, colWidthPixels(m_model->m_template.width)));
    for (int c = 0; c <= maxCols(); ++c)
        applyColumn(c);
    setRowHeight(0, m_headerHeight);
    m_view->verticalHeader()->setDefaultSectionSize(std::max(1, rowHeightPixels(m_rowHeight)));
    for (const GridModel::Row& r : m_model->m_rows)
        if (r.height != 0)
            m_view->verticalHeader()->resizeSection(int(&r - m_model->m_rows.data()),
                                                    rowHeightPixels(r.height));
    m_settingGeometry = false;
    scheduleSpread();
}

void ZqGrid::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_view) applyGeometry();
}

} // namespace zq
