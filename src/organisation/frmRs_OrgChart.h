#pragma once

#include "OrgChart.h"
#include "services/ui/ScreenDialog.h"

class QCheckBox;
class QComboBox;
class QGraphicsScene;
class QGraphicsView;
class QLabel;

namespace zq {

class OrgChartItem;

// 组织机构图: the department tree drawn as a chart. Zoom (the buttons, or Ctrl and the wheel), pan
// by dragging, fold a branch at its mark, double click a box for the chart of that branch alone.
// Printed through the preview (one page, or tiled over several), saved as PDF, PNG or SVG. A user
// with a department sees his own branch.
// Controls: cboDirection, chkPosts, cboPages, cmdZoomIn, cmdZoomOut, cmdFit, cmdAll, cmdPrint,
// cmdSave, cmdQuit, viewChart, lblInfo.
class frmRs_OrgChart : public ScreenDialog {
    Q_OBJECT

public:
    explicit frmRs_OrgChart(QWidget* parent = nullptr);

    OrgChart& chart() { return m_chart; }
    QGraphicsView* view() const { return m_view; }
    // The chart of a branch (the user's own at most); empty for the whole company.
    void showBranch(const QString& code);
    void toggleFold(int node);
    void zoomBy(double factor);
    void fitAll();
    // Prints through the print engine, with its preview where there are windows.
    bool print();
    // Asks for a file and saves the chart there.
    bool saveAs();

protected:
    void load() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The branch a user may see: his own department for one who has one.
    QString ownBranch() const;
    void reload();
    void relaid();

    OrgChart m_chart;
    QString m_branch;
    QComboBox* m_direction;
    QCheckBox* m_posts;
    QComboBox* m_pages;
    QGraphicsScene* m_scene;
    QGraphicsView* m_view;
    OrgChartItem* m_item = nullptr;
    QLabel* m_info;
};

} // namespace zq
