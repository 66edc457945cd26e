#include "frmRs_OrgChart.h"

#include "OrgChartPrint.h"
#include "printing/PrintOutput.h"
#include "services/ui/NamedWidgets.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyleOptionGraphicsItem>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace zq {

namespace {
// Beyond this many boxes the chart opens folded below the first level.
constexpr int kOpenFolded = 300;
} // namespace

// The whole chart as one item: it paints only the boxes of the part in view, so that panning over
// thousands of boxes stays smooth.
class OrgChartItem : public QGraphicsItem {
public:
    explicit OrgChartItem(frmRs_OrgChart& screen)
        : m_screen(screen) {
        setFlag(ItemUsesExtendedStyleOption);
        setAcceptedMouseButtons(Qt::LeftButton);
    }
    QRectF boundingRect() const override { return m_screen.chart().bounds(); }
    void paint(QPainter* p, const QStyleOptionGraphicsItem* option, QWidget*) override {
        m_screen.chart().paint(*p, option->exposedRect);
    }
    void relaid() { prepareGeometryChange(); }

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* e) override {
        const int mark = m_screen.chart().foldMarkAt(e->pos());
        if (mark < 0) {
            e->ignore(); // the view pans
            return;
        }
        m_screen.toggleFold(mark);
    }
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent* e) override {
        const int node = m_screen.chart().nodeAt(e->pos());
        if (node > 0) m_screen.showBranch(m_screen.chart().nodes()[node].code);
    }

private:
    frmRs_OrgChart& m_screen;
};

