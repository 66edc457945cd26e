#include "OrgChart.h"

#include "printing/PrintDocument.h"
#include "services/HeadCounts.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

namespace zq {

namespace {

// Sizes in chart units.
constexpr double kPad = 8;
constexpr double kBreadthGap[] = {14, 10}; // between neighbours: top-down, left-right
constexpr double kDepthGap[] = {40, 56};   // between levels
constexpr double kIndent = 22;             // a stacked post or leaf under its department
constexpr double kStackGap = 18;
constexpr double kMark = 6; // radius of a fold mark
constexpr double kMargin = 24;

const QColor kRootFill(0x4a, 0x6f, 0xa5);
const QColor kDeptFill(0xe8, 0xf0, 0xfb);
const QColor kDeptLine(0x4a, 0x6f, 0xa5);
const QColor kPostFill(0xff, 0xf8, 0xe1);
const QColor kPostLine(0xc8, 0xa0, 0x40);
const QColor kOver(0xd0, 0x00, 0x00);

QString countLine(const OrgNode& n) {
    const qint64 limit = qint64(n.limit);
    if (limit > 0) return QStringLiteral("限%1人,共%2人").arg(limit).arg(n.count);
    return QStringLiteral("共%1人").arg(n.count);
}

bool over(const OrgNode& n) {
    return n.limit > 0 && double(n.count) > n.limit;
}

bool hasVisibleChildren(const OrgNode& n) {
    return !n.folded && !n.children.isEmpty();
}

} // namespace

void OrgChart::load(const QString& branch, bool posts) {
    m_branch = branch.trimmed();
    m_nodes.clear();
    OrgNode company;
    company.name = G().CompName.isEmpty() ? QStringLiteral("公司") : G().CompName;
    m_nodes << company;

    QString sql = QStringLiteral("select fCode,fName,fLimited,fYnxj from tRs_Bm where 1=1");
    if (!posts) sql += QStringLiteral(" and fYnxj=0");
    if (!m_branch.isEmpty()) sql += QStringLiteral(" and fCode like ") + quoted(m_branch + QLatin1Char('%'));
    sql += QStringLiteral(" order by fCode");
    QVector<int> path; // the ancestors of the row in hand, by code order
    for (Recordset rs(conn(), sql); !rs.eof(); rs.moveNext()) {
        OrgNode n;
        n.code = rs.text(0).trimmed();
        n.name = rs.text(1);
        n.limit = rs.val(2);
        n.post = rs.val(3) != 0;
        if (n.code.compare(m_branch, Qt::CaseInsensitive) == 0 && !m_branch.isEmpty()) {
            // The branch's own department stands at the root.
            n.children = m_nodes[0].children;
            m_nodes[0] = n;
            continue;
        }
        while (!path.isEmpty() && !n.code.startsWith(m_nodes[path.last()].code, Qt::CaseInsensitive))
            path.removeLast();
        n.parent = path.isEmpty() ? 0 : path.last();
        const int index = int(m_nodes.size());
        m_nodes[n.parent].children << index;
        m_nodes << n;
        path << index;
    }

    HeadCounts counts(QStringLiteral("trs_bm"), 1);
    QStringList codes;
    for (const OrgNode& n : m_nodes)
        if (!n.code.isEmpty()) codes << n.code;
    counts.prepare(codes);
    for (OrgNode& n : m_nodes)
        n.count = n.code.isEmpty() ? counts.total() : counts.count(n.code);

    // One box size for all, wide enough for the longest name: names are never cut.
    m_font = QFont(printFamily());
    m_font.setPixelSize(12);
    m_bold = m_font;
    m_bold.setBold(true);
    const QFontMetricsF plain(m_font), bold(m_bold);
    double widest = 96;
    for (const OrgNode& n : m_nodes)
        widest = std::max({widest, bold.horizontalAdvance(n.name), plain.horizontalAdvance(countLine(n))});
    m_boxWidth = std::ceil(widest + 2 * kPad);
    m_boxHeight = std::ceil(bold.height() + plain.height() + 2 * kPad - 2);
    layout(m_direction);
}

int OrgChart::departments() const {
    int n = 0;
    for (const OrgNode& x : m_nodes)
        if (!x.code.isEmpty() && !x.post) ++n;
    return n;
}

// Top-down, the leaves of a department (its posts, its last sections) stand in a column below it,
// which keeps a large chart from growing ever wider. A folded branch keeps its place in the row.
bool OrgChart::stacks(int node) const {
    if (m_direction != Direction::TopDown) return false;
    for (int c : m_nodes[node].children)
        if (!m_nodes[c].children.isEmpty()) return false;
    return true;
}

// Places a node's subtree from `breadthAt` on and gives the breadth it takes. Each subtree keeps to
// its own band of breadth and lies below its root, which is why no two boxes overlap.
double OrgChart::place(int node, double depthAt, double breadthAt) {
    OrgNode& n = m_nodes[node];
    const bool down = m_direction == Direction::TopDown;
    const int d = down ? 0 : 1;
    const double boxBreadth = down ? m_boxWidth : m_boxHeight;
    const double boxDepth = down ? m_boxHeight : m_boxWidth;
    const auto put = [&](OrgNode& x, double depth, double breadth) {
        x.shown = true;
        x.box = down ? QRectF(breadth, depth, m_boxWidth, m_boxHeight) : QRectF(depth, breadth, m_boxWidth, m_boxHeight);
    };
    if (!hasVisibleChildren(n)) {
        put(n, depthAt, breadthAt);
        return boxBreadth;
    }
    if (stacks(node)) {
        put(n, depthAt, breadthAt);
        double depth = depthAt;
        for (int c : n.children) {
            depth += boxDepth + kStackGap;
            put(m_nodes[c], depth, breadthAt + kIndent);
        }
        return boxBreadth + kIndent;
    }
    double b = breadthAt;
    for (int c : n.children)
        b += place(c, depthAt + boxDepth + kDepthGap[d], b) + kBreadthGap[d];
    const double used = b - kBreadthGap[d] - breadthAt;
    const auto centre = [&](int c) {
        const QRectF& r = m_nodes[c].box;
        return down ? r.center().x() : r.center().y();
    };
    const double mid = (centre(n.children.first()) + centre(n.children.last())) / 2;
    put(n, depthAt, std::max(breadthAt, mid - boxBreadth / 2));
    return std::max(used, boxBreadth);
}

void OrgChart::layout(Direction direction) {
    m_direction = direction;
    for (OrgNode& n : m_nodes) {
        n.shown = false;
        n.box = QRectF();
    }
    if (m_nodes.isEmpty()) return;
    place(0, kMargin, kMargin);
    QRectF all;
    for (const OrgNode& n : m_nodes)
        if (n.shown) all = all.united(n.box.adjusted(-kMark * 2, -kMark * 2, kMark * 2, kMark * 2));
    m_bounds = all.adjusted(-kMargin, -kMargin, kMargin, kMargin);
}

QRectF OrgChart::foldMark(int node) const {
    const QRectF& b = m_nodes[node].box;
    const QPointF c = m_direction == Direction::TopDown ? QPointF(b.center().x(), b.bottom() + kMark + 1)
                                                        : QPointF(b.right() + kMark + 1, b.center().y());
    return QRectF(c.x() - kMark, c.y() - kMark, 2 * kMark, 2 * kMark);
}

void OrgChart::paint(QPainter& p, const QRectF& area) const {
    const bool down = m_direction == Direction::TopDown;
    const int d = down ? 0 : 1;
    const auto visible = [&](const QRectF& r) { return area.isNull() || area.intersects(r); };
    p.save();
    p.setRenderHint(QPainter::Antialiasing, true);
    // Lines first, under the boxes.
    p.setPen(QPen(QColor(0x70, 0x70, 0x70), 1));
    for (int i = 1; i < m_nodes.size(); ++i) {
        const OrgNode& n = m_nodes[i];
        if (!n.shown || n.parent < 0) continue;
        const QRectF& pb = m_nodes[n.parent].box;
        const QRectF& cb = n.box;
        if (!visible(pb.united(cb))) continue;
        QPainterPath line;
        if (down && stacks(n.parent)) {
            const double x = pb.left() + kIndent / 2;
            line.moveTo(x, pb.bottom());
            line.lineTo(x, cb.center().y());
            line.lineTo(cb.left(), cb.center().y());
        } else if (down) {
            const double mid = pb.bottom() + kDepthGap[d] / 2;
            line.moveTo(pb.center().x(), pb.bottom());
            line.lineTo(pb.center().x(), mid);
            line.lineTo(cb.center().x(), mid);
            line.lineTo(cb.center().x(), cb.top());
        } else {
            const double mid = pb.right() + kDepthGap[d] / 2;
            line.moveTo(pb.right(), pb.center().y());
            line.lineTo(mid, pb.center().y());
            line.lineTo(mid, cb.center().y());
            line.lineTo(cb.left(), cb.center().y());
        }
        p.drawPath(line);
    }
    const QFontMetricsF bold(m_bold), plain(m_font);
    for (int i = 0; i < m_nodes.size(); ++i) {
        const OrgNode& n = m_nodes[i];
        if (!n.shown || !visible(n.box.adjusted(-kMark * 3, -kMark * 3, kMark * 3, kMark * 3))) continue;
        const bool root = i == 0;
        const QColor line = over(n) ? kOver : (n.post ? kPostLine : kDeptLine);
        p.setPen(QPen(line, over(n) ? 2 : 1));
        p.setBrush(root ? kRootFill : (n.post ? kPostFill : kDeptFill));
        if (n.post) p.drawRoundedRect(n.box, 8, 8);
        else p.drawRect(n.box);
        const QColor text = root ? QColor(Qt::white) : QColor(Qt::black);
        p.setFont(m_bold);
        p.setPen(text);
        const double top = n.box.top() + kPad - 1;
        p.drawText(QRectF(n.box.left(), top, n.box.width(), bold.height()), Qt::AlignHCenter | Qt::AlignVCenter,
                   n.name);
        p.setFont(m_font);
        p.setPen(over(n) ? kOver : (root ? QColor(Qt::white) : QColor(0x40, 0x40, 0x40)));
        p.drawText(QRectF(n.box.left(), top + bold.height(), n.box.width(), plain.height()),
                   Qt::AlignHCenter | Qt::AlignVCenter, countLine(n));
        if (!n.children.isEmpty()) {
            const QRectF m = foldMark(i);
            p.setPen(QPen(kDeptLine, 1));
            p.setBrush(Qt::white);
            p.drawEllipse(m);
            p.drawLine(QPointF(m.left() + 3, m.center().y()), QPointF(m.right() - 3, m.center().y()));
            if (n.folded) p.drawLine(QPointF(m.center().x(), m.top() + 3), QPointF(m.center().x(), m.bottom() - 3));
        }
    }
    p.restore();
}

int OrgChart::nodeAt(const QPointF& at) const {
    for (int i = 0; i < m_nodes.size(); ++i)
        if (m_nodes[i].shown && m_nodes[i].box.contains(at)) return i;
    return -1;
}

int OrgChart::foldMarkAt(const QPointF& at) const {
    for (int i = 0; i < m_nodes.size(); ++i)
        if (m_nodes[i].shown && !m_nodes[i].children.isEmpty() &&
            foldMark(i).adjusted(-2, -2, 2, 2).contains(at))
            return i;
    return -1;
}

void OrgChart::toggleFold(int node) {
    if (node < 0 || node >= m_nodes.size() || m_nodes[node].children.isEmpty()) return;
    m_nodes[node].folded = !m_nodes[node].folded;
    layout(m_direction);
}

void OrgChart::foldBelow(int depth) {
    for (int i = 0; i < m_nodes.size(); ++i) {
        int level = 0;
        for (int p = m_nodes[i].parent; p >= 0; p = m_nodes[p].parent)
            ++level;
        m_nodes[i].folded = level >= depth && !m_nodes[i].children.isEmpty();
    }
    layout(m_direction);
}

} // namespace zq
