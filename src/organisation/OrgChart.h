#pragma once

#include <QFont>
#include <QRectF>
#include <QString>
#include <QVector>

class QPainter;

namespace zq {

// The organisation chart: the department tree of tRs_Bm as boxes (name, head count, limit; over
// the limit in red; posts optional), laid out top-down or left-right, with folded branches. The
// chart is laid out in its own units (a pixel at zoom 1) and painted by one routine onto any
// device: the screen, a printed page, a PDF, a picture or a drawing.
struct OrgNode {
    QString code; // empty for the company at the root
    QString name;
    bool post = false;
    double limit = 0;
    qint64 count = 0;
    int parent = -1;
    QVector<int> children;
    bool folded = false;
    bool shown = false; // laid out: no folded node above it
    QRectF box;
};

class OrgChart {
public:
    enum class Direction { TopDown, LeftRight };

    // Reads the tree: the departments (and posts when asked) whose codes begin with `branch`, with
    // the head counts of persons in service. The root is the company, or the branch's own
    // department when one is given. Codes that extend no entry above them hang at the root.
    void load(const QString& branch, bool posts);
    // Places every box not under a folded one; boxes never overlap.
    void layout(Direction direction);
    Direction direction() const { return m_direction; }

    const QVector<OrgNode>& nodes() const { return m_nodes; }
    int departments() const;
    QRectF bounds() const { return m_bounds; }
    QString branch() const { return m_branch; }

    // Paints what lies in `area` (chart units; a null rectangle paints everything).
    void paint(QPainter& p, const QRectF& area = {}) const;
    // The node whose box holds a point, or -1.
    int nodeAt(const QPointF& at) const;
    // The node whose fold mark holds a point, or -1.
    int foldMarkAt(const QPointF& at) const;
    QRectF foldMark(int node) const;
    // Folds or unfolds a node with children and lays out again.
    void toggleFold(int node);
    // Folds every node below a depth (1: only the root's children show).
    void foldBelow(int depth);

private:
    double place(int node, double depthAt, double breadthAt);
    bool stacks(int node) const;

    QString m_branch;
    QVector<OrgNode> m_nodes;
    Direction m_direction = Direction::TopDown;
    QRectF m_bounds;
    QFont m_font;
    QFont m_bold;
    double m_boxWidth = 150;
    double m_boxHeight = 46;
};

} // namespace zq