frmRs_OrgChart::frmRs_OrgChart(QWidget* parent)
    : ScreenDialog(parent)
    , m_direction(named(new QComboBox(this), QStringLiteral("cboDirection")))
    , m_posts(named(new QCheckBox(QStringLiteral("显示岗位"), this), QStringLiteral("chkPosts")))
    , m_pages(named(new QComboBox(this), QStringLiteral("cboPages")))
    , m_scene(new QGraphicsScene(this))
    , m_view(named(new QGraphicsView(m_scene, this), QStringLiteral("viewChart")))
    , m_info(named(new QLabel(this), QStringLiteral("lblInfo"))) {
    setObjectName(QStringLiteral("frmRs_OrgChart"));
    setWindowTitle(QStringLiteral("组织机构图"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    resize(1100, 700);
    m_direction->addItems({QStringLiteral("从上到下"), QStringLiteral("从左到右")});
    m_pages->addItems({QStringLiteral("打印在一页"), QStringLiteral("两页宽"), QStringLiteral("三页宽"),
                       QStringLiteral("四页宽")});
    auto* zoomIn = NamedButton(this, QStringLiteral("cmdZoomIn"), QStringLiteral("放大"));
    auto* zoomOut = NamedButton(this, QStringLiteral("cmdZoomOut"), QStringLiteral("缩小"));
    auto* fit = NamedButton(this, QStringLiteral("cmdFit"), QStringLiteral("全图"));
    auto* all = NamedButton(this, QStringLiteral("cmdAll"), QStringLiteral("全部部门"));
    auto* printButton = NamedButton(this, QStringLiteral("cmdPrint"), QStringLiteral("打印(&P)"));
    auto* save = NamedButton(this, QStringLiteral("cmdSave"), QStringLiteral("另存为..."));
    auto* quit = NamedButton(this, QStringLiteral("cmdQuit"), QStringLiteral("退出>>"));

    m_view->setDragMode(QGraphicsView::ScrollHandDrag);
    m_view->setBackgroundBrush(Qt::white);
    m_view->setRenderHint(QPainter::Antialiasing);
    m_view->setViewportUpdateMode(QGraphicsView::MinimalViewportUpdate);
    m_view->viewport()->installEventFilter(this);
    m_item = new OrgChartItem(*this);
    m_scene->addItem(m_item);

    auto* top = new QHBoxLayout;
    top->addWidget(m_direction);
    top->addWidget(m_posts);
    top->addSpacing(8);
    for (QWidget* w : {static_cast<QWidget*>(zoomIn), static_cast<QWidget*>(zoomOut), static_cast<QWidget*>(fit),
                       static_cast<QWidget*>(all)})
        top->addWidget(w);
    top->addStretch();
    top->addWidget(m_pages);
    top->addWidget(printButton);
    top->addWidget(save);
    top->addWidget(quit);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_info);

    connect(m_direction, &QComboBox::activated, this, [this] {
        m_chart.layout(m_direction->currentIndex() == 1 ? OrgChart::Direction::LeftRight
                                                        : OrgChart::Direction::TopDown);
        relaid();
        fitAll();
    });
    connect(m_posts, &QCheckBox::clicked, this, [this] { guarded([this] { reload(); }); });
    connect(zoomIn, &QPushButton::clicked, this, [this] { zoomBy(1.25); });
    connect(zoomOut, &QPushButton::clicked, this, [this] { zoomBy(0.8); });
    connect(fit, &QPushButton::clicked, this, &frmRs_OrgChart::fitAll);
    connect(all, &QPushButton::clicked, this, [this] { guarded([this] { showBranch({}); }); });
    connect(printButton, &QPushButton::clicked, this, [this] { guarded([this] { print(); }); });
    connect(save, &QPushButton::clicked, this, [this] { guarded([this] { saveAs(); }); });
    connect(quit, &QPushButton::clicked, this, &QDialog::reject);
}

QString frmRs_OrgChart::ownBranch() const {
    return G().isSupervisor() ? QString() : G().UserDeptCode;
}

void frmRs_OrgChart::load() {
    m_branch = ownBranch();
    reload();
    fitAll();
}

void frmRs_OrgChart::showBranch(const QString& code) {
    const QString own = ownBranch();
    // Never above the user's own branch.
    m_branch = own.isEmpty() || code.startsWith(own, Qt::CaseInsensitive) ? code : own;
    guarded([this] { reload(); });
    fitAll();
}

void frmRs_OrgChart::reload() {
    m_chart.load(m_branch, m_posts->isChecked());
    m_chart.layout(m_direction->currentIndex() == 1 ? OrgChart::Direction::LeftRight : OrgChart::Direction::TopDown);
    // A large company opens with its first level, readable; the user unfolds what he looks for.
    if (m_chart.nodes().size() > kOpenFolded) m_chart.foldBelow(1);
    relaid();
}

void frmRs_OrgChart::relaid() {
    m_item->relaid();
    m_scene->setSceneRect(m_chart.bounds());
    m_item->update();
    int posts = 0;
    for (const OrgNode& n : m_chart.nodes())
        if (n.post) ++posts;
    m_info->setText(QStringLiteral("部门 %1 个%2。单击 ⊕/⊖ 展开或折叠，双击方框只看该部门，拖动移动，Ctrl+滚轮缩放。")
                        .arg(m_chart.departments())
                        .arg(m_posts->isChecked() ? QStringLiteral("，岗位 %1 个").arg(posts) : QString()));
}

void frmRs_OrgChart::toggleFold(int node) {
    m_chart.toggleFold(node);
    relaid();
}

void frmRs_OrgChart::zoomBy(double factor) {
    const double now = m_view->transform().m11();
    if ((factor > 1 && now > 8) || (factor < 1 && now < 0.02)) return;
    m_view->scale(factor, factor);
}

void frmRs_OrgChart::fitAll() {
    m_view->resetTransform();
    const QRectF b = m_chart.bounds();
    if (b.isEmpty()) return;
    const QSizeF room = m_view->viewport()->size();
    const double scale = std::min({1.0, room.width() / b.width(), room.height() / b.height()});
    // A very large chart opens readable at its top rather than as a grey speck.
    m_view->scale(std::max(scale, 0.35), std::max(scale, 0.35));
    m_view->centerOn(scale >= 0.35 ? b.center() : QPointF(m_chart.nodes().first().box.center().x(), b.top()));
}

bool frmRs_OrgChart::print() {
    OrgChartDocument doc(m_chart, windowTitle(), m_pages->currentIndex() + 1);
    return PrintOutput::run(doc);
}

bool frmRs_OrgChart::saveAs() {
    FileRequest r;
    r.mode = FileRequest::Save;
    r.title = QStringLiteral("组织机构图另存为");
    r.filter = QStringLiteral("PDF 文件|*.pdf|PNG 图片|*.png|SVG 图形|*.svg");
    r.flags = cdlOFNOverwritePrompt | cdlOFNPathMustExist;
    r.fileName = QStringLiteral("组织机构图.pdf");
    QString file = prompts().file(r);
    if (file.isEmpty()) return false;
    if (QFileInfo(file).suffix().isEmpty()) file += QStringLiteral(".pdf");
    QString error;
    if (!SaveOrgChart(m_chart, windowTitle(), file, &error)) {
        ShowMsg(error, vbExclamation, windowTitle());
        return false;
    }
    return true;
}

bool frmRs_OrgChart::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_view->viewport() && event->type() == QEvent::Wheel) {
        auto* wheel = static_cast<QWheelEvent*>(event);
        if (wheel->modifiers() & Qt::ControlModifier) {
            m_view->setTransformationAnchor(QGraphicsView::AnchorUnderMouse);
            zoomBy(wheel->angleDelta().y() > 0 ? 1.15 : 1 / 1.15);
            m_view->setTransformationAnchor(QGraphicsView::AnchorViewCenter);
            return true;
        }
    }
    return ScreenDialog::eventFilter(watched, event);
}

} // namespace zq
